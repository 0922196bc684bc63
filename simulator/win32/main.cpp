#include <windows.h>

#include "simulator/win32/Unloading.h"

BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD reason, LPVOID process_end)
{
    if (reason == DLL_PROCESS_DETACH)
        zvsim::process_is_ending = process_end != nullptr;
    return TRUE;
}
