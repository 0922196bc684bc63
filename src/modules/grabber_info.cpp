#include "modules/grabber_info.h"

#include <tuple>

#include "modules/CameraModule.h"
#include "modules/InterfaceModule.h"
#include "modules/StreamModule.h"
#include "modules/SystemModule.h"
#include "modules/settings.h"

namespace zvgentl {

namespace {

/// The position in the scan, by which the library names a grabber that may not be open.
uint32_t scan_position(const InterfaceModule& iface)
{
    return static_cast<uint32_t>(iface.get_Parent().get_InterfaceIndex(&iface));
}

} // namespace

std::string display_name_of(const InterfaceModule& iface)
{
    const char* const name = ZV_DeviceDisplayName(scan_position(iface));
    return name != nullptr ? name : "";
}

const char* transport_type_of(const InterfaceModule& iface)
{
    ZvDeviceInfo info{};
    info.version = 3;
    // A failure leaves the record zeroed, which reads as CoaXPress.
    std::ignore = ZV_DeviceInfo(scan_position(iface), &info);
    switch (info.protocol) {
    case zv_protocol_clhs:
        return "CLHS";
    case zv_protocol_gev:
        return "GEV";
    default:
        return "CXP";
    }
}

const char* transport_type_of(const StreamModule& stream)
{
    return transport_type_of(*stream.get_Camera()->get_Parent());
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
