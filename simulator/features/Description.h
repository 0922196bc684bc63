#pragma once

#include <memory>
#include <string>

#include "simulator/Model.h"

// Register descriptions: GenApi 1.1 files made from the templates camera.xml and grabber.xml.

namespace zvsim {

struct Description {
    /// Of the file, without its ending.
    std::string name;
    std::string text;

    /// Where consumers find it.
    std::string url() const;
};

std::shared_ptr<const Description> describe_camera(const CameraModel& model);
/// True if the descriptions of two cameras are the same, told by what goes into them.
bool are_described_alike(const CameraModel& left, const CameraModel& right);
std::shared_ptr<const Description> describe_grabber(const GrabberModel& model);

// The templates, as the build embeds them. What is between two @ depends on the model.
std::string camera_template();
std::string grabber_template();

} // namespace zvsim
