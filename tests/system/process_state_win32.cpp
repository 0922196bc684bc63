#include "system/process_state.h"

#include <windows.h> // before the headers that need it

#include <psapi.h>
#include <tlhelp32.h>

namespace zvsystem {

namespace {

/// The threads of this process, and of all its heaps the blocks: as a snapshot of the system.
size_t count_threads()
{
    HANDLE const snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    size_t count = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more != 0; more = Thread32Next(snapshot, &entry))
        count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
    CloseHandle(snapshot);
    return count;
}

} // namespace

bool is_mapped(const std::string& file_name) { return GetModuleHandleA(file_name.c_str()) != nullptr; }

// Handles have no names that could be listed, so their number has to do.
std::set<std::string> open_descriptors()
{
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return {std::to_string(count)};
}

size_t thread_count() { return count_threads(); }

pid_t this_thread() { return static_cast<pid_t>(GetCurrentThreadId()); }

// The system does not tell.
bool is_asleep(pid_t /*thread*/) { return true; }

size_t heap_in_use()
{
    HANDLE const heap = GetProcessHeap();
    PROCESS_HEAP_ENTRY entry{};
    size_t bytes = 0;
    HeapLock(heap);
    while (HeapWalk(heap, &entry) != 0) {
        if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0)
            bytes += entry.cbData;
    }
    HeapUnlock(heap);
    return bytes;
}

MemorySize memory_size()
{
    PROCESS_MEMORY_COUNTERS counters{};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return {counters.WorkingSetSize, counters.PagefileUsage};
}

} // namespace zvsystem
