#include "platform/unloading.h"

#include <utility>

namespace platform {

LoadedModule LoadedModule::own() noexcept
{
    return LoadedModule{reinterpret_cast<const void*>(&LoadedModule::own)};
}

LoadedModule::LoadedModule(LoadedModule&& other) noexcept : m_module{std::exchange(other.m_module, nullptr)}
{
}

LoadedModule& LoadedModule::operator=(LoadedModule&& other) noexcept
{
    std::swap(m_module, other.m_module);
    return *this;
}

} // namespace platform
