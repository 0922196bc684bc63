#include <cstdio>
#include <string>

#include <fmt/core.h>

#include "zvgentl/CommandLine.h"
#include "zvgentl/Commands.h"
#include "zvgentl/FeatureOutput.h"
#include "zvgentl/Json.h"
#include "zvgentl/OpenPort.h"
#include "zvgentl/Output.h"

namespace zvgentl::tool {

namespace {

struct DescribeOptions {
    PortOptions port;
    Assignments settings;
    std::string name;
    bool json{false};
};

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl describe ExposureTime\n"
    "  zvgentl describe --set TriggerSelector=FrameStart TriggerMode\n"
    "  zvgentl describe --port interface CameraSelector --json\n"
    "\n"
    "Shows type, value, range, unit, access, visibility and selectors of a feature, what its device says\n"
    "about it, and the registers that its value is made of, for `zvgentl read`. `Stored` says whether\n"
    "the feature belongs to the settings that are stored in files.\n"
    "\n"
    "Exit codes: 0 described, 1 failed, or part of it could not be read, 2 wrong command line.";

void describe_options(OptionList& list, DescribeOptions& options)
{
    list.positional("NAME", "Feature to describe", options.name);
    describe_port(list, options.port);
    describe_settings(list, options.settings);
    list.flag("--json", "Print JSON instead of text", options.json);
}

int describe_feature(const DescribeOptions& options)
{
    const PortFeatures features(options.port);
    set_all(options.settings, features.map());
    const FeatureDetails details = features.map().details(options.name);
    print_output(options.json ? json_text(features.title(), details) : to_text(features.title(), details));
    return details.feature.problem.empty() ? exit_success : exit_failure;
}

const CommandRegistration registration({"describe", "Describe a feature with its registers", footer},
                                       describe_options, describe_feature);

} // namespace

} // namespace zvgentl::tool
