#include <algorithm>

#include "zvgentl/CommandLine.h"
#include "zvgentl/Commands.h"
#include "zvgentl/FeatureOutput.h"
#include "zvgentl/Json.h"
#include "zvgentl/OpenPort.h"
#include "zvgentl/Output.h"

namespace zvgentl::tool {

namespace {

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl features                               # of the first camera\n"
    "  zvgentl features --device Device10 --category AcquisitionControl\n"
    "  zvgentl features --port stream\n"
    "  zvgentl features --set TriggerSelector=FrameStart --category AcquisitionControl\n"
    "  zvgentl features --json | jq '.features[] | select(.access == \"RW\") | .name'\n"
    "\n"
    "Each line shows the name, type, access and value of a feature, and the values that may be\n"
    "written. Access: RW read and write, RO read only, WO write only, NA not available at the moment,\n"
    "NI not implemented, `RO locked` read only at the moment.\n"
    "\n"
    "Exit codes: 0 listed, 1 failed, or a feature could not be read (its line says why), 2 wrong\n"
    "command line.";

void describe(OptionList& list, FeaturesOptions& options)
{
    describe_port(list, options.port);
    describe_settings(list, options.settings);
    list.text("-c,--category", "NAME", "Only the features of this category", options.category);
    list.flag("--json", "Print JSON instead of text", options.json);
}

const CommandRegistration registration({"features", "Show the features of a camera or of a module", footer},
                                       describe, run);

} // namespace

int run(const FeaturesOptions& options)
{
    const PortFeatures features(options.port);
    set_all(options.settings, features.map());
    FeatureTable table{features.title(), options.category, {}};
    for (const auto& entry : features.map().tree(options.category))
        table.lines.push_back({entry, features.map().describe(entry.name)});
    print_output(options.json ? json_text(table) : to_text(table));
    const bool all_were_read = std::all_of(table.lines.begin(), table.lines.end(),
                                           [](const auto& line) { return line.feature.problem.empty(); });
    return all_were_read ? exit_success : exit_failure;
}

} // namespace zvgentl::tool
