#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "logger/SettingsText.h"
#include "platform/files.h"

namespace zvlog {

/// Where to look for settings: the first file that exists counts. New keys go into the chosen file, or else
/// the user's. A text is empty if there is no such place.
struct SettingsPlaces {
    /// Named by the environment.
    std::string chosen;
    std::string user;
    std::string system;
};

/// The places as the environment gives them now.
SettingsPlaces settings_places();

/// Reads the file at every call, so that an edit takes effect at the next call, whatever its time stamp.
/// Files only change as a whole, and one process at a time adds to them. A new file starts as a copy of the
/// one that counted until then, so that no value changes because it appears. When nothing can be written,
/// keys are kept in memory. Each problem is reported once. For any thread.
class SettingsStore {
public:
    using Places = std::function<SettingsPlaces()>;
    /// Called without any lock held.
    using Warn = std::function<void(const std::string&)>;

    SettingsStore(Places places, Warn warn);

    /// The stored value; adds the key with the default when it is missing.
    std::uint32_t value_or_add(const std::string& key, std::uint32_t default_value,
                               const std::string& description);
    /// The stored value; nothing when the key is missing or its value is not a number.
    std::optional<std::uint32_t> value(const std::string& key);

private:
    struct ActiveFile {
        std::string path;
        platform::FileContent content;
    };
    using Warnings = std::vector<std::string>;

    SettingsPlaces checked_places(Warnings& warnings) const;
    static ActiveFile read_active_file(const SettingsPlaces& places, Warnings& warnings);
    static std::optional<std::uint32_t> number_of(const SettingEntry& entry, const std::string& key,
                                                  const ActiveFile& file, Warnings& warnings);
    std::optional<std::uint32_t> remembered(const SettingsPlaces& places, const std::string& key) const;
    SettingEntry add(const SettingsPlaces& places, const std::string& key, std::uint32_t default_value,
                     const std::string& description, ActiveFile& file, Warnings& warnings);
    void report(const Warnings& warnings);

    const Places m_places;
    const Warn m_warn;
    std::mutex m_mutex;
    /// By file and key.
    std::map<std::pair<std::string, std::string>, std::uint32_t> m_memory;
    std::set<std::string> m_reported;
};

} // namespace zvlog
