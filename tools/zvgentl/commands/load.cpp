#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <fmt/core.h>

#include "platform/files.h"
#include "platform/visible_text.h"
#include "zvgentl/CommandLine.h"
#include "zvgentl/Commands.h"
#include "zvgentl/FeatureFile.h"
#include "zvgentl/Json.h"
#include "zvgentl/OpenPort.h"
#include "zvgentl/Output.h"

namespace zvgentl::tool {

namespace {

struct LoadOptions {
    PortOptions port;
    std::string file;
    bool json{false};
};

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl load camera.txt\n"
    "  zvgentl load camera.txt --device Device10 --json\n"
    "\n"
    "Sets the features of a file that `zvgentl save` wrote. Because one feature may allow another or\n"
    "change it, all are gone through until nothing changes any more, whatever their order in the file.\n"
    "Each that cannot be set is named; the others are set all the same.\n"
    "\n"
    "How long values are kept depends on the device; software cameras keep them until the program ends.\n"
    "\n"
    "Exit codes: 0 all have their values, 1 failed, or some could not be set, 2 wrong command line.";

void describe(OptionList& list, LoadOptions& options)
{
    list.positional("FILE", "File to read", options.file);
    describe_port(list, options.port);
    list.flag("--json", "Print JSON instead of text", options.json);
}

SavedFeatures read(const std::string& file)
{
    const platform::FileContent content =
        platform::read_file(std::filesystem::absolute(std::filesystem::u8path(file)).u8string());
    if (content.state == platform::FileState::missing)
        throw std::runtime_error("there is no file " + file);
    if (content.state != platform::FileState::present)
        throw std::runtime_error("cannot read " + file + ": " + content.reason);
    try {
        return parse_features(content.text);
    } catch (const std::exception& reason) {
        throw std::runtime_error(file + ", " + reason.what());
    }
}

const char* result_name(LoadResult result) noexcept
{
    switch (result) {
    case LoadResult::set:
        return "set";
    case LoadResult::unchanged:
        return "unchanged";
    default:
        return "failed";
    }
}

std::vector<NamedValues> rows_of(const std::vector<LoadedFeature>& features)
{
    std::vector<NamedValues> rows;
    rows.reserve(features.size());
    for (const auto& [feature, result, problem] : features)
        rows.push_back({{"feature", feature.title()},
                        {"name", feature.name},
                        {"value", feature.value},
                        {"result", std::string(result_name(result))},
                        {"problem", problem.empty() ? Value() : Value(problem)}});
    return rows;
}

int load(const LoadOptions& options)
{
    const SavedFeatures wanted = read(options.file);
    const PortFeatures port(options.port);
    const auto features = apply_features(wanted, port.map());
    const auto count = [&features](LoadResult result) {
        return std::count_if(features.begin(), features.end(),
                             [result](const auto& feature) { return feature.result == result; });
    };
    if (options.json)
        print_output(json_text("features", rows_of(features)));
    else
        print_output(fmt::format("{}: {} features set, {} had their values, {} failed\n",
                                 platform::visible(port.title()), count(LoadResult::set),
                                 count(LoadResult::unchanged), count(LoadResult::failed)));
    for (const auto& [feature, result, problem] : features)
        if (result == LoadResult::failed)
            print_error(fmt::format("zvgentl load: {}: {}\n", platform::visible(feature.title()),
                                    platform::visible(problem)));
    return count(LoadResult::failed) == 0 ? exit_success : exit_failure;
}

const CommandRegistration registration({"load", "Set the features of a file", footer}, describe, load);

} // namespace

} // namespace zvgentl::tool
