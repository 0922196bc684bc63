#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>

#include "modules/BufferPool.h"

namespace zvgentl {

class CameraModule;
class DeviceModule;
class InterfaceModule;
class StreamModule;
class SystemModule;

/// What a handle names. A closed module counts as invalid.
enum class ModuleKind : int32_t {
    invalid = 0,
    system = 1,
    iface = 2,
    device = 3,
    stream = 4,
    buffer = 5,
    remote_device = 6,
};

/// The kind's name, as port information and log lines give it.
constexpr const char* handle_type_name(ModuleKind kind) noexcept
{
    constexpr const char* names[] = {"Invalid handle", "TLSystem", "TLInterface", "TLDevice",
                                     "TLDataStream",   "TLBuffer", "Device"};
    const auto index = static_cast<int32_t>(kind);
    return index >= 1 && index <= 6 ? names[index] : names[0];
}

/// The module behind a port handle, as it was found in the tree; no port for a handle that names nothing. It
/// keeps a buffer alive; everything else lives as long as the consumer does not close it.
class Port {
public:
    Port() = default;
    explicit Port(const SystemModule& system) : m_module(&system) {}
    explicit Port(const InterfaceModule& iface) : m_module(&iface) {}
    explicit Port(const DeviceModule& device) : m_module(&device) {}
    explicit Port(const StreamModule& stream) : m_module(&stream) {}
    /// No port for an empty one.
    explicit Port(PinnedBuffer buffer)
    {
        if (buffer)
            m_module = std::move(buffer);
    }
    explicit Port(const CameraModule& camera) : m_module(&camera) {}

    ModuleKind kind() const noexcept { return static_cast<ModuleKind>(m_module.index()); }
    const char* kind_name() const noexcept { return handle_type_name(kind()); }
    explicit operator bool() const noexcept { return kind() != ModuleKind::invalid; }

    /// The module's ID text; empty for no port.
    std::string getId() const;

    /// The module itself, for what differs from kind to kind. The alternatives are in the order of
    /// ModuleKind.
    using Module = std::variant<std::monostate, const SystemModule*, const InterfaceModule*,
                                const DeviceModule*, const StreamModule*, PinnedBuffer, const CameraModule*>;
    const Module& module() const noexcept { return m_module; }

private:
    Module m_module;
};

} // namespace zvgentl
