#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace zvgentl::tool {

/// What a feature is to a user, whatever stores it.
enum class FeatureKind {
    category,
    integer,
    floating_point,
    boolean,
    enumeration,
    command,
    string,
    bytes,
    other // a port or another node without a value
};

const char* kind_name(FeatureKind kind) noexcept;

/// What may be done with a feature at the moment.
struct Access {
    bool is_implemented{true};
    bool is_available{true};
    bool is_readable{true};
    bool is_writable{true};
    bool is_locked{false}; // it would be writable otherwise
};

/// RO, WO, RW, NA (not available), NI (not implemented); "RO locked" for one that cannot be written at the
/// moment.
std::string access_name(const Access& access);

/// How the description wants whole numbers to be written.
enum class Notation { decimal, hexadecimal, ipv4_address, mac_address };

/// Nothing, a boolean, a whole number, a number, or a text (enumerations too).
using Value = std::variant<std::monostate, bool, std::int64_t, double, std::string>;

std::string to_text(const Value& value, Notation notation = Notation::decimal);

/// A feature as it is at the moment.
struct Feature {
    std::string name;
    std::string display_name;
    std::string description;
    std::string visibility;
    std::string unit;
    FeatureKind kind{FeatureKind::other};
    Notation notation{Notation::decimal};
    Access access;
    Value value;                      // nothing when it cannot be read
    Value minimum;                    // nothing when there is no limit
    Value maximum;                    // of a string: the longest length
    Value increment;                  // nothing when every value in between is allowed
    std::vector<std::string> entries; // of an enumeration, that can be chosen now
    std::vector<std::string> selects; // features that this one chooses the meaning of
    std::string problem;              // why it, or part of it, could not be read
};

/// A line of the feature tree.
struct TreeEntry {
    std::string name;
    int level{0};            // below the category that the tree starts with
    bool is_repeated{false}; // a category that was listed before with its features
};

} // namespace zvgentl::tool
