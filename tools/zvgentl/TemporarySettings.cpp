#include "zvgentl/TemporarySettings.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include "platform/environment.h"
#include "platform/files.h"
#include "platform/leftovers.h"
#include "platform/paths.h"

namespace zvgentl::tool {

namespace fs = std::filesystem;

namespace {

constexpr const char* settings_variable = "ZV_SETTINGS_FILE";
constexpr const char* folder_prefix = "zvgentl-";
constexpr const char* settings_name = "settings.properties";
constexpr const char* mode_key = "GenTL.Stream.QueuedBufferMode-Overwrite";

std::string key_of(const std::string& line)
{
    const std::size_t start = line.find_first_not_of(" \t\r");
    if (start == std::string::npos || line[start] == '#' || line[start] == '!')
        return {};
    const std::string key = line.substr(start, line.find_first_of("=:", start) - start);
    return key.substr(0, key.find_last_not_of(" \t\r") + 1);
}

std::string read_file(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw std::runtime_error("cannot read your settings file " + file.u8string());
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void write_file(const fs::path& file, const std::string& text)
{
    std::FILE* const stream = platform::create_file(file, platform::Readers::owner);
    bool is_written = stream != nullptr && std::fwrite(text.data(), 1, text.size(), stream) == text.size();
    if (stream != nullptr)
        is_written = std::fclose(stream) == 0 && is_written;
    if (!is_written)
        throw std::runtime_error("cannot write the temporary settings file " + file.u8string());
}

bool is_file(const fs::path& file)
{
    std::error_code error; // a path that cannot be examined is not a file
    return !file.empty() && fs::is_regular_file(file, error);
}

} // namespace

std::string with_setting(const std::string& text, const std::string& key, const std::string& value)
{
    std::istringstream lines(text);
    std::string result;
    for (std::string line; std::getline(lines, line);)
        if (key_of(line) != key)
            result += line + "\n";
    return result + key + " = " + value + "\n";
}

fs::path current_settings_file()
{
    fs::path named = fs::u8path(platform::environment(settings_variable));
    if (is_file(named))
        return named;
    for (const auto& folder :
         {platform::user_configuration_folder(), platform::machine_configuration_folder()})
        if (!folder.empty() && is_file(folder / settings_name))
            return folder / settings_name;
    return {};
}

TemporarySettings::TemporarySettings(StreamMode mode)
    : m_previous_variable(platform::environment(settings_variable))
{
    const fs::path current = current_settings_file();
    const std::string text = current.empty() ? std::string() : read_file(current);
    m_folder = platform::make_private_folder(folder_prefix);
    try {
        const fs::path copy = m_folder / settings_name;
        write_file(copy, with_setting(text, mode_key, mode == StreamMode::queued ? "1" : "0"));
        platform::set_environment(settings_variable, copy.u8string());
    } catch (...) {
        remove();
        throw;
    }
}

TemporarySettings::~TemporarySettings()
{
    platform::set_environment(settings_variable, m_previous_variable);
    remove();
}

void TemporarySettings::remove_leftovers() noexcept
{
    std::error_code error;
    const fs::path folder = fs::temp_directory_path(error);
    if (!error)
        platform::remove_leftovers(folder, folder_prefix, "");
}

void TemporarySettings::remove() const noexcept
{
    std::error_code ignored;
    fs::remove_all(m_folder, ignored);
}

} // namespace zvgentl::tool
