#include "logger/SettingsStore.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "platform/FileLock.h"
#include "platform/leftovers.h"
#include "platform/paths.h"

namespace zvlog {

namespace {

constexpr const char* settings_variable = "ZV_SETTINGS_FILE";
constexpr const char* fixed_variable = "ZV_SETTINGS_OVERRIDE";
constexpr const char* settings_name = "/settings.properties";
constexpr int most_attempts = 100;           // if somebody saves the file over and over
constexpr std::size_t most_reported = 10000; // limits the memory for what has been reported

const std::string& target_of(const SettingsPlaces& places)
{
    return places.chosen.empty() ? places.user : places.chosen;
}

/// What processes have left behind that were killed while they replaced the file.
void remove_leftovers(const std::string& target)
{
    const auto file = std::filesystem::u8path(platform::resolve_links(target));
    if (!target.empty())
        platform::remove_leftovers(file.parent_path(), file.filename().u8string() + ".", ".new");
}

} // namespace

SettingsPlaces settings_places()
{
    SettingsPlaces places;
    std::vector<const char*> variables = platform::configuration_variables();
    variables.push_back(settings_variable);
    variables.push_back(fixed_variable);
    places.environment = platform::EnvironmentCopy(variables);
    places.chosen = platform::environment(settings_variable);
    const std::string user = platform::user_configuration_folder().generic_u8string();
    places.user = user.empty() ? "" : user + settings_name;
    places.fixed = platform::environment(fixed_variable);
    std::replace(places.fixed.begin(), places.fixed.end(), ';', '\n');
    places.system = platform::machine_configuration_folder().generic_u8string() + settings_name;
    return places;
}

SettingsStore::SettingsStore(Places places, Warn warn, SettingsFiles files)
    : m_places(std::move(places)), m_warn(std::move(warn)), m_files(std::move(files))
{
}

std::uint32_t SettingsStore::value_or_add(std::string_view key, std::uint32_t default_value,
                                          const char* description)
{
    Warnings warnings;
    std::optional<std::uint32_t> result;
    {
        const std::lock_guard lock(m_mutex);
        if (!is_current())
            read_again(warnings);
        const SettingEntry& entry = entry_of(key);
        if (entry.is_present)
            result = number_of(entry, key, warnings);
        else if (!m_copy.places.fixed.empty()) // nothing of such a process stays behind
            result = default_value;
        else if (const auto in_memory = remembered(key))
            result = in_memory;
        else if (is_storable_key(key))
            result = add(key, default_value, description, warnings);
    }
    report(warnings);
    return result.value_or(default_value);
}

std::optional<std::uint32_t> SettingsStore::value(std::string_view key)
{
    Warnings warnings;
    std::optional<std::uint32_t> result;
    {
        const std::lock_guard lock(m_mutex);
        if (!is_current())
            read_again(warnings);
        const SettingEntry& entry = entry_of(key);
        result = entry.is_present ? number_of(entry, key, warnings) : remembered(key);
    }
    report(warnings);
    return result;
}

bool SettingsStore::is_current() const
{
    const SettingsPlaces& places = m_copy.places;
    const ActiveFile& file = m_copy.file;
    if (!file.content.is_settled || !places.environment.is_current())
        return false;
    if (file.path == places.system && places.user.empty()) // the user's folder may appear
        return false;
    for (const std::string* const path : {&places.chosen, &places.user, &places.system}) {
        if (*path == file.path)
            return m_files.stamp(*path) == file.content.stamp;
        if (!path->empty() && m_files.stamp(*path).state != platform::FileState::missing)
            return false;
    }
    return false;
}

void SettingsStore::read_again(Warnings& warnings)
{
    SettingsPlaces places = checked_places(warnings);
    ActiveFile file = read_active_file(places, warnings);
    if (!std::exchange(m_leftovers_are_removed, true))
        remove_leftovers(target_of(places));
    if (file.content.text != m_copy.file.content.text || places.fixed != m_copy.places.fixed)
        m_copy.entries.clear();
    m_copy.places = std::move(places);
    m_copy.file = std::move(file);
}

SettingsPlaces SettingsStore::checked_places(Warnings& warnings) const
{
    SettingsPlaces places = m_places();
    if (!places.chosen.empty() && !platform::is_absolute(places.chosen)) {
        warnings.push_back(std::string(settings_variable) +
                           " is not an absolute path and is not used: " + places.chosen);
        places.chosen.clear();
    }
    return places;
}

SettingsStore::ActiveFile SettingsStore::read_active_file(const SettingsPlaces& places,
                                                          Warnings& warnings) const
{
    for (const std::string& path : {places.chosen, places.user, places.system}) {
        if (path.empty())
            continue;
        ActiveFile file{path, m_files.read(path)};
        if (file.content.state == platform::FileState::unreadable)
            warnings.push_back("the settings file " + path + " cannot be read: " + file.content.reason);
        if (file.content.state != platform::FileState::missing)
            return file;
    }
    return {};
}

const SettingEntry& SettingsStore::entry_of(std::string_view key)
{
    const auto known = m_copy.entries.find(key);
    if (known != m_copy.entries.end())
        return known->second;
    SettingEntry entry = find_setting(m_copy.places.fixed, key);
    if (!entry.is_present)
        entry = find_setting(m_copy.file.content.text, key);
    return m_copy.entries.emplace(std::string(key), std::move(entry)).first->second;
}

std::string SettingsStore::origin_of(std::string_view key) const
{
    return find_setting(m_copy.places.fixed, key).is_present ? fixed_variable : m_copy.file.path;
}

std::optional<std::uint32_t> SettingsStore::number_of(const SettingEntry& entry, std::string_view key,
                                                      Warnings& warnings) const
{
    return entry.number ? entry.number : number_of(entry, key, origin_of(key), warnings);
}

std::optional<std::uint32_t> SettingsStore::number_of(const SettingEntry& entry, std::string_view key,
                                                      const std::string& origin, Warnings& warnings)
{
    if (!entry.number)
        warnings.push_back("the setting " + std::string(key) + " in " + origin +
                           " is not a 32-bit number: '" + entry.text + "'; its default is used");
    return entry.number;
}

std::optional<std::uint32_t> SettingsStore::remembered(std::string_view key) const
{
    if (m_memory.empty()) // as usual
        return std::nullopt;
    const auto found = m_memory.find({target_of(m_copy.places), std::string(key)});
    return found == m_memory.end() ? std::nullopt : std::optional(found->second);
}

/// The number that somebody else has added in the meantime, or nothing: the default, or no number.
std::optional<std::uint32_t> SettingsStore::add(std::string_view key, std::uint32_t default_value,
                                                const char* description, Warnings& warnings)
{
    const SettingsPlaces places = checked_places(warnings); // a folder may have come or gone
    const std::string& target = target_of(places);
    const std::string path = platform::resolve_links(target);
    // Whoever chooses a file makes its folder.
    if (!path.empty() && places.chosen.empty())
        platform::make_folders(platform::folder_of(path));

    std::string reason = path.empty() ? "the user has no configuration folder" : "";
    if (!path.empty()) {
        const platform::FileLock lock(path + ".lock");
        reason = lock.reason();
        for (int attempt = 0; lock.is_held() && attempt < most_attempts; ++attempt) {
            const ActiveFile file = read_active_file(places, warnings);
            const SettingEntry entry = find_setting(file.content.text, key);
            if (entry.is_present)
                return number_of(entry, key, file.path, warnings);
            reason = file.content.reason;
            if (file.content.state == platform::FileState::unreadable)
                break;
            const platform::FileContent seen = file.path == target ? file.content : platform::FileContent();
            // Defaults alone may get lost with the power. What people have written may not.
            const bool is_own =
                file.content.state == platform::FileState::missing || file.content.text == m_own_text;
            const std::string text = with_setting_added(file.content.text, key, default_value, description);
            const auto outcome = m_files.replace(
                path, seen, text, is_own ? platform::Flush::later : platform::Flush::first, reason);
            if (outcome == platform::Replacement::done) {
                m_own_text = is_own ? text : std::string();
                return default_value;
            }
            if (outcome == platform::Replacement::failed)
                break;
            reason = "somebody else keeps changing it";
        }
    }
    m_memory[{target, std::string(key)}] = default_value;
    warnings.push_back("the settings file " + target + " cannot be written: " + reason +
                       "; new settings are kept in memory");
    return default_value;
}

void SettingsStore::report(const Warnings& warnings)
{
    for (const std::string& warning : warnings) {
        {
            const std::lock_guard lock(m_mutex);
            if (m_reported.size() >= most_reported || !m_reported.insert(warning).second)
                continue;
        }
        m_warn(warning);
    }
}

} // namespace zvlog
