#include "platform/unloading.h"

#include <tuple>

#include <windows.h>

namespace platform {

namespace {

bool process_is_ending = false;

} // namespace

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

bool other_threads_were_stopped() noexcept { return process_is_ending; }

} // namespace platform

// Every library that links this file has it as its entry point. In a program nobody calls it.
BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD reason, LPVOID process_end)
{
    if (reason == DLL_PROCESS_DETACH)
        platform::process_is_ending = process_end != nullptr;
    return TRUE;
}
