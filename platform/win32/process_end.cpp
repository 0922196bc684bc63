#include "platform/process_end.h"

#include <windows.h>

namespace platform {

namespace {

bool process_is_ending = false;

} // namespace

bool other_threads_were_stopped() noexcept { return process_is_ending; }

} // namespace platform

// Every library that links this file has it as its entry point. In a program nobody calls it.
BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD reason, LPVOID process_end)
{
    if (reason == DLL_PROCESS_DETACH)
        platform::process_is_ending = process_end != nullptr;
    return TRUE;
}
