#include "platform/visible_text.h"
#include "zvgentl/CommandLine.h"
#include "zvgentl/Commands.h"
#include "zvgentl/OpenPort.h"
#include "zvgentl/Output.h"

namespace zvgentl::tool {

namespace {

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl set ExposureTime=2500\n"
    "  zvgentl set --device Device10 Width=320 Height=240 PixelFormat=Mono12\n"
    "  zvgentl set DeviceUserID \"left camera\"\n"
    "\n"
    "Features are set in the order given, because one may make the next possible. The command ends at\n"
    "the first one that is refused; those before it stay set. After each, the value that the device\n"
    "reports is printed as NAME=VALUE.\n"
    "\n"
    "How long a value is kept depends on the device: cameras keep it until they are switched off,\n"
    "software cameras until the program that set it ends. `zvgentl grab --set` sets features and grabs\n"
    "in one command.\n"
    "\n"
    "Exit codes: 0 all are set, 1 failed, 2 wrong command line.";

void describe(OptionList& list, SetOptions& options)
{
    list.positional("NAME=VALUE", "Features and their values; or one name and one value", options.words);
    describe_port(list, options.port);
}

const CommandRegistration registration({"set", "Set features", footer}, describe, run);

} // namespace

int run(const SetOptions& options)
{
    const auto assignments = parse_assignments(options.words);
    if (!assignments) {
        print_error("zvgentl set: expected NAME=VALUE for every feature, or one name and one value; "
                    "see `zvgentl set --help`\n");
        return exit_usage;
    }
    const PortFeatures features(options.port);
    for (const auto& assignment : *assignments) {
        features.map().set(assignment.name, assignment.value);
        if (features.map().describe(assignment.name).access.is_readable)
            print_output(assignment.name + "=" + platform::visible(features.map().get_text(assignment.name)) +
                         "\n");
    }
    return exit_success;
}

} // namespace zvgentl::tool
