#include "modules/grabber_info.h"

#include <tuple>

#include "zvgr/ZVGRLib.h"

#include "modules/settings.h"

namespace zvgentl {

std::string grabber_display_name(int32_t index)
{
    const char* const name = ZV_DeviceDisplayName(static_cast<uint32_t>(index));
    return name != nullptr ? name : "";
}

const char* grabber_transport_type(int32_t index)
{
    ZvDeviceInfo info{};
    info.version = 3;
    // A failure leaves the record zeroed, which reads as CoaXPress.
    std::ignore = ZV_DeviceInfo(static_cast<uint32_t>(index), &info);
    switch (info.protocol) {
    case zv_protocol_clhs:
        return "CLHS";
    case zv_protocol_gev:
        return "GEV";
    default:
        return "CXP";
    }
}

int32_t scan_for_grabbers()
{
    uint32_t found = 0;
    // Contract: the status is not examined; a scan that writes nothing found nothing.
    std::ignore = ZV_DeviceScan(&found);
    const auto count = static_cast<int32_t>(found);
    const bool is_demo_grabber_exposed = read(settings::expose_demo_grabber) != 0;
    return count >= 2 && !is_demo_grabber_exposed ? count - 1 : count;
}

} // namespace zvgentl
