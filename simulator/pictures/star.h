#pragma once

#include "simulator/pictures/PatternScene.h"

// The pattern of rays from the middle of the sensor.

namespace zvsim {

void draw_star(const PatternWindow& window, ScenePlace place, SceneRow& row);

} // namespace zvsim
