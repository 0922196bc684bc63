#include "genapi/PortDevice.h"

#include <array>
#include <exception>

namespace zvgentl::tool {

namespace {

// Made by GObject, which zeroes the memory and calls no constructor.
struct PortDevice {
    ArvDevice parent;
    const Registers* registers;
};

struct PortDeviceClass {
    ArvDeviceClass parent;
};

const Registers& registers_of(ArvDevice* device) { return *reinterpret_cast<PortDevice*>(device)->registers; }

/// No exception may pass through the library, which is written in C.
template <class Action>
gboolean guarded(GError** error, const Action& action) noexcept
{
    try {
        action();
        return TRUE;
    } catch (const std::exception& reason) {
        g_set_error(error, ARV_DEVICE_ERROR, ARV_DEVICE_ERROR_TRANSFER_ERROR, "%s", reason.what());
    } catch (...) {
        g_set_error(error, ARV_DEVICE_ERROR, ARV_DEVICE_ERROR_UNKNOWN, "%s", "the port failed");
    }
    return FALSE;
}

gboolean read_memory(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError** error)
{
    return guarded(error, [&] { registers_of(device).read(address, buffer, size); });
}

gboolean write_memory(ArvDevice* device, guint64 address, guint32 size, void* buffer, GError** error)
{
    return guarded(error, [&] { registers_of(device).write(address, buffer, size); });
}

// The library uses these two for the registers of old descriptions only, takes the number for one in the
// byte order of this machine, and stores it little-endian: our memory in its own order comes out.
gboolean read_register(ArvDevice* device, guint64 address, guint32* value, GError** error)
{
    std::array<unsigned char, 4> bytes{};
    if (!read_memory(device, address, bytes.size(), bytes.data(), error))
        return FALSE;
    *value = static_cast<guint32>(bytes[0]) | static_cast<guint32>(bytes[1]) << 8U |
             static_cast<guint32>(bytes[2]) << 16U | static_cast<guint32>(bytes[3]) << 24U;
    return TRUE;
}

gboolean write_register(ArvDevice* device, guint64 address, guint32 value, GError** error)
{
    std::array<unsigned char, 4> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<unsigned char>(value >> (8U * i));
    return write_memory(device, address, bytes.size(), bytes.data(), error);
}

void init_class(gpointer type_class, gpointer /*data*/)
{
    auto* const device_class = static_cast<ArvDeviceClass*>(type_class);
    device_class->read_memory = read_memory;
    device_class->write_memory = write_memory;
    device_class->read_register = read_register;
    device_class->write_register = write_register;
}

GType port_device_type()
{
    static const GType type =
        g_type_register_static_simple(ARV_TYPE_DEVICE, "ZvPortDevice", sizeof(PortDeviceClass), init_class,
                                      sizeof(PortDevice), nullptr, static_cast<GTypeFlags>(0));
    return type;
}

} // namespace

ArvDevice* new_port_device(const Registers& registers)
{
    auto* const device = static_cast<PortDevice*>(g_object_new(port_device_type(), nullptr));
    device->registers = &registers;
    return &device->parent;
}

} // namespace zvgentl::tool
