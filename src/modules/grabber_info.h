#pragma once

#include <cstdint>
#include <string>

namespace zvgentl {

/// The grabber's name for people, empty when the library gives none. `index` is the position in the scan.
std::string grabber_display_name(int32_t index);

/// How the grabber speaks to its cameras: "CXP", "CLHS" or "GEV".
const char* grabber_transport_type(int32_t index);

/// Scans for grabbers: how many interfaces there are to list. The last grabber of a scan is the demo grabber,
/// hidden unless a setting exposes it or it is the only one.
int32_t scan_for_grabbers();

} // namespace zvgentl
