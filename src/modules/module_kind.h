#pragma once

#include <cstdint>

namespace zvgentl {

/// What a handle names. A closed module counts as invalid.
enum class ModuleKind : int32_t {
    invalid = 0,
    system = 1,
    iface = 2,
    device = 3,
    stream = 4,
    buffer = 5,
    remote_device = 6,
};

/// The kind's name, as port information and log lines give it.
constexpr const char* handle_type_name(ModuleKind kind) noexcept
{
    constexpr const char* names[] = {"Invalid handle", "TLSystem", "TLInterface", "TLDevice",
                                     "TLDataStream",   "TLBuffer", "Device"};
    const auto index = static_cast<int32_t>(kind);
    return index >= 1 && index <= 6 ? names[index] : names[0];
}

} // namespace zvgentl
