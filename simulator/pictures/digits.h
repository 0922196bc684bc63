#pragma once

#include "simulator/pictures/PatternScene.h"

// The pattern with the frame's number in large digits.

namespace zvsim {

/// Rows that cut the digits at the same height, or pass above or below them.
uint64_t row_of_digits(const PatternWindow& window, ScenePlace place);
void draw_digits(const PatternWindow& window, ScenePlace place, SceneRow& row);

} // namespace zvsim
