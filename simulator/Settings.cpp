#include "simulator/Settings.h"

#include <cmath>

namespace zvsim {

namespace {

constexpr double nominal_exposure_us = 10000;

} // namespace

double CameraSettings::brightness() const
{
    return exposure_us / nominal_exposure_us * std::pow(10.0, gain_db / 20);
}

} // namespace zvsim
