#include <chrono>
#include <cstdint>

#include "zvgentl/CommandLine.h"
#include "zvgentl/Commands.h"
#include "zvgentl/OpenPort.h"

namespace zvgentl::tool {

namespace {

constexpr std::uint64_t longest_timeout_ms = 86'400'000; // a day

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl exec TimestampLatch\n"
    "  zvgentl exec --device Device10 --set TriggerSelector=FrameStart TriggerSoftware\n"
    "\n"
    "Returns when the device reports that the command is done.\n"
    "\n"
    "Exit codes: 0 done, 1 failed or not done in time, 2 wrong command line.";

void describe(OptionList& list, ExecOptions& options)
{
    list.positional("NAME", "Command to execute", options.name);
    describe_port(list, options.port);
    describe_settings(list, options.settings);
    list.number("-t,--timeout", "MS", "How long to wait until the command is done, in milliseconds [5000]",
                options.timeout_ms, {1, longest_timeout_ms});
}

const CommandRegistration registration({"exec", "Execute a command of a camera or of a module", footer},
                                       describe, run);

} // namespace

int run(const ExecOptions& options)
{
    const PortFeatures features(options.port);
    set_all(options.settings, features.map());
    features.map().execute(options.name, std::chrono::milliseconds(options.timeout_ms));
    return exit_success;
}

} // namespace zvgentl::tool
