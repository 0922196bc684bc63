#include <cstdio>

#include <fmt/format.h>

#include "platform/Interrupt.h"
#include "zvgentl/Command.h"
#include "zvgentl/Grab.h"
#include "zvgentl/TemporarySettings.h"

namespace zvgentl::tool {

namespace {

class GrabCommand final : public Command {
public:
    std::string name() const override { return "grab"; }
    std::string summary() const override { return "Grab frames from a device, and save them as pictures"; }
    void add_options(CLI::App& app) override { add_grab_options(app, m_options); }

    int run() override
    {
        const GrabResult result = grab_with_mode();
        if (m_options.json)
            fmt::print("{}\n",
                       to_json(result).dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
        else
            fmt::print("{}", to_text(result));
        return result.exit_code();
    }

private:
    /// Everything is shut down and the temporary settings are gone when it returns or throws.
    GrabResult grab_with_mode() const
    {
        const TemporarySettings settings(m_options.mode); // before the producer is loaded, which reads them
        platform::Interrupt interrupt([&settings] { settings.remove(); });
        return grab(m_options, interrupt);
    }

    GrabOptions m_options;
};

const CommandRegistration registration([]() -> std::unique_ptr<Command> {
    return std::make_unique<GrabCommand>();
});

} // namespace

} // namespace zvgentl::tool
