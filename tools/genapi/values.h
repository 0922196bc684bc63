#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "genapi/Feature.h"

namespace zvgentl::tool {

/// A value as a user wrote it; nothing when the text is not such a value. Whole numbers are decimal or
/// hexadecimal (0x), or an address of the notation.
std::optional<std::int64_t> parse_integer(const std::string& text, Notation notation);
std::optional<double> parse_float(const std::string& text);
/// true, false, on, off, 1, 0.
std::optional<bool> parse_boolean(const std::string& text);
/// Pairs of hexadecimal digits, with or without blanks between them.
std::optional<std::vector<unsigned char>> parse_bytes(const std::string& text);
std::string bytes_text(const std::vector<unsigned char>& bytes);

/// "16 to 1024 in steps of 16"; empty when everything is allowed.
std::string range_text(const Feature& feature);

/// Whether a whole number lies within the feature's limits and on its steps.
bool is_allowed(const Feature& feature, std::int64_t number);
/// Whether a number lies within the feature's limits. Steps are the device's to round to.
bool is_allowed(const Feature& feature, double number);

/// How many letters must be inserted, removed or replaced to get from one to the other.
std::size_t letter_distance(const std::string& from, const std::string& to);
/// Those of the names that somebody who wrote `wanted` may have meant, the nearest first; at most three.
std::vector<std::string> near_names(const std::string& wanted, const std::vector<std::string>& names);

} // namespace zvgentl::tool
