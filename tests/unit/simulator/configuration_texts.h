#pragma once

#include <algorithm>
#include <memory>
#include <string>

#include "simulator/Configuration.h"

// Configurations made of the texts of their files.

namespace zvsim_test {

/// The path as an absolute one of this system: "/a" has no drive.
inline std::string absolute_path(const std::string& path)
{
#ifdef _WIN32
    return "C:" + path;
#else
    return path;
#endif
}

/// What a file of this text leads to. The messages call it "grabbers.yaml".
inline std::unique_ptr<const zvsim::Configuration> configured_by(const std::string& text)
{
    zvsim::Environment environment;
    environment.file.path = "grabbers.yaml";
    environment.file.text = text;
    return zvsim::Configuration::make(environment);
}

/// A file with one grabber of one camera, without the demo grabber; `keys` are whole lines of the camera, the
/// first of which is line 4 of the file.
inline std::string camera_text(const std::string& keys)
{
    std::string text{"demo_grabber: false\ngrabbers:\n  - cameras:\n"};
    std::string start{"      - "};
    size_t at = 0;
    while (at < keys.size()) {
        const size_t end = std::min(keys.find('\n', at), keys.size());
        text += start + keys.substr(at, end - at) + "\n";
        start.assign(8, ' ');
        at = end + 1;
    }
    return text;
}

} // namespace zvsim_test
