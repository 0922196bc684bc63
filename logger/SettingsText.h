#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The text of a settings file: looking a number up and adding one.

namespace zvlog {

/// What a settings text says about a key.
struct SettingEntry {
    bool is_present{false};
    /// The value as it stands there.
    std::string text;
    /// Nothing when the text is not a number of 32 bits.
    std::optional<std::uint32_t> number;
};

/// The last entry of the key.
SettingEntry find_setting(std::string_view settings, std::string_view key);

/// `settings` with the key added at the end and everything else as it was. The description and the default
/// stand above it as comments.
std::string with_setting_added(std::string_view settings, const std::string& key, std::uint32_t value,
                               const std::string& description);

/// True when a file can hold the key such that reading gives it back.
bool is_storable_key(std::string_view key);

/// A number of 32 bits, decimal or hexadecimal with "0x" in front; nothing for any other text.
std::optional<std::uint32_t> parse_setting(std::string_view text);

} // namespace zvlog
