#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include "GenTL/GenTL.h"

#include "port/Port.h"

namespace zvgentl {

/// Whose registers a port reaches.
enum class Registers {
    of_nothing, // no port
    of_module,  // the producer's own: a register description, read-only
    of_grabber, // through the grabber library, with the handle of the interface
    of_camera,  // through the grabber library, with the handle of the camera
};

/// How the ports of one kind of module are routed. A device is the grabber's side of a camera, the remote
/// device the camera itself.
struct Route {
    ModuleKind kind;
    Registers registers;
    const char* owner; // what must be open for an access, as log lines name it; null: nothing more
};

inline constexpr Route routes[] = {
    {ModuleKind::invalid, Registers::of_nothing, nullptr},
    {ModuleKind::system, Registers::of_module, nullptr},
    {ModuleKind::iface, Registers::of_grabber, "grabber"},
    {ModuleKind::device, Registers::of_grabber, "grabber"},
    {ModuleKind::stream, Registers::of_camera, "stream"},
    {ModuleKind::buffer, Registers::of_module, nullptr},
    {ModuleKind::remote_device, Registers::of_camera, "camera"},
};

/// True when each kind has its row, at the position of its number.
constexpr bool has_a_route_for_each_kind() noexcept
{
    size_t position = 0;
    for (const Route& route : routes) {
        if (static_cast<size_t>(route.kind) != position++)
            return false;
    }
    return position == std::variant_size_v<Port::Module>;
}
static_assert(has_a_route_for_each_kind(), "route_of reads the row at the position of the kind");

constexpr const Route& route_of(ModuleKind kind) noexcept { return routes[static_cast<size_t>(kind)]; }

// What follows takes a port that exists.

/// Whether what the route names as owner is open now. A port's own module was open when it was found, but a
/// device's grabber may not have been.
bool is_open(const Port& port);

/// Reads the port's own description. Answers as the module's ReadPort; the port is `of_module`.
GenTL::GC_ERROR read_description(const Port& port, uint64_t address, void* buffer, size_t* size);

/// Transfer registers of grabber or camera; the port is one of those. The library may change `*size`. False
/// when it refuses.
bool read_registers(const Port& port, uint64_t address, void* buffer, uint32_t* size);
bool write_registers(const Port& port, uint64_t address, const void* buffer, uint32_t* size);

/// The URL of the port's register description; nothing when the library does not give one.
std::optional<std::string> url_of(const Port& port);

} // namespace zvgentl
