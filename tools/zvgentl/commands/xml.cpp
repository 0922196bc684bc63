#include <cstdio>
#include <filesystem>
#include <string>

#include "platform/terminal.h"
#include "platform/visible_text.h"
#include "zvgentl/CommandLine.h"
#include "zvgentl/Commands.h"
#include "zvgentl/OpenPort.h"
#include "zvgentl/Output.h"
#include "zvgentl/OutputFile.h"

namespace zvgentl::tool {

namespace {

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl xml > camera.xml\n"
    "  zvgentl xml --port system --output system.xml\n"
    "  zvgentl xml --port buffer --raw --output buffer.zip\n"
    "\n"
    "A compressed description is unpacked; --raw saves it exactly as stored in the device.\n"
    "\n"
    "Exit codes: 0 saved, 1 failed, 2 wrong command line.";

void describe(OptionList& list, XmlOptions& options)
{
    describe_port(list, options.port);
    list.text("-o,--output", "FILE", "File to write [standard output]", options.output);
    list.flag("--raw", "Save the file exactly as stored in the device, compressed or not", options.raw);
}

const CommandRegistration
    registration({"xml", "Save the register description of a camera or of a module", footer}, describe, run);

void save(const std::string& data, const std::string& output)
{
    if (output.empty()) {
        const bool is_shown = platform::is_terminal(stdout);
        const std::string shown = is_shown ? platform::visible_lines(data) : data;
        platform::keep_bytes(stdout);
        print_output(shown);
        return;
    }
    OutputFile file(std::filesystem::u8path(output));
    file.write(data);
    file.finish();
}

} // namespace

int run(const XmlOptions& options)
{
    const OpenPort port(options.port);
    const DescriptionFile file = port.description();
    save(options.raw ? file.data : unpack(file), options.output);
    return exit_success;
}

} // namespace zvgentl::tool
