#include "zvgentl/LoggerLibrary.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <vector>

#include <fmt/core.h>

#include "platform/environment.h"
#include "platform/paths.h"
#include "zvlog/ZVReports.h"

namespace zvgentl::tool {

namespace fs = std::filesystem;

namespace {

constexpr const char* logger_library = "ZVLogger";

std::atomic<bool> has_log{false};

/// The file that tells where the log goes; empty when there is none.
fs::path logger_configuration()
{
    std::vector<fs::path> places{fs::u8path(platform::environment("ZV_LOGGER_CONFIG"))};
    for (const auto& folder :
         {platform::user_configuration_folder(), platform::machine_configuration_folder()})
        places.push_back(folder.empty() ? folder : folder / "logger.properties");
    for (const auto& place : places) {
        std::error_code error; // what cannot be looked at is not used either
        if (!place.empty() && fs::is_regular_file(place, error))
            return place;
    }
    return {};
}

} // namespace

std::string report_of(const Producer& producer)
{
    const auto reported_text =
        reinterpret_cast<decltype(&ZVReportedText)>(producer.find_in(logger_library, "ZVReportedText"));
    if (reported_text == nullptr)
        return {};
    std::string text(reported_text(nullptr, 0), '\0');
    reported_text(text.data(), text.size());
    text.resize(std::min(text.find('\0'), text.size()));
    return text;
}

void remember_log_of(const Producer& producer)
{
    if (producer.find_in(logger_library, "InitLogger") != nullptr)
        has_log = true;
}

std::string log_hint()
{
    if (!has_log)
        return {};
    const fs::path configuration = logger_configuration();
    if (!configuration.empty())
        return fmt::format("The log may tell more; {} says where it is.\n", configuration.u8string());
    const fs::path folder = platform::user_state_folder();
    if (folder.empty())
        return {};
    return fmt::format("The log may tell more: {}\n", (folder / "zvgentl.log").u8string());
}

} // namespace zvgentl::tool
