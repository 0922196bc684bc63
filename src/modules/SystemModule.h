#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "GenTL/GenTL.h"

#include "modules/InterfaceModule.h"
#include "modules/Quarantine.h"

namespace zvgentl {

/// The root of the module tree: the list of frame grabbers. One per process, between TLOpen and TLClose;
/// consumer threads call it and must not rebuild the list under one another.
class SystemModule final : public QuarantinedModule<retired_systems> {
public:
    SystemModule();
    /// Destroys the interfaces in order; open ones close their grabber.
    ~SystemModule();

    std::string getId() const override { return "System0"; }

    int32_t get_InterfaceCount() const noexcept { return static_cast<int32_t>(m_interfaces.size()); }
    /// Null for an index outside the list; indexes are read as signed.
    InterfaceModule* get_Interface(uint32_t index) const noexcept;
    /// The interface with exactly this ID, or null.
    InterfaceModule* find_Interface(std::string_view id) const;
    /// The list index of an interface, or -1.
    int32_t get_InterfaceIndex(const InterfaceModule* iface) const noexcept;
    const std::vector<std::unique_ptr<InterfaceModule>>& get_Interfaces() const noexcept
    {
        return m_interfaces;
    }

    /// The URL of the port's register description.
    std::string get_Url() const;
    /// Reads the port's memory, which is that description alone; `*size` is shortened to what is there.
    /// GC_ERR_INVALID_ADDRESS, with `*size` untouched, for an address outside.
    GenTL::GC_ERROR ReadPort(uint64_t address, void* buffer, size_t* size) const;

    /// Destroys every interface and lists `count` new closed ones; a negative count lists none. Throws
    /// std::bad_alloc, and then lists none, when memory runs out.
    void init_Interfaces(int32_t count);

private:
    void destroy_interfaces();

    std::vector<std::unique_ptr<InterfaceModule>> m_interfaces;
};

} // namespace zvgentl
