#pragma once

#include <optional>
#include <string>

// The log that the system keeps for all programs.

namespace platform {

/// How important a line is, with the numbers of RFC 5424.
enum class Severity { alert = 1, critical, error, warning, notice, information, debug };

/// The number of a facility such as "LOG_USER"; nothing when the system has none of that name. Windows has
/// none at all.
std::optional<int> find_facility(const std::string& name);

/// Writes a line of one of the facilities that `find_facility` knows. Nothing is opened before the first one.
void write_to_system_log(int facility, Severity severity, const std::string& line);

} // namespace platform
