#include <cstdio>
#include <vector>

#include <fmt/core.h>

#include "zvgentl/CommandLine.h"
#include "zvgentl/Commands.h"
#include "zvgentl/OpenPort.h"
#include "zvgentl/Output.h"
#include "zvgentl/RegisterOptions.h"

namespace zvgentl::tool {

namespace {

constexpr std::size_t usual_length = 4;

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl read 0x1000\n"
    "  zvgentl read 0x1000 --length 64 --port interface\n"
    "  zvgentl read 0x1000 --as unsigned --big-endian\n"
    "\n"
    "Bytes are shown as a hex dump, or as a number or text with --as. `zvgentl describe FEATURE` shows\n"
    "the registers of a feature.\n"
    "\n"
    "Exit codes: 0 read, 1 failed, 2 wrong command line.";

int read(const RegisterOptions& options)
{
    const std::uint64_t address = address_of(options);
    const OpenPort port(options.port);
    std::vector<unsigned char> bytes(options.length == 0 ? usual_length
                                                         : static_cast<std::size_t>(options.length));
    port.port().read(address, bytes.data(), bytes.size());
    print_output(output_of(options, bytes));
    return exit_success;
}

const CommandRegistration registration({"read", "Read registers of a camera or of a module", footer},
                                       describe_registers, read);

} // namespace

} // namespace zvgentl::tool
