#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "zvgentl/PortOptions.h"
#include "zvgentl/RegisterText.h"

namespace zvgentl::tool {

/// What `zvgentl read` and `zvgentl write` have in common.
struct RegisterOptions {
    PortOptions port;
    std::string address;
    std::uint64_t length{0}; // in bytes; 0: not given
    RegisterForm form{RegisterForm::bytes};
    bool is_big_endian{false};
    bool json{false};
};

void describe_registers(OptionList& list, RegisterOptions& options);

/// Throws std::runtime_error for a text that is not an address.
std::uint64_t address_of(const RegisterOptions& options);

inline ByteOrder order_of(const RegisterOptions& options)
{
    return options.is_big_endian ? ByteOrder::big : ByteOrder::little;
}

/// What both commands print about bytes that were read from registers.
std::string output_of(const RegisterOptions& options, const std::vector<unsigned char>& bytes);

} // namespace zvgentl::tool
