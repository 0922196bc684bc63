#include "modules/SystemModule.h"

#include <algorithm>

#include "modules/DeviceStore.h"

namespace zvgentl {

SystemModule::SystemModule() { device_store.add_user(); }

SystemModule::~SystemModule()
{
    destroy_interfaces();
    device_store.remove_user();
}

void SystemModule::destroy_interfaces()
{
    for (auto& iface : m_interfaces)
        iface.reset();
    m_interfaces.clear();
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
    for (int32_t i = 0; i < count; ++i)
        m_interfaces.push_back(std::make_unique<InterfaceModule>(*this, "FG" + std::to_string(i)));
}

} // namespace zvgentl
