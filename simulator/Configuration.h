#pragma once

#include <memory>
#include <string>
#include <vector>

#include "simulator/Model.h"
#include "simulator/PictureFolder.h"
#include "simulator/config/ConfigurationFile.h"
#include "simulator/faults/FaultPlan.h"

namespace zvsim {

/// What the configuration is made of: the file, and the variables as they are in the environment; unset and
/// empty are the same.
struct Environment {
    ConfigurationFile file;
    /// ZV_GRABBER_PICTURES: absolute path of a folder of pictures.
    std::string pictures;
    /// ZV_GRABBER_RATE: frames per second, 0 is free-running.
    std::string rate;
    /// ZV_GRABBER_PIXEL_FORMAT: the name of a pixel format.
    std::string pixel_format;
    /// ZV_GRABBER_SIZE: WIDTHxHEIGHT.
    std::string size;
    /// ZV_GRABBER_FAULTS: off, or on as the file says.
    std::string faults;

    static Environment read();
    bool operator==(const Environment& other) const;
};

/// The result of reading the file and the variables once. An error in the file leaves no grabbers. A
/// malformed variable gives a warning and changes nothing.
struct Configuration {
    Environment environment;
    /// The demo grabber last.
    std::vector<GrabberModel> grabbers;
    FaultPlan faults;
    /// Why there are no grabbers.
    std::vector<std::string> errors;
    std::vector<std::string> warnings;

    static std::unique_ptr<const Configuration> make(const Environment& environment);
};

} // namespace zvsim
