#include <cstdio>

#include <fmt/format.h>

#include "zvgentl/Command.h"
#include "zvgentl/FeatureOutput.h"
#include "zvgentl/OpenPort.h"

namespace zvgentl::tool {

namespace {

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl get Width\n"
    "  zvgentl get --device Device10 Width Height PixelFormat\n"
    "  zvgentl get --set TriggerSelector=FrameStart TriggerMode\n"
    "  zvgentl get --port system TLModelName\n"
    "\n"
    "One feature gives its bare value, several give lines NAME=VALUE as `zvgentl set` takes them.\n"
    "\n"
    "Exit codes: 0 all were read, 1 failed, 2 wrong command line.";

class GetCommand final : public Command {
public:
    std::string name() const override { return "get"; }
    std::string summary() const override { return "Print the values of features"; }

    void add_options(CLI::App& app) override
    {
        app.add_option("NAME", m_names, "Features to read")->required()->type_name("");
        add_port_options(app, m_options);
        add_set_option(app, m_settings);
        app.add_flag("--json", m_json, "Print a JSON object of names and values");
        app.footer(footer);
    }

    int run() override
    {
        const PortFeatures features(m_options);
        set_all(m_settings, features.map());
        nlohmann::ordered_json json = nlohmann::ordered_json::object();
        std::string text;
        for (const auto& feature : m_names) {
            json[feature] = to_json(features.map().get(feature));
            if (!m_json)
                text += (m_names.size() > 1 ? feature + "=" : "") + features.map().get_text(feature) + "\n";
        }
        if (m_json)
            text = json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
        fmt::print("{}", text);
        return exit_success;
    }

private:
    PortOptions m_options;
    Assignments m_settings;
    std::vector<std::string> m_names;
    bool m_json{false};
};

const CommandRegistration registration([]() -> std::unique_ptr<Command> {
    return std::make_unique<GetCommand>();
});

} // namespace

} // namespace zvgentl::tool
