#pragma once

#include <cstdint>
#include <string>

namespace zvgentl {

class InterfaceModule;
class StreamModule;

/// The name for people of the grabber behind an interface, empty when the library gives none.
std::string display_name_of(const InterfaceModule& iface);

/// How the grabber behind an interface, or behind the camera of a stream, speaks to its cameras: "CXP",
/// "CLHS" or "GEV". The interface has to be alive.
const char* transport_type_of(const InterfaceModule& iface);
const char* transport_type_of(const StreamModule& stream);

/// Scans for grabbers: how many interfaces there are to list. The last grabber of a scan is the demo grabber,
/// hidden unless a setting exposes it or it is the only one.
int32_t scan_for_grabbers();

} // namespace zvgentl
