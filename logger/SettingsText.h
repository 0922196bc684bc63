#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The text of a settings file: looking a number up and adding one.

namespace zvlog {

/// What a text of settings says about a key.
struct SettingEntry {
    bool is_present{false};
    /// The value as it is written.
    std::string text;
    /// The value, decimal or hexadecimal with "0x" in front; nothing if it is not a 32-bit number.
    std::optional<std::uint32_t> number;
};

/// The last entry of the key.
SettingEntry find_setting(std::string_view settings, std::string_view key);

/// `settings` with the key added at the end and everything else unchanged. Comments above the key give its
/// description and default.
std::string with_setting_added(std::string_view settings, std::string_view key, std::uint32_t value,
                               const std::string& description);

/// True when a key can be written to a file and read back.
bool is_storable_key(std::string_view key);

} // namespace zvlog
