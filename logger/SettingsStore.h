#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "logger/SettingsText.h"
#include "platform/environment.h"
#include "platform/files.h"

namespace zvlog {

/// Where to look for settings: those that the environment fixes come first, then the first file that exists.
/// New keys go into the chosen file, or else the user's. A text is empty if there is no such place.
struct SettingsPlaces {
    /// Named by the environment.
    std::string chosen;
    std::string user;
    std::string system;
    /// The text of settings that hold for this process whatever the files say. Keys are not added then.
    std::string fixed{};
    /// The variables that these follow from.
    platform::EnvironmentCopy environment{};
};

/// The places as the environment gives them now.
SettingsPlaces settings_places();

/// How the store looks at files. Tests put functions of their own in between.
struct SettingsFiles {
    std::function<platform::FileContent(const std::string&)> read{platform::read_file};
    std::function<platform::FileStamp(const std::string&)> stamp{platform::stamp_of};
    std::function<platform::Replacement(const std::string&, const platform::FileContent&, const std::string&,
                                        platform::Flush, std::string&)>
        replace{platform::replace_file};
};

/// Looks at the file at every call, so that an edit takes effect at the next call, and reads it only if its
/// stamp may hide an edit. Files only change as a whole, and one process at a time adds to them. A new file
/// starts as a copy of the one that counted until then, so that no value changes because it appears. When
/// nothing can be written, keys are kept in memory. Each problem is reported once. For any thread.
class SettingsStore {
public:
    using Places = std::function<SettingsPlaces()>;
    /// Called without any lock held.
    using Warn = std::function<void(const std::string&)>;

    SettingsStore(Places places, Warn warn, SettingsFiles files = {});

    /// The stored value; adds the key with the default when it is missing.
    std::uint32_t value_or_add(std::string_view key, std::uint32_t default_value, const char* description);
    /// The stored value; nothing when the key is missing or its value is not a number.
    std::optional<std::uint32_t> value(std::string_view key);

private:
    struct ActiveFile {
        std::string path;
        platform::FileContent content;
    };
    /// What was found the last time, and what the text says about the keys that were asked for since.
    struct Copy {
        SettingsPlaces places;
        ActiveFile file;
        std::map<std::string, SettingEntry, std::less<>> entries;
    };
    using Warnings = std::vector<std::string>;

    bool is_current() const;
    void read_again(Warnings& warnings);
    SettingsPlaces checked_places(Warnings& warnings) const;
    ActiveFile read_active_file(const SettingsPlaces& places, Warnings& warnings) const;
    const SettingEntry& entry_of(std::string_view key);
    /// Where a value of the file or the environment comes from, for messages.
    std::string origin_of(std::string_view key) const;
    std::optional<std::uint32_t> number_of(const SettingEntry& entry, std::string_view key,
                                           Warnings& warnings) const;
    static std::optional<std::uint32_t> number_of(const SettingEntry& entry, std::string_view key,
                                                  const std::string& origin, Warnings& warnings);
    std::optional<std::uint32_t> remembered(std::string_view key) const;
    std::optional<std::uint32_t> add(std::string_view key, std::uint32_t default_value,
                                     const char* description, Warnings& warnings);
    void report(const Warnings& warnings);

    const Places m_places;
    const Warn m_warn;
    const SettingsFiles m_files;
    std::mutex m_mutex;
    Copy m_copy;
    bool m_leftovers_are_removed{false};
    /// What this process has put into a file that did not exist: nothing but defaults.
    std::string m_own_text;
    /// By file and key.
    std::map<std::pair<std::string, std::string>, std::uint32_t> m_memory;
    std::set<std::string> m_reported;
};

} // namespace zvlog
