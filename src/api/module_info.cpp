#include "api/module_info.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "GenTL/GenTL.h"

#include "modules/CameraModule.h"
#include "modules/DeviceModule.h"
#include "modules/InterfaceModule.h"
#include "modules/grabber_info.h"

namespace zvgentl {

using namespace GenTL;

namespace {

constexpr InfoRow<InterfaceModule> interface_info[] = {
    {INTERFACE_INFO_ID, [](const InterfaceModule& iface) { return InfoValue::string(iface.getId()); }},
    {INTERFACE_INFO_DISPLAYNAME,
     [](const InterfaceModule& iface) { return InfoValue::string(display_name_of(iface)); }},
    {INTERFACE_INFO_TLTYPE,
     [](const InterfaceModule& iface) { return InfoValue::string(transport_type_of(iface)); }},
};

/// A text field of a camera's identity, read within its bounds: the record comes from the camera.
template <size_t size>
InfoValue identity_text(const char (&field)[size])
{
    return InfoValue::string(std::string(field, std::find(std::begin(field), std::end(field), '\0')));
}

const ZvCameraInfo& identity_of(const DeviceModule& device) { return device.get_Camera()->get_CameraInfo(); }

/// Cameras have neither a display name nor a user-defined one, so the model name takes their place.
constexpr InfoRow<DeviceModule> device_info[] = {
    {DEVICE_INFO_ID, [](const DeviceModule& device) { return InfoValue::string(device.getId()); }},
    {DEVICE_INFO_VENDOR,
     [](const DeviceModule& device) { return identity_text(identity_of(device).vendor_name); }},
    {DEVICE_INFO_MODEL,
     [](const DeviceModule& device) { return identity_text(identity_of(device).model_name); }},
    {DEVICE_INFO_TLTYPE,
     [](const DeviceModule& device) { return InfoValue::string(transport_type_of(*device.get_Parent())); }},
    {DEVICE_INFO_DISPLAYNAME,
     [](const DeviceModule& device) { return identity_text(identity_of(device).model_name); }},
    {DEVICE_INFO_ACCESS_STATUS,
     [](const DeviceModule&) { return InfoValue::int32(DEVICE_ACCESS_STATUS_READWRITE); }},
    {DEVICE_INFO_USER_DEFINED_NAME,
     [](const DeviceModule& device) { return identity_text(identity_of(device).model_name); }},
    {DEVICE_INFO_SERIAL_NUMBER,
     [](const DeviceModule& device) { return identity_text(identity_of(device).serial_number); }},
    {DEVICE_INFO_VERSION,
     [](const DeviceModule& device) { return identity_text(identity_of(device).device_version); }},
    {DEVICE_INFO_TIMESTAMP_FREQUENCY, [](const DeviceModule&) { return InfoValue::uint64(25000000); }},
};

} // namespace

const InfoRow<InterfaceModule>* find_interface_info(int32_t command) noexcept
{
    return find_row(interface_info, command);
}

const InfoRow<DeviceModule>* find_device_info(int32_t command) noexcept
{
    return find_row(device_info, command);
}

} // namespace zvgentl
