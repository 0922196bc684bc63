#pragma once

#include <cstdint>
#include <string>

#include "zvgr/ZVGRLib.h"

namespace zvgentl {

class InterfaceModule;
class StreamModule;

/// True for the one status of the grabber library that means success.
constexpr bool succeeded(uint32_t status) noexcept { return status == zv_success; }

/// A library value, or `otherwise` when the library has none.
constexpr int64_t value_or(int64_t value, int64_t otherwise) noexcept
{
    return value == ZV_NOT_AVAILABLE ? otherwise : value;
}

/// The display name of the grabber behind an interface, empty when the library gives none.
std::string display_name_of(const InterfaceModule& iface);

/// The transport type of the grabber behind an interface, or behind the camera of a stream: "CXP", "CLHS" or
/// "GEV". The interface has to be alive.
const char* transport_type_of(const InterfaceModule& iface);
const char* transport_type_of(const StreamModule& stream);

/// Scans for grabbers: how many interfaces there are to list. The last grabber of a scan is the demo grabber,
/// hidden unless a setting exposes it or it is the only one.
int32_t scan_for_grabbers();

} // namespace zvgentl
