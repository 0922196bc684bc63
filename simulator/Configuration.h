/// \file Configuration.h
/// Which grabbers and cameras the library offers.
#pragma once

#include "simulator/Model.h"
#include "simulator/PictureFolder.h"
#include "simulator/faults/FaultPlan.h"

#include <memory>
#include <string>
#include <vector>

namespace zvsim {

/// The configuration variables as they stand in the environment; unset and empty are the same.
struct Environment {
    std::string pictures;     ///< ZV_GRABBER_PICTURES: absolute path of a folder of PNG files.
    std::string rate;         ///< ZV_GRABBER_RATE: frames per second, 0 is free-running.
    std::string pixel_format; ///< ZV_GRABBER_PIXEL_FORMAT: Mono8 or Mono16.
    std::string size;         ///< ZV_GRABBER_SIZE: WIDTHxHEIGHT.

    static Environment read();
    bool operator==(const Environment& other) const;
};

/// What one reading of the environment makes of the built-in grabbers: a CoaXPress one with two cameras, a
/// Camera Link HS one with one, and, last, a demo grabber. A malformed variable gives a warning and changes
/// nothing.
struct Configuration {
    Environment environment;
    std::vector<GrabberModel> grabbers;
    std::vector<std::string> warnings;
    FaultPlan faults;

    static std::unique_ptr<const Configuration> make(const Environment& environment);
};

} // namespace zvsim
