#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <fmt/core.h>

#include "platform/visible_text.h"
#include "zvgentl/CommandLine.h"
#include "zvgentl/Commands.h"
#include "zvgentl/Json.h"
#include "zvgentl/LogFiles.h"
#include "zvgentl/Output.h"
#include "zvgentl/TextTable.h"

namespace zvgentl::tool {

namespace {

constexpr std::uint64_t most_lines = 1'000'000;
constexpr auto pause = std::chrono::milliseconds(100); // between two looks at the log

struct LogOptions {
    std::vector<std::string> words;
    std::uint64_t lines{10};
    std::string until;
    bool json{false};
};

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl log\n"
    "  zvgentl log level information\n"
    "  zvgentl log show --lines 100\n"
    "  zvgentl log follow --until \"Exit TLOpen\"\n"
    "\n"
    "The log of ZVGRLibGenTL.cti: `where` (or nothing) shows its files, its level and the file that\n"
    "configures it; `level` prints the level, or sets it; `show` prints the last lines, and `follow` also\n"
    "those that come, until it is interrupted. Programs read the configuration when they load the\n"
    "producer. The file is the one that ZV_LOGGER_CONFIG names, else the user's, else the machine's; the\n"
    "machine's is never written. GENICAM_GENTL64_PATH does not matter.\n"
    "\n"
    "Exit codes: 0 done, 1 failed, 2 wrong command line.";

void describe(OptionList& list, LogOptions& options)
{
    list.optional_words("ACTION", "where, level [LEVEL], show or follow [where]", options.words);
    list.number("-n,--lines", "N", "How many lines to show of those that are there [10]", options.lines,
                {0, most_lines});
    list.text("--until", "TEXT", "End `follow` after a line that holds this text", options.until);
    list.flag("--json", "Print JSON instead of text (where and level)", options.json);
}

std::string shown(const std::string& path) { return path.empty() ? "-" : path; }

std::string state_of(const std::string& path)
{
    std::error_code error;
    const auto size = std::filesystem::file_size(std::filesystem::u8path(path), error);
    return error ? "does not exist yet" : fmt::format("{} bytes", size);
}

int where(const LogPlaces& places, const LogOptions& options)
{
    if (options.json) {
        print_output(json_text(NamedValues{{"file", places.file()},
                                           {"default_log", places.default_log},
                                           {"level", places.level},
                                           {"configuration", places.configuration.source},
                                           {"changes_go_to", places.configuration.target}}));
        return exit_success;
    }
    std::vector<std::vector<std::string>> rows;
    for (const auto& file : places.configured)
        rows.push_back({"Log", file, state_of(file)});
    const char* const title = places.configured.empty() ? "Log" : "Default log";
    rows.push_back({title, shown(places.default_log), state_of(places.default_log)});
    rows.push_back({"Level", places.level});
    rows.push_back({"Configuration", shown(places.configuration.source)});
    print_output(table_text(rows));
    return exit_success;
}

std::string change(const std::string& text, const SettingLine& line)
{
    return with_setting_changed(text, line.key, line.value);
}

int level(const LogPlaces& places, const LogOptions& options)
{
    if (options.words.size() == 1) {
        print_output(options.json ? json_text(NamedValues{{"level", places.level}})
                                  : platform::visible(places.level) + "\n");
        return exit_success;
    }
    const std::string& wanted = options.words[1];
    if (!is_log_level(wanted))
        throw std::runtime_error("\"" + wanted + "\" is not a level; there are " + log_level_names());
    change_settings(logger_file, change, {{"logging.loggers.root.level", wanted}});
    return exit_success;
}

/// Prints the text line by line, without control characters. True when a line holds `until`.
bool print_lines(const std::string& text, const std::string& until)
{
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        const std::string line = text.substr(start, end - start);
        print_output(fmt::format("{}\n", platform::visible(line)));
        if (!until.empty() && line.find(until) != std::string::npos)
            return true;
        start = end + 1;
    }
    std::fflush(stdout);
    return false;
}

int show(const LogPlaces& places, const LogOptions& options)
{
    const std::string path = places.file();
    if (path.empty())
        throw std::runtime_error("the user has no folder for a log, and no configuration names a file");
    GrowingFile file(path);
    const std::string present = file.read();
    const bool is_followed = options.words.front() == "follow";
    if (!is_followed && present.empty())
        throw std::runtime_error("there is nothing in the log " + path);
    bool is_found = print_lines(last_lines(present, options.lines), options.until);
    std::string rest; // a line of which the end is missing
    while (is_followed && !is_found) {
        rest += file.read();
        const std::size_t end = rest.rfind('\n');
        if (end == std::string::npos) {
            std::this_thread::sleep_for(pause);
            continue;
        }
        is_found = print_lines(rest.substr(0, end + 1), options.until);
        rest.erase(0, end + 1);
    }
    return exit_success;
}

int run_log(const LogOptions& options)
{
    const std::string action = options.words.empty() ? "where" : options.words.front();
    const std::size_t most_words = action == "level" ? 2 : 1;
    const bool is_known = action == "where" || action == "level" || action == "show" || action == "follow";
    if (!is_known || options.words.size() > most_words) {
        print_error(
            fmt::format("zvgentl log: expected where, level [LEVEL], show or follow; see `zvgentl log "
                        "--help`\n"));
        return exit_usage;
    }
    const LogPlaces places = read_log_places();
    if (action == "where")
        return where(places, options);
    return action == "level" ? level(places, options) : show(places, options);
}

const CommandRegistration registration({"log", "Show the producer's log and set its level", footer}, describe,
                                       run_log);

} // namespace

} // namespace zvgentl::tool
