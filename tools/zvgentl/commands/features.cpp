#include <algorithm>
#include <cstdio>

#include <fmt/format.h>

#include "zvgentl/Command.h"
#include "zvgentl/FeatureOutput.h"
#include "zvgentl/OpenPort.h"

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
    "Each line shows name, type, access, value and what else can be written. Access: RW read and write, RO "
    "read "
    "only,\n"
    "WO write only, NA not available now, NI not implemented, `RO locked` not writable at the moment.\n"
    "\n"
    "Exit codes: 0 listed, 1 failed, or a feature could not be read (its line says why), 2 wrong command "
    "line.";

class FeaturesCommand final : public Command {
public:
    std::string name() const override { return "features"; }
    std::string summary() const override { return "Show the features of a camera or of a module"; }

    void add_options(CLI::App& app) override
    {
        add_port_options(app, m_options);
        add_set_option(app, m_settings);
        app.add_option("-c,--category", m_category, "Only the features of this category")->type_name("NAME");
        app.add_flag("--json", m_json, "Print JSON for programs instead of text");
        app.footer(footer);
    }

    int run() override
    {
        const PortFeatures features(m_options);
        set_all(m_settings, features.map());
        std::vector<FeatureLine> lines;
        for (const auto& entry : features.map().tree(m_category))
            lines.push_back({entry, features.map().describe(entry.name)});
        if (m_json)
            print_json(features.title(), lines);
        else
            fmt::print("{}: {}\n{}", features.title(), m_category, to_text(lines));
        const bool is_complete = std::all_of(
            lines.begin(), lines.end(), [](const FeatureLine& line) { return line.feature.problem.empty(); });
        return is_complete ? exit_success : exit_failure;
    }

private:
    void print_json(const std::string& title, const std::vector<FeatureLine>& lines) const
    {
        const nlohmann::ordered_json json{
            {"port", title}, {"category", m_category}, {"features", to_json(lines)}};
        fmt::print("{}\n", json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
    }

    PortOptions m_options;
    Assignments m_settings;
    std::string m_category{"Root"};
    bool m_json{false};
};

const CommandRegistration registration([]() -> std::unique_ptr<Command> {
    return std::make_unique<FeaturesCommand>();
});

} // namespace

} // namespace zvgentl::tool
