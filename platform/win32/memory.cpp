#include "platform/memory.h"

#include <windows.h>

namespace platform {

MachineMemory machine_memory() noexcept
{
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    if (GlobalMemoryStatusEx(&status) == 0)
        return {0, 0};
    return {status.ullTotalPhys, status.ullAvailPhys};
}

void allow_large_pages(void* /*memory*/, size_t /*size*/) noexcept
{
    // They need a privilege, and memory that was allocated for them.
}

} // namespace platform
