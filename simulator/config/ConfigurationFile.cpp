#include "simulator/config/ConfigurationFile.h"

#include "simulator/config/YamlDocument.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <tuple>
#include <vector>

namespace zvsim {

namespace fs = std::filesystem;

namespace {

constexpr const char* product_file = "zvgentl/grabbers.yaml";
constexpr const char* system_folder = "/etc";

/// Empty unless the variable holds an absolute path.
fs::path folder_in(const char* variable)
{
    const char* const value = std::getenv(variable); // NOLINT(concurrency-mt-unsafe): nothing here changes it
    const fs::path path{value != nullptr ? value : ""};
    return path.is_absolute() ? path : fs::path{};
}

/// Where the file may be when nobody names it, the first one first.
std::vector<fs::path> usual_places()
{
    std::vector<fs::path> places;
    const fs::path chosen = folder_in("XDG_CONFIG_HOME");
    const fs::path home = folder_in("HOME");
    if (!chosen.empty())
        places.push_back(chosen / product_file);
    else if (!home.empty())
        places.push_back(home / ".config" / product_file);
    places.push_back(fs::path{system_folder} / product_file);
    return places;
}

ConfigurationFile read(const fs::path& path)
{
    ConfigurationFile file{path.string(), {}, {}};
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::status_known(status) || status.type() == fs::file_type::not_found) {
        file.problem = "it cannot be found: " + error.message();
        return file;
    }
    // A pipe or a device could keep the caller waiting for ever.
    if (status.type() != fs::file_type::regular) {
        file.problem = "it is no regular file";
        return file;
    }
    errno = 0;
    std::ifstream stream{path, std::ios::binary};
    if (!stream) {
        file.problem = "it cannot be opened: " + std::generic_category().message(errno);
        return file;
    }
    file.text.resize(YamlDocument::largest_text + 1);
    stream.read(file.text.data(), static_cast<std::streamsize>(file.text.size()));
    file.text.resize(static_cast<size_t>(stream.gcount()));
    if (stream.bad())
        file.problem = "it cannot be read";
    return file;
}

} // namespace

ConfigurationFile ConfigurationFile::find()
{
    const char* const named =
        std::getenv("ZV_GRABBER_CONFIG"); // NOLINT(concurrency-mt-unsafe): nothing here changes it
    if (named != nullptr && *named != '\0') {
        // A relative path would depend on the working directory of whatever application loads the library.
        if (!fs::path{named}.is_absolute())
            return {named, {}, "ZV_GRABBER_CONFIG must be an absolute path"};
        return read(named);
    }
    for (const fs::path& place : usual_places()) {
        std::error_code error; // a folder that this user may not look into holds nothing for this user
        if (fs::exists(place, error) && !error)
            return read(place);
    }
    return {};
}

bool ConfigurationFile::operator==(const ConfigurationFile& other) const
{
    return std::tie(path, text, problem) == std::tie(other.path, other.text, other.problem);
}

} // namespace zvsim
