#include "modules/SystemModule.h"

#include <algorithm>

#include "log/Log.h"
#include "modules/DeviceStore.h"
#include "modules/PortMemory.h"
#include "resources/descriptions.h"

namespace zvgentl {

using namespace GenTL;

namespace {

constexpr PortMemory port_memory{"ZV_SystemGenTL.xml", system_description, system_description_size};

} // namespace

SystemModule::SystemModule() { device_store.add_user(); }

SystemModule::~SystemModule()
{
    destroy_interfaces();
    device_store.remove_user();
}

void SystemModule::destroy_interfaces()
{
    // Out of the list first: a look-up on another thread finds no interface rather than half of one.
    decltype(m_interfaces) ended;
    ended.swap(m_interfaces);
    for (const auto& iface : ended)
        iface->drop_Devices();
    for (auto& iface : ended)
        iface.reset();
}

InterfaceModule* SystemModule::get_Interface(uint32_t index) const noexcept
{
    const auto position = static_cast<int32_t>(index);
    return position >= 0 && position < get_InterfaceCount() ? m_interfaces[index].get() : nullptr;
}

InterfaceModule* SystemModule::find_Interface(std::string_view id) const
{
    const auto position = std::find_if(m_interfaces.begin(), m_interfaces.end(),
                                       [id](const auto& iface) { return iface->getId() == id; });
    return position == m_interfaces.end() ? nullptr : position->get();
}

int32_t SystemModule::get_InterfaceIndex(const InterfaceModule* iface) const noexcept
{
    const auto position = std::find_if(m_interfaces.begin(), m_interfaces.end(),
                                       [iface](const auto& listed) { return listed.get() == iface; });
    return position == m_interfaces.end() ? -1 : static_cast<int32_t>(position - m_interfaces.begin());
}

void SystemModule::init_Interfaces(int32_t count)
{
    destroy_interfaces();
    decltype(m_interfaces) made; // listed when complete: memory may run out before
    for (int32_t i = 0; i < count; ++i)
        made.push_back(std::make_unique<InterfaceModule>(*this, "FG" + std::to_string(i)));
    m_interfaces.swap(made);
}

std::string SystemModule::get_Url() const { return port_memory.url(); }

GC_ERROR SystemModule::ReadPort(uint64_t address, void* buffer, size_t* size) const
{
    if (port_memory.read(address, buffer, size))
        return GC_ERR_SUCCESS;
    log_error(system_module_logger, "SystemModule::ReadPort", At{110},
              "Unsupported port read for address 0x%llx with size %zu",
              static_cast<unsigned long long>(address), *size);
    log_error(system_module_logger, "SystemModule::ReadPort", At{113},
              "Exit, Returning error GC_ERR_INVALID_ADDRESS (0x%X)",
              static_cast<unsigned>(GC_ERR_INVALID_ADDRESS));
    return GC_ERR_INVALID_ADDRESS;
}

} // namespace zvgentl
