#include <chrono>
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <thread>

#include <fmt/core.h>

#include "zvgentl/CommandLine.h"
#include "zvgentl/Commands.h"
#include "zvgentl/Json.h"
#include "zvgentl/OpenPort.h"
#include "zvgentl/Output.h"

namespace zvgentl::tool {

namespace {

constexpr std::uint64_t most_triggers = 1'000'000'000;
constexpr std::uint64_t highest_rate = 100'000;          // per second
constexpr std::uint64_t longest_timeout_ms = 86'400'000; // a day

struct TriggerOptions {
    PortOptions port;
    Assignments settings;
    std::string command{"TriggerSoftware"};
    std::uint64_t count{1};
    std::uint64_t rate{0}; // per second; 0: as fast as the device takes them
    std::uint64_t timeout_ms{5000};
    bool json{false};
};

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl trigger\n"
    "  zvgentl trigger --count 100 --rate 10 --set TriggerSelector=FrameStart\n"
    "\n"
    "Executes TriggerSoftware, and waits each time until the device has taken it. The times of a rate\n"
    "are counted from the first trigger, so a late one does not delay those that follow. Most devices\n"
    "can be opened by one program only: use this command with devices that several may use.\n"
    "\n"
    "Exit codes: 0 all were executed, 1 failed, 2 wrong command line.";

void describe(OptionList& list, TriggerOptions& options)
{
    describe_port(list, options.port);
    describe_settings(list, options.settings);
    list.text("-c,--command", "NAME", "Command to execute [TriggerSoftware]", options.command);
    list.number("-n,--count", "N", "How often to execute it [1]", options.count, {1, most_triggers});
    list.number("-r,--rate", "HZ", "How often in a second [as fast as the device takes them]", options.rate,
                {1, highest_rate});
    list.number("-t,--timeout", "MS", "How long the device may take for each, in milliseconds [5000]",
                options.timeout_ms, {1, longest_timeout_ms});
    list.flag("--json", "Print JSON instead of text", options.json);
}

int trigger(const TriggerOptions& options)
{
    using Clock = std::chrono::steady_clock;
    const PortFeatures features(options.port);
    set_all(options.settings, features.map());
    const auto start = Clock::now();
    for (std::uint64_t done = 0; done < options.count; ++done) {
        if (options.rate != 0)
            std::this_thread::sleep_until(
                start + std::chrono::nanoseconds(done * std::uint64_t{1'000'000'000} / options.rate));
        try {
            features.map().execute(options.command, std::chrono::milliseconds(options.timeout_ms));
        } catch (const std::exception& reason) {
            throw std::runtime_error(done == 0 ? std::string(reason.what())
                                               : fmt::format("after {} triggers: {}", done, reason.what()));
        }
    }
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    print_output(options.json ? json_text(NamedValues{{"command", options.command},
                                                      {"executed", static_cast<std::int64_t>(options.count)},
                                                      {"seconds", seconds}})
                              : fmt::format("{} executed {} times in {:.3f} s\n", options.command,
                                            options.count, seconds));
    return exit_success;
}

const CommandRegistration registration({"trigger", "Send software triggers to a camera", footer}, describe,
                                       trigger);

} // namespace

} // namespace zvgentl::tool
