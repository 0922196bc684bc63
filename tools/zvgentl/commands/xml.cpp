#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <fmt/format.h>

#include "platform/terminal.h"
#include "zvgentl/Command.h"
#include "zvgentl/OpenPort.h"

namespace zvgentl::tool {

namespace {

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl xml > camera.xml\n"
    "  zvgentl xml --port system --output system.xml\n"
    "  zvgentl xml --port buffer --raw --output buffer.zip\n"
    "\n"
    "A packed description is unpacked; --raw saves the bytes that lie in the device.\n"
    "\n"
    "Exit codes: 0 saved, 1 failed, 2 wrong command line.";

class XmlCommand final : public Command {
public:
    std::string name() const override { return "xml"; }
    std::string summary() const override
    {
        return "Save the register description of a camera or of a module";
    }

    void add_options(CLI::App& app) override
    {
        add_port_options(app, m_options);
        app.add_option("-o,--output", m_output, "File to write [the terminal]")->type_name("FILE");
        app.add_flag("--raw", m_raw, "Save the file as it lies in the device, packed or not");
        app.footer(footer);
    }

    int run() override
    {
        const OpenPort port(m_options);
        const DescriptionFile file = port.description();
        save(m_raw ? file.data : unpack(file));
        return exit_success;
    }

private:
    void save(const std::string& data) const
    {
        if (m_output.empty()) {
            platform::keep_bytes(stdout);
            if (std::fwrite(data.data(), 1, data.size(), stdout) != data.size() || std::fflush(stdout) != 0)
                throw std::runtime_error("the description cannot be written");
            return;
        }
        std::ofstream stream(std::filesystem::u8path(m_output), std::ios::binary);
        stream << data;
        stream.close();
        if (!stream)
            throw std::runtime_error("cannot write " + m_output);
    }

    PortOptions m_options;
    std::string m_output;
    bool m_raw{false};
};

const CommandRegistration registration([]() -> std::unique_ptr<Command> {
    return std::make_unique<XmlCommand>();
});

} // namespace

} // namespace zvgentl::tool
