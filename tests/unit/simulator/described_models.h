#pragma once

#include "simulator/Model.h"

// The camera and the grabber whose descriptions are looked at.

namespace zvsim_test {

inline zvsim::CameraModel camera_model()
{
    zvsim::CameraModel model;
    model.vendor = "Test Maker";
    model.model = "Test Camera";
    model.sensor_width = model.start.width = 64;
    model.sensor_height = model.start.height = 48;
    model.formats = {&zvsim::pixel_format("Mono8"), &zvsim::pixel_format("BayerRG12"),
                     &zvsim::pixel_format("RGB8")};
    model.start.format = model.formats.front();
    return model;
}

inline zvsim::GrabberModel grabber_model()
{
    zvsim::GrabberModel model;
    model.display_name = "Test Grabber";
    model.cameras = {camera_model(), camera_model(), camera_model()};
    return model;
}

} // namespace zvsim_test
