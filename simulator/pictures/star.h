/// \file star.h
/// The pattern of rays from the middle of the sensor.
#pragma once

#include "simulator/pictures/PatternScene.h"

namespace zvsim {

void draw_star(const PatternWindow& window, ScenePlace place, SceneRow& row);

} // namespace zvsim
