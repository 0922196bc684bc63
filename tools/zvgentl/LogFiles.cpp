#include "zvgentl/LogFiles.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <system_error>

#include "gentl/texts.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/paths.h"

namespace zvgentl::tool {

namespace {

constexpr const char* level_names[] = {"none",   "fatal",       "critical", "error", "warning",
                                       "notice", "information", "debug",    "trace"};
constexpr const char* usual_level = "warning";
constexpr const char* level_key = "logging.loggers.root.level";
constexpr const char* default_name = "/zvgentl.log";

/// With "${system.env.NAME}" replaced by the variable, and a path below the folder if it is a relative one.
std::string filled_in(std::string path, const std::string& folder)
{
    const std::string opening = "${system.env.";
    for (std::size_t start = path.find(opening); start != std::string::npos;
         start = path.find(opening, start)) {
        const std::size_t end = path.find('}', start);
        if (end == std::string::npos)
            break;
        const std::size_t name = start + opening.size();
        const std::string value = platform::environment(path.substr(name, end - name).c_str());
        path.replace(start, end + 1 - start, value);
        start += value.size();
    }
    path = platform::expand_home(path);
    return platform::is_absolute(path) ? path : folder + "/" + path;
}

bool begins_with(const std::string& text, const std::string& beginning)
{
    return text.compare(0, beginning.size(), beginning) == 0;
}

} // namespace

LogPlaces read_log_places()
{
    LogPlaces places;
    places.configuration = read_settings_file(logger_file);
    places.level = usual_level;
    const std::string folder = platform::user_state_folder().generic_u8string();
    places.default_log = folder.empty() ? "" : folder + default_name;
    for (const auto& [key, value] : settings_of(places.configuration.text))
        if (key == level_key)
            places.level = value;
        else if (begins_with(key, "logging.channels.") && ends_in(key, ".path"))
            places.configured.push_back(filled_in(value, folder));
    return places;
}

bool is_log_level(const std::string& word)
{
    return std::find(std::begin(level_names), std::end(level_names), word) != std::end(level_names) ||
           (word.size() == 1 && word[0] >= '0' && word[0] <= '8');
}

std::string log_level_names() { return joined({std::begin(level_names), std::end(level_names)}, ", "); }

std::string GrowingFile::read()
{
    std::error_code error;
    const auto path = std::filesystem::u8path(m_path);
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error) {
        m_place = 0; // it was renamed, and the next one is not there yet
        return {};
    }
    if (size < m_place)
        m_place = 0; // another file
    if (size == m_place)
        return {};
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(platform::open_file(path), std::fclose);
    if (file == nullptr || std::fseek(file.get(), static_cast<long>(m_place), SEEK_SET) != 0)
        throw std::runtime_error("cannot read " + m_path);
    std::string text;
    std::array<char, 65536> part{};
    for (std::size_t count = 1; count > 0;) {
        count = std::fread(part.data(), 1, part.size(), file.get());
        text.append(part.data(), count);
    }
    m_place += text.size();
    return text;
}

std::string last_lines(const std::string& text, std::uint64_t count)
{
    std::size_t start = text.size();
    for (std::uint64_t lines = 0; start > 0; --start)
        if (text[start - 1] == '\n' && start != text.size() && ++lines == count)
            break;
    return count == 0 ? "" : text.substr(start);
}

} // namespace zvgentl::tool
