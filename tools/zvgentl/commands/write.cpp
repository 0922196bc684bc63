#include <cstdio>
#include <string>
#include <vector>

#include <fmt/core.h>

#include "zvgentl/CommandLine.h"
#include "zvgentl/Commands.h"
#include "zvgentl/OpenPort.h"
#include "zvgentl/Output.h"
#include "zvgentl/RegisterOptions.h"

namespace zvgentl::tool {

namespace {

constexpr std::size_t usual_length = 4; // of a number

struct WriteOptions {
    RegisterOptions registers;
    std::string value;
};

constexpr const char* footer =
    "Examples:\n"
    "  zvgentl write 0x1000 \"00 00 02 80\"\n"
    "  zvgentl write 0x1000 640 --as unsigned --big-endian\n"
    "  zvgentl write 0x1000 \"left camera\" --as text --length 64\n"
    "\n"
    "Nothing checks whether the value makes sense to the device; `zvgentl set` does. Nothing is printed\n"
    "but with --json, which reads the registers again.\n"
    "\n"
    "Exit codes: 0 written, 1 failed, 2 wrong command line.";

void describe(OptionList& list, WriteOptions& options)
{
    describe_registers(list, options.registers);
    list.positional("VALUE", "What to write, in the form of --as", options.value);
}

int write(const WriteOptions& options)
{
    const RegisterOptions& registers = options.registers;
    const bool is_number = registers.form != RegisterForm::bytes && registers.form != RegisterForm::text;
    const std::size_t length =
        registers.length == 0 && is_number ? usual_length : static_cast<std::size_t>(registers.length);
    const std::uint64_t address = address_of(registers);
    std::vector<unsigned char> bytes =
        bytes_of_text(options.value, registers.form, order_of(registers), length);
    const OpenPort port(registers.port);
    port.port().write(address, bytes.data(), bytes.size());
    if (registers.json) {
        port.port().read(address, bytes.data(), bytes.size());
        print_output(output_of(registers, bytes));
    }
    return exit_success;
}

const CommandRegistration registration({"write", "Write registers of a camera or of a module", footer},
                                       describe, write);

} // namespace

} // namespace zvgentl::tool
