#pragma once

#include <cstdint>

#include "api/InfoTable.h"

namespace zvgentl {

class DeviceModule;
class InterfaceModule;

/// What is known of an interface, whether it was asked of the system or of the interface itself; null for
/// every other command.
const InfoRow<InterfaceModule>* find_interface_info(int32_t command) noexcept;

/// What is known of a device, whether it was asked of its interface or of the device itself; null for every
/// other command.
const InfoRow<DeviceModule>* find_device_info(int32_t command) noexcept;

} // namespace zvgentl
