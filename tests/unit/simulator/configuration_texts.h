#pragma once

#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>

#include "simulator/Configuration.h"

// Configurations made from the text of a file.

namespace zvsim_test {

/// An absolute path on either system: on Windows "/a" lacks a drive.
inline std::string absolute_path(const std::string& path)
{
#ifdef _WIN32
    return "C:" + path;
#else
    return path;
#endif
}

/// An environment with a file of this text. Messages call it "grabbers.yaml".
inline zvsim::Environment environment_with(const std::string& text)
{
    zvsim::Environment environment;
    environment.file.path = "grabbers.yaml";
    environment.file.text = text;
    return environment;
}

inline std::unique_ptr<const zvsim::Configuration> configured_by(const std::string& text)
{
    return zvsim::Configuration::make(environment_with(text));
}

/// A file with one grabber of one camera, without the demo grabber; `keys` are whole lines of the camera, the
/// first of which is line 4 of the file.
inline std::string camera_text(const std::string& keys)
{
    std::string text{"demo_grabber: false\ngrabbers:\n  - cameras:\n"};
    std::string start{"      - "};
    std::istringstream lines{keys};
    for (std::string line; std::getline(lines, line); start.assign(8, ' '))
        text += start + line + "\n";
    return text;
}

/// The lines as one text.
inline std::string joined(const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines)
        text.append(text.empty() ? "" : "\n").append(line);
    return text;
}

/// Whether a text matches a pattern in which each ~ stands for anything.
inline bool is_like(std::string_view text, std::string_view pattern)
{
    const size_t gap = pattern.find('~');
    if (gap == std::string_view::npos || text.substr(0, gap) != pattern.substr(0, gap))
        return text == pattern;
    for (size_t at = gap; at <= text.size(); ++at) {
        if (is_like(text.substr(at), pattern.substr(gap + 1)))
            return true;
    }
    return false;
}

MATCHER_P(Like, pattern, "") { return is_like(arg, pattern); }

} // namespace zvsim_test
