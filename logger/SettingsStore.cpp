#include "logger/SettingsStore.h"

#include "platform/FileLock.h"
#include "platform/environment.h"
#include "platform/paths.h"

namespace zvlog {

namespace {

constexpr const char* settings_variable = "ZV_SETTINGS_FILE";
constexpr const char* settings_name = "/settings.properties";
constexpr int most_attempts = 100;           // if somebody saves the file over and over
constexpr std::size_t most_reported = 10000; // limits the memory for what has been reported

const std::string& target_of(const SettingsPlaces& places)
{
    return places.chosen.empty() ? places.user : places.chosen;
}

} // namespace

SettingsPlaces settings_places()
{
    SettingsPlaces places;
    places.chosen = platform::environment(settings_variable);
    const std::string user = platform::user_configuration_folder().generic_u8string();
    places.user = user.empty() ? "" : user + settings_name;
    places.system = platform::machine_configuration_folder().generic_u8string() + settings_name;
    return places;
}

SettingsStore::SettingsStore(Places places, Warn warn) : m_places(std::move(places)), m_warn(std::move(warn))
{
}

std::uint32_t SettingsStore::value_or_add(const std::string& key, std::uint32_t default_value,
                                          const std::string& description)
{
    if (!is_storable_key(key))
        return default_value;
    Warnings warnings;
    std::uint32_t result = default_value;
    {
        const std::lock_guard lock(m_mutex);
        const SettingsPlaces places = checked_places(warnings);
        ActiveFile file = read_active_file(places, warnings);
        SettingEntry entry = find_setting(file.content.text, key);
        const auto in_memory = remembered(places, key);
        if (!entry.is_present && !in_memory)
            entry = add(places, key, default_value, description, file, warnings);
        if (entry.is_present)
            result = number_of(entry, key, file, warnings).value_or(default_value);
        else
            result = in_memory.value_or(default_value);
    }
    report(warnings);
    return result;
}

std::optional<std::uint32_t> SettingsStore::value(const std::string& key)
{
    Warnings warnings;
    std::optional<std::uint32_t> result;
    {
        const std::lock_guard lock(m_mutex);
        const SettingsPlaces places = checked_places(warnings);
        const ActiveFile file = read_active_file(places, warnings);
        const SettingEntry entry = find_setting(file.content.text, key);
        result = entry.is_present ? number_of(entry, key, file, warnings) : remembered(places, key);
    }
    report(warnings);
    return result;
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

SettingsStore::ActiveFile SettingsStore::read_active_file(const SettingsPlaces& places, Warnings& warnings)
{
    for (const std::string& path : {places.chosen, places.user, places.system}) {
        if (path.empty())
            continue;
        ActiveFile file{path, platform::read_file(path)};
        if (file.content.state == platform::FileState::unreadable)
            warnings.push_back("the settings file " + path + " cannot be read: " + file.content.reason);
        if (file.content.state != platform::FileState::missing)
            return file;
    }
    return {};
}

std::optional<std::uint32_t> SettingsStore::number_of(const SettingEntry& entry, const std::string& key,
                                                      const ActiveFile& file, Warnings& warnings)
{
    if (!entry.number)
        warnings.push_back("the setting " + key + " in " + file.path + " is not a 32-bit number: '" +
                           entry.text + "'; its default is used");
    return entry.number;
}

std::optional<std::uint32_t> SettingsStore::remembered(const SettingsPlaces& places,
                                                       const std::string& key) const
{
    const auto found = m_memory.find({target_of(places), key});
    return found == m_memory.end() ? std::nullopt : std::optional(found->second);
}

SettingEntry SettingsStore::add(const SettingsPlaces& places, const std::string& key,
                                std::uint32_t default_value, const std::string& description, ActiveFile& file,
                                Warnings& warnings)
{
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
            file = read_active_file(places, warnings);
            SettingEntry entry = find_setting(file.content.text, key);
            if (entry.is_present)
                return entry;
            reason = file.content.reason;
            if (file.content.state == platform::FileState::unreadable)
                break;
            const platform::FileContent seen = file.path == target ? file.content : platform::FileContent();
            const std::string text = with_setting_added(file.content.text, key, default_value, description);
            const auto outcome = platform::replace_file(path, seen, text, reason);
            if (outcome == platform::Replacement::done)
                return {}; // the file has the default
            if (outcome == platform::Replacement::failed)
                break;
            reason = "somebody else keeps changing it";
        }
    }
    m_memory[{target, key}] = default_value;
    warnings.push_back("the settings file " + target + " cannot be written: " + reason +
                       "; new settings are kept in memory");
    return {};
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
