#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zvgentl::tool {

/// A key that the producer reads.
struct SettingKey {
    const char* name;
    std::optional<std::uint32_t> default_value; // nothing: the producer never adds the key
    const char* read_when;
    const char* meaning;
};

/// All of them, sorted by name.
const std::vector<SettingKey>& setting_keys();

/// The files of the logger and settings library. Each is looked for at the place that a variable names, then
/// in the user's configuration folder, then in the machine's.
struct FileKind {
    const char* variable;
    const char* name;
    const char* title; // for messages
};

constexpr FileKind settings_file{"ZV_SETTINGS_FILE", "/settings.properties", "settings file"};
constexpr FileKind logger_file{"ZV_LOGGER_CONFIG", "/logger.properties", "configuration of the log"};

/// Such a file as the producer sees it. Paths are UTF-8; empty when there is no such place.
struct SettingsFile {
    std::string source; // the file that counts
    std::string target; // the one that is written; the same, or a new one that starts as a copy of `source`
    std::string text;   // of `source`
};

/// Throws std::runtime_error if the file that counts cannot be read, or the variable holds a relative path.
SettingsFile read_settings_file(const FileKind& kind);

/// Values as they are written, in the order of the file; of a key that appears more than once, the last one.
struct SettingLine {
    std::string key;
    std::string value;
};
std::vector<SettingLine> settings_of(const std::string& text);

/// A number from 0 to 4294967295, decimal or hexadecimal (0x); nothing for any other text.
std::optional<std::uint32_t> parse_setting(const std::string& text);

/// The text with one value of the key, in place of the last line that has it, or at the end.
std::string with_setting_changed(const std::string& text, const std::string& key, const std::string& value);
/// The text without the key's lines.
std::string with_setting_removed(const std::string& text, const std::string& key);

/// Replaces the text of the file by what `change` makes of it, holding the lock that the producer
/// uses too. Throws std::runtime_error that says what cannot be written and why.
void change_settings(const FileKind& kind,
                     std::string (*change)(const std::string& text, const SettingLine& line),
                     const std::vector<SettingLine>& lines);

} // namespace zvgentl::tool
