#include "zvgentl/StreamMode.h"

#include <fmt/core.h>

#include "platform/environment.h"
#include "platform/files.h"
#include "platform/paths.h"

namespace zvgentl::tool {

namespace fs = std::filesystem;

namespace {

constexpr const char* file_variable = "ZV_SETTINGS_FILE";
constexpr const char* override_variable = "ZV_SETTINGS_OVERRIDE";
constexpr const char* settings_name = "settings.properties";
constexpr const char* mode_key = "GenTL.Stream.QueuedBufferMode-Overwrite";

} // namespace

fs::path current_settings_file()
{
    std::vector<fs::path> places;
    const std::string named = platform::environment(file_variable);
    if (platform::is_absolute(named))
        places.push_back(fs::u8path(named));
    for (const auto& folder :
         {platform::user_configuration_folder(), platform::machine_configuration_folder()})
        if (!folder.empty())
            places.push_back(folder / settings_name);
    for (const auto& place : places)
        if (platform::stamp_of(place.u8string()).state != platform::FileState::missing)
            return place;
    return {};
}

std::string settings_problem()
{
    const std::string named = platform::environment(file_variable);
    if (!named.empty() && !platform::is_absolute(named))
        return fmt::format("{} is not an absolute path and is not used: {}", file_variable, named);
    const fs::path file = current_settings_file();
    if (file.empty())
        return {};
    const auto content = platform::read_file(file.u8string());
    if (content.state != platform::FileState::unreadable)
        return {};
    return fmt::format("the settings file {} cannot be read, and defaults are used: {}", file.u8string(),
                       content.reason);
}

ChosenStreamMode::ChosenStreamMode(StreamMode mode) : m_previous(platform::environment(override_variable))
{
    // The last entry of a key counts.
    platform::set_environment(
        override_variable, fmt::format("{};{}={}", m_previous, mode_key, mode == StreamMode::queued ? 1 : 0));
}

ChosenStreamMode::~ChosenStreamMode() { platform::set_environment(override_variable, m_previous); }

} // namespace zvgentl::tool
