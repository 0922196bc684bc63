#include "simulator/config/ConfigurationFile.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <tuple>

#include "platform/environment.h"
#include "platform/paths.h"
#include "simulator/config/YamlDocument.h"

namespace zvsim {

namespace fs = std::filesystem;

namespace {

constexpr const char* file_name = "grabbers.yaml";

ConfigurationFile read(const fs::path& path)
{
    ConfigurationFile file{path.u8string(), {}, {}};
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::status_known(status) || status.type() == fs::file_type::not_found) {
        file.problem = "cannot be found: " + error.message();
        return file;
    }
    // A pipe or a device could keep the caller waiting forever.
    if (status.type() != fs::file_type::regular) {
        file.problem = "not a regular file";
        return file;
    }
    errno = 0;
    std::ifstream stream{path, std::ios::binary};
    if (!stream) {
        file.problem = "cannot be opened: " + std::generic_category().message(errno);
        return file;
    }
    file.text.resize(YamlDocument::largest_text + 1);
    stream.read(file.text.data(), static_cast<std::streamsize>(file.text.size()));
    file.text.resize(static_cast<size_t>(stream.gcount()));
    if (stream.bad())
        file.problem = "cannot be read";
    return file;
}

} // namespace

ConfigurationFile ConfigurationFile::find()
{
    const std::string named = platform::environment("ZV_GRABBER_CONFIG");
    if (!named.empty()) {
        const fs::path path = fs::u8path(named);
        // A relative path would depend on the working directory of whatever application loads the library.
        if (!path.is_absolute())
            return {named, {}, "ZV_GRABBER_CONFIG must be an absolute path"};
        return read(path);
    }
    for (const fs::path& folder :
         {platform::user_configuration_folder(), platform::machine_configuration_folder()}) {
        if (folder.empty())
            continue; // this user has none
        const fs::path place = folder / file_name;
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
