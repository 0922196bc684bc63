#include <cstdio>

#include <fmt/format.h>

#include "zvgentl/Command.h"
#include "zvgentl/OpenPort.h"

namespace zvgentl::tool {

namespace {

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl set ExposureTime=2500\n"
    "  zvgentl set --device Device10 Width=320 Height=240 PixelFormat=Mono12\n"
    "  zvgentl set DeviceUserID \"left camera\"\n"
    "\n"
    "The features are set in this order, because one may allow the next; the first that is refused ends the "
    "command,\n"
    "and those before it stay set. What the device then answers is printed, NAME=VALUE.\n"
    "\n"
    "How long a value stays is the device's affair: cameras keep it until they are switched off, the "
    "software\n"
    "grabbers until the program that set it ends. `zvgentl grab --set` sets features and grabs in one go.\n"
    "\n"
    "Exit codes: 0 all are set, 1 failed, 2 wrong command line.";

class SetCommand final : public Command {
public:
    std::string name() const override { return "set"; }
    std::string summary() const override { return "Set features"; }

    void add_options(CLI::App& app) override
    {
        app.add_option("NAME=VALUE", m_words, "Features and their values; or one name and one value")
            ->required()
            ->type_name("");
        add_port_options(app, m_options);
        app.footer(footer);
    }

    int run() override
    {
        const auto assignments = parse_assignments(m_words);
        if (!assignments) {
            fmt::print(stderr,
                       "zvgentl set: expected NAME=VALUE for every feature, or one name and one value; "
                       "see `zvgentl set --help`\n");
            return exit_usage;
        }
        const PortFeatures features(m_options);
        for (const auto& assignment : *assignments) {
            features.map().set(assignment.name, assignment.value);
            if (features.map().describe(assignment.name).access.is_readable)
                fmt::print("{}={}\n", assignment.name, features.map().get_text(assignment.name));
        }
        return exit_success;
    }

private:
    PortOptions m_options;
    std::vector<std::string> m_words;
};

const CommandRegistration registration([]() -> std::unique_ptr<Command> {
    return std::make_unique<SetCommand>();
});

} // namespace

} // namespace zvgentl::tool
