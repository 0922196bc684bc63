#include "platform/visible_text.h"
#include "zvgentl/CommandLine.h"
#include "zvgentl/Commands.h"
#include "zvgentl/Json.h"
#include "zvgentl/OpenPort.h"
#include "zvgentl/Output.h"

namespace zvgentl::tool {

namespace {

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl get Width\n"
    "  zvgentl get --device Device10 Width Height PixelFormat\n"
    "  zvgentl get --set TriggerSelector=FrameStart TriggerMode\n"
    "  zvgentl get --port system TLModelName\n"
    "\n"
    "For one feature, only its value is printed; for several, lines NAME=VALUE that `zvgentl set`\n"
    "accepts.\n"
    "\n"
    "Exit codes: 0 all were read, 1 failed, 2 wrong command line.";

void describe(OptionList& list, GetOptions& options)
{
    list.positional("NAME", "Features to read", options.names);
    describe_port(list, options.port);
    describe_settings(list, options.settings);
    list.flag("--json", "Print a JSON object of names and values", options.json);
}

const CommandRegistration registration({"get", "Print the values of features", footer}, describe, run);

} // namespace

int run(const GetOptions& options)
{
    const PortFeatures features(options.port);
    set_all(options.settings, features.map());
    NamedValues values;
    std::string text;
    for (const auto& name : options.names) {
        values.emplace_back(name, features.map().get(name));
        if (!options.json)
            text += (options.names.size() > 1 ? name + "=" : "") +
                    platform::visible(features.map().get_text(name)) + "\n";
    }
    print_output(options.json ? json_text(values) : text);
    return exit_success;
}

} // namespace zvgentl::tool
