#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <fmt/core.h>

#include "platform/visible_text.h"
#include "zvgentl/CommandLine.h"
#include "zvgentl/Commands.h"
#include "zvgentl/FeatureFile.h"
#include "zvgentl/Json.h"
#include "zvgentl/OpenPort.h"
#include "zvgentl/Output.h"

namespace zvgentl::tool {

namespace {

struct SaveOptions {
    PortOptions port;
    Assignments settings;
    std::string output; // a file; empty: the terminal
    bool json{false};
};

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl save --output camera.txt\n"
    "  zvgentl save --device Device10 | grep Trigger\n"
    "\n"
    "Writes a line NAME = VALUE for every feature that can be written, and for features with selectors\n"
    "one for every value of these: TriggerMode[TriggerSelector=FrameStart] = Off. If the description\n"
    "says which features are to be stored, only those are. `zvgentl load` sets them again.\n"
    "\n"
    "Exit codes: 0 saved, 1 failed, or a feature could not be read (an error line names it), 2 wrong\n"
    "command line.";

void describe(OptionList& list, SaveOptions& options)
{
    describe_port(list, options.port);
    describe_settings(list, options.settings);
    list.text("-o,--output", "FILE", "File to write [standard output]", options.output);
    list.flag("--json", "Write JSON, which `zvgentl load` does not read", options.json);
}

std::vector<NamedValues> rows_of(const SavedFeatures& features)
{
    std::vector<NamedValues> rows;
    for (const SavedFeature& feature : features)
        rows.push_back({{"feature", feature.title()}, {"name", feature.name}, {"value", feature.value}});
    return rows;
}

void write(const std::string& text, const std::string& output)
{
    if (output.empty()) {
        print_output(text);
        return;
    }
    std::ofstream stream(std::filesystem::u8path(output), std::ios::binary);
    stream << text;
    stream.close();
    if (!stream)
        throw std::runtime_error("cannot write " + output);
}

int save(const SaveOptions& options)
{
    const PortFeatures port(options.port);
    set_all(options.settings, port.map());
    std::vector<std::string> problems;
    const SavedFeatures features = read_features(port.map(), problems);
    write(options.json ? json_text("features", rows_of(features))
                       : to_text(features, "Features of " + port.title()),
          options.output);
    for (const auto& problem : problems)
        print_error(fmt::format("zvgentl save: {}\n", platform::visible(problem)));
    return problems.empty() ? exit_success : exit_failure;
}

const CommandRegistration registration({"save", "Save the features that can be written as a file", footer},
                                       describe, save);

} // namespace

} // namespace zvgentl::tool
