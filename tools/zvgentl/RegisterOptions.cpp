#include "zvgentl/RegisterOptions.h"
#include "platform/visible_text.h"

#include <stdexcept>

#include <fmt/core.h>

#include "genapi/values.h"
#include "zvgentl/CommandLine.h"
#include "zvgentl/Json.h"

namespace zvgentl::tool {

namespace {

constexpr std::uint64_t longest = std::uint64_t{16} << 20U; // no register is longer

} // namespace

void describe_registers(OptionList& list, RegisterOptions& options)
{
    list.positional("ADDRESS", "Address of the first byte, decimal or hexadecimal (0x)", options.address);
    describe_port(list, options.port);
    list.number("-l,--length", "BYTES", "How many bytes [4; as many as VALUE has]", options.length,
                {1, longest});
    list.choice<RegisterForm>(
        "--as", "FORM", "Form of the value: bytes, unsigned, signed, float or text [bytes]", options.form,
        {{"bytes", RegisterForm::bytes},
         {"unsigned", RegisterForm::unsigned_number},
         {"signed", RegisterForm::signed_number},
         {"float", RegisterForm::floating_number},
         {"text", RegisterForm::text}});
    list.flag("--big-endian", "The highest byte of a number comes first [the lowest byte]",
              options.is_big_endian);
    list.flag("--json", "Print JSON instead of text", options.json);
}

std::uint64_t address_of(const RegisterOptions& options)
{
    const auto address = parse_address(options.address);
    if (!address)
        throw std::runtime_error("\"" + options.address + "\" is not an address; write 4096 or 0x1000");
    return *address;
}

std::string output_of(const RegisterOptions& options, const std::vector<unsigned char>& bytes)
{
    const std::uint64_t address = address_of(options);
    const std::string value = text_of_bytes(bytes, options.form, order_of(options));
    if (options.json)
        return json_text(NamedValues{{"address", fmt::format("{:#x}", address)},
                                     {"length", static_cast<std::int64_t>(bytes.size())},
                                     {"bytes", bytes_text(bytes)},
                                     {"value", value}});
    return options.form == RegisterForm::bytes ? hex_dump(address, bytes) : platform::visible(value) + "\n";
}

} // namespace zvgentl::tool
