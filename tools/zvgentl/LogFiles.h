#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "zvgentl/SettingsFile.h"

namespace zvgentl::tool {

/// Where the producer's log goes, and from which priority up. Paths are UTF-8.
struct LogPlaces {
    SettingsFile configuration;
    std::string level;       // of the root logger, as it is written; "warning" if nothing is
    std::string default_log; // empty if the user has no folder for it
    /// The files that the configuration names, with home folder and environment filled in.
    std::vector<std::string> configured;

    /// The file to look at: the first that the configuration names, or else the default log.
    std::string file() const { return configured.empty() ? default_log : configured.front(); }
};

/// Throws std::runtime_error if the configuration cannot be read.
LogPlaces read_log_places();

/// Whether a word is a level that the logger library knows: a name, or a number from 0 to 8.
bool is_log_level(const std::string& word);
/// All names, the strictest first, for messages.
std::string log_level_names();

/// Reads a file that grows, and that may be replaced by a new one when it is full.
class GrowingFile {
public:
    explicit GrowingFile(std::string path) : m_path(std::move(path)) {}

    /// The text that was added since the last call; the first call gives all of it. Nothing while there is no
    /// such file. Throws std::runtime_error if it cannot be read.
    std::string read();

private:
    std::string m_path;
    std::uint64_t m_place{0};
};

/// The last lines of a text, at most `count` of them.
std::string last_lines(const std::string& text, std::uint64_t count);

} // namespace zvgentl::tool
