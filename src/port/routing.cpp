#include "port/routing.h"

#include <algorithm>

#include "zvgr/ZVGRLib.h"

#include "modules/CameraModule.h"
#include "modules/DeviceModule.h"
#include "modules/InterfaceModule.h"
#include "modules/StreamModule.h"
#include "modules/SystemModule.h"
#include "modules/grabber_info.h"

namespace zvgentl {

using namespace GenTL;

namespace {

struct OwnerIsOpen {
    bool operator()(const InterfaceModule* iface) const noexcept { return iface->is_Open(); }
    bool operator()(const DeviceModule* device) const noexcept { return device->get_Parent()->is_Open(); }
    bool operator()(const StreamModule* stream) const noexcept { return stream->is_Open(); }
    bool operator()(const CameraModule* camera) const noexcept { return camera->is_Open(); }
    template <class Module>
    bool operator()(const Module&) const noexcept
    {
        return true; // the producer's own registers are always there
    }
};

/// The grabber library's handle of what is behind a port.
struct LibraryHandle {
    uint32_t operator()(const InterfaceModule* iface) const noexcept { return iface->get_GrabberHandle(); }
    uint32_t operator()(const DeviceModule* device) const noexcept
    {
        return device->get_Parent()->get_GrabberHandle();
    }
    uint32_t operator()(const StreamModule* stream) const noexcept
    {
        return stream->get_Camera()->get_CameraHandle();
    }
    uint32_t operator()(const CameraModule* camera) const noexcept { return camera->get_CameraHandle(); }
    template <class Module>
    uint32_t operator()(const Module&) const noexcept
    {
        return ZV_NO_HANDLE;
    }
};

struct ReadDescription {
    uint64_t address;
    void* buffer;
    size_t* size;

    GC_ERROR operator()(const SystemModule* system) const { return system->ReadPort(address, buffer, size); }
    GC_ERROR operator()(const PinnedBuffer& pinned) const { return pinned->ReadPort(address, buffer, size); }
    template <class Module>
    GC_ERROR operator()(const Module&) const
    {
        return GC_ERR_NOT_IMPLEMENTED;
    }
};

uint32_t library_handle(const Port& port) { return std::visit(LibraryHandle{}, port.module()); }

bool reaches_grabber(const Port& port) { return route_of(port.kind()).registers == Registers::of_grabber; }

/// As the library knows it. What it wrote is read within the buffer: the text may come from the camera.
std::optional<std::string> url_from_library(uint32_t handle)
{
    char text[zv_url_capacity] = {};
    uint64_t size = sizeof text;
    if (!succeeded(ZVGR_GetXmlUrl(handle, text, &size)))
        return std::nullopt;
    return std::string(text, std::find(text, text + sizeof text, '\0'));
}

struct Url {
    std::optional<std::string> operator()(const SystemModule* system) const { return system->get_Url(); }
    std::optional<std::string> operator()(const PinnedBuffer& pinned) const { return pinned->get_Url(); }
    template <class Module>
    std::optional<std::string> operator()(const Module& module) const
    {
        return url_from_library(LibraryHandle{}(module));
    }
};

} // namespace

bool is_open(const Port& port) { return std::visit(OwnerIsOpen{}, port.module()); }

GC_ERROR read_description(const Port& port, uint64_t address, void* buffer, size_t* size)
{
    return std::visit(ReadDescription{address, buffer, size}, port.module());
}

bool read_registers(const Port& port, uint64_t address, void* buffer, uint32_t* size)
{
    const auto read = reaches_grabber(port) ? ZVGR_GrabberReadReg : ZVGR_CameraReadReg;
    return succeeded(read(library_handle(port), address, buffer, size));
}

bool write_registers(const Port& port, uint64_t address, const void* buffer, uint32_t* size)
{
    const auto write = reaches_grabber(port) ? ZVGR_GrabberWriteReg : ZVGR_CameraWriteReg;
    return succeeded(write(library_handle(port), address, buffer, size));
}

std::optional<std::string> url_of(const Port& port) { return std::visit(Url{}, port.module()); }

} // namespace zvgentl
