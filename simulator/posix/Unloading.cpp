#include "simulator/Unloading.h"

#include "simulator/Library.h"

#include <utility>

namespace zvsim {

// ShutDown ends the threads before anything is unloaded, so nothing has to be held.
LoadedModule::LoadedModule(const void* /*function*/) noexcept {}

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

LoadedModule::~LoadedModule() = default;

ShutDown::~ShutDown() { Library::instance().shut_down(); }

} // namespace zvsim
