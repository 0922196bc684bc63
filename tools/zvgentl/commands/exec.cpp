#include <chrono>
#include <cstdint>

#include "zvgentl/Command.h"
#include "zvgentl/OpenPort.h"

namespace zvgentl::tool {

namespace {

constexpr std::uint64_t longest_timeout_ms = 86'400'000; // a day

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl exec TimestampLatch\n"
    "  zvgentl exec --device Device10 --set TriggerSelector=FrameStart TriggerSoftware\n"
    "\n"
    "Returns when the device says that the command is done.\n"
    "\n"
    "Exit codes: 0 done, 1 failed or not done in time, 2 wrong command line.";

class ExecCommand final : public Command {
public:
    std::string name() const override { return "exec"; }
    std::string summary() const override { return "Execute a command of a camera or of a module"; }

    void add_options(CLI::App& app) override
    {
        app.add_option("NAME", m_name, "Command to execute")->required()->type_name("");
        add_port_options(app, m_options);
        add_set_option(app, m_settings);
        app.add_option("-t,--timeout", m_timeout_ms,
                       "Longest wait until the command is done, in milliseconds [5000]")
            ->type_name("MS")
            ->check(CLI::Range(std::uint64_t{1}, longest_timeout_ms).description(""));
        app.footer(footer);
    }

    int run() override
    {
        const PortFeatures features(m_options);
        set_all(m_settings, features.map());
        features.map().execute(m_name, std::chrono::milliseconds(m_timeout_ms));
        return exit_success;
    }

private:
    PortOptions m_options;
    Assignments m_settings;
    std::string m_name;
    std::uint64_t m_timeout_ms{5000};
};

const CommandRegistration registration([]() -> std::unique_ptr<Command> {
    return std::make_unique<ExecCommand>();
});

} // namespace

} // namespace zvgentl::tool
