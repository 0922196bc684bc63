#pragma once

#include <algorithm>
#include <iterator>
#include <string>

#include "GenTL/GenTL.h"

#include "api/InfoTable.h"
#include "api/producer_info.h"
#include "modules/CameraModule.h"
#include "modules/DeviceModule.h"
#include "modules/InterfaceModule.h"
#include "modules/grabber_info.h"
#include "port/Port.h"

namespace zvgentl {

/// What is known of an interface, whether it was asked of the system or of the interface itself.
inline constexpr InfoRow<InterfaceModule> interface_info[] = {
    {GenTL::INTERFACE_INFO_ID, [](const InterfaceModule& iface) { return InfoValue::string(iface.getId()); }},
    {GenTL::INTERFACE_INFO_DISPLAYNAME,
     [](const InterfaceModule& iface) { return InfoValue::string(display_name_of(iface)); }},
    {GenTL::INTERFACE_INFO_TLTYPE,
     [](const InterfaceModule& iface) { return InfoValue::string(transport_type_of(iface)); }},
};

/// A text field of a camera's identity, read within its bounds: the record comes from the camera.
template <size_t size>
InfoValue identity_text(const char (&field)[size])
{
    return InfoValue::string(std::string(field, std::find(std::begin(field), std::end(field), '\0')));
}

/// What is known of a device, whether it was asked of its interface or of the device itself. Cameras have
/// neither a display name nor a user-defined one, so the model name takes their place.
inline constexpr InfoRow<DeviceModule> device_info[] = {
    {GenTL::DEVICE_INFO_ID, [](const DeviceModule& device) { return InfoValue::string(device.getId()); }},
    {GenTL::DEVICE_INFO_VENDOR,
     [](const DeviceModule& device) {
         return identity_text(device.get_Camera()->get_CameraInfo().vendor_name);
     }},
    {GenTL::DEVICE_INFO_MODEL,
     [](const DeviceModule& device) {
         return identity_text(device.get_Camera()->get_CameraInfo().model_name);
     }},
    {GenTL::DEVICE_INFO_TLTYPE,
     [](const DeviceModule& device) { return InfoValue::string(transport_type_of(*device.get_Parent())); }},
    {GenTL::DEVICE_INFO_DISPLAYNAME,
     [](const DeviceModule& device) {
         return identity_text(device.get_Camera()->get_CameraInfo().model_name);
     }},
    {GenTL::DEVICE_INFO_ACCESS_STATUS,
     [](const DeviceModule&) { return InfoValue::int32(GenTL::DEVICE_ACCESS_STATUS_READWRITE); }},
    {GenTL::DEVICE_INFO_USER_DEFINED_NAME,
     [](const DeviceModule& device) {
         return identity_text(device.get_Camera()->get_CameraInfo().model_name);
     }},
    {GenTL::DEVICE_INFO_SERIAL_NUMBER,
     [](const DeviceModule& device) {
         return identity_text(device.get_Camera()->get_CameraInfo().serial_number);
     }},
    {GenTL::DEVICE_INFO_VERSION,
     [](const DeviceModule& device) {
         return identity_text(device.get_Camera()->get_CameraInfo().device_version);
     }},
    {GenTL::DEVICE_INFO_TIMESTAMP_FREQUENCY, [](const DeviceModule&) { return InfoValue::uint64(25000000); }},
};

/// What a port says about itself, the same for every kind of module: also that it can be written and has both
/// byte orders, whether that is true or not.
inline constexpr InfoRow<Port> port_info[] = {
    {GenTL::PORT_INFO_ID, [](const Port& port) { return InfoValue::string(port.getId()); }},
    {GenTL::PORT_INFO_VENDOR, [](const Port&) { return producer_value<GenTL::TL_INFO_VENDOR>(); }},
    {GenTL::PORT_INFO_MODEL, [](const Port&) { return producer_value<GenTL::TL_INFO_MODEL>(); }},
    {GenTL::PORT_INFO_TLTYPE, [](const Port&) { return producer_value<GenTL::TL_INFO_TLTYPE>(); }},
    {GenTL::PORT_INFO_MODULE, [](const Port& port) { return InfoValue::string(port.kind_name()); }},
    {GenTL::PORT_INFO_LITTLE_ENDIAN, [](const Port&) { return InfoValue::bool8(true); }},
    {GenTL::PORT_INFO_BIG_ENDIAN, [](const Port&) { return InfoValue::bool8(true); }},
    {GenTL::PORT_INFO_ACCESS_READ, [](const Port&) { return InfoValue::bool8(true); }},
    {GenTL::PORT_INFO_ACCESS_WRITE, [](const Port&) { return InfoValue::bool8(true); }},
    {GenTL::PORT_INFO_ACCESS_NA, [](const Port&) { return InfoValue::bool8(false); }},
    {GenTL::PORT_INFO_ACCESS_NI, [](const Port&) { return InfoValue::bool8(false); }},
    {GenTL::PORT_INFO_VERSION, [](const Port&) { return InfoValue::string("1.0"); }},
    {GenTL::PORT_INFO_PORTNAME, [](const Port&) { return InfoValue::string("Device"); }},
};

} // namespace zvgentl
