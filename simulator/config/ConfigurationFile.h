#pragma once

#include <string>

namespace zvsim {

/// The configuration file as it is now. Two of them are equal when they lead to the same configuration, so a
/// comparison shows whether somebody has changed the file.
struct ConfigurationFile {
    /// Empty: there is none, and the built-in configuration applies.
    std::string path;
    /// Of a file that is too long, only as much as shows that.
    std::string text;
    /// Why the file cannot be read; empty: it can.
    std::string problem;

    /// The file that ZV_GRABBER_CONFIG names, else the user's, else the system's.
    static ConfigurationFile find();
    bool operator==(const ConfigurationFile& other) const;
};

/// The text of the built-in configuration.
extern const char* const default_configuration;

} // namespace zvsim
