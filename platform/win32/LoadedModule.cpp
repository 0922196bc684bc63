#include "platform/LoadedModule.h"

#include <tuple>

#include <windows.h>

namespace platform {

// A thread cannot end while the system unloads a module, so no unload can wait for one. Instead whatever
// threads run in stays loaded until they have been joined, by a call that is not part of an unload.
LoadedModule::LoadedModule(const void* function) noexcept
{
    HMODULE module = nullptr;
    if (GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, static_cast<LPCSTR>(function), &module) !=
        0)
        m_module = module;
}

// The caller's own hold keeps this code loaded: whoever calls the library has it loaded.
LoadedModule::~LoadedModule()
{
    if (m_module != nullptr)
        std::ignore = FreeLibrary(static_cast<HMODULE>(m_module)); // taken above: nothing to fail
}

} // namespace platform
