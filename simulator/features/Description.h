/// \file Description.h
/// Register descriptions: GenApi 1.1 files made from the templates camera.xml and grabber.xml.
#pragma once

#include "simulator/Model.h"

#include <memory>
#include <string>

namespace zvsim {

struct Description {
    std::string name; ///< Of the file, without its ending.
    std::string text;

    /// Where consumers find it.
    std::string url() const;
};

std::shared_ptr<const Description> describe_camera(const CameraModel& model);
std::shared_ptr<const Description> describe_grabber(const GrabberModel& model);

} // namespace zvsim
