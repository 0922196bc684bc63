#include "support/process/process_state.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include <windows.h> // before the headers that need it

#include <psapi.h>
#include <tlhelp32.h>

namespace zvtest {

namespace {

/// Whether the instruction belongs to the few that make this system call.
bool is_inside(const char* call, DWORD64 instruction)
{
    constexpr DWORD64 longest_call = 32;
    const auto start = reinterpret_cast<DWORD64>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("ntdll.dll"), call)));
    return instruction > start && instruction < start + longest_call;
}

} // namespace

bool is_mapped(const std::string& file_name) { return GetModuleHandleA(file_name.c_str()) != nullptr; }

// The handles of a process cannot be listed by name, so their number has to do.
std::set<std::string> open_descriptors()
{
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return {std::to_string(count)};
}

size_t thread_count()
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

pid_t this_thread() { return static_cast<pid_t>(GetCurrentThreadId()); }

// A thread that waits is inside the system call for it; under Wine both calls wait in the same way.
bool is_asleep(pid_t thread)
{
    HANDLE const handle =
        OpenThread(THREAD_SUSPEND_RESUME | THREAD_GET_CONTEXT, FALSE, static_cast<DWORD>(thread));
    CONTEXT context{};
    context.ContextFlags = CONTEXT_CONTROL;
    SuspendThread(handle);
    GetThreadContext(handle, &context);
    ResumeThread(handle);
    CloseHandle(handle);
    constexpr const char* waits[] = {"NtWaitForSingleObject", "NtWaitForMultipleObjects",
                                     "NtWaitForAlertByThreadId", "NtDelayExecution"};
    return std::any_of(std::begin(waits), std::end(waits),
                       [&](const char* wait) { return is_inside(wait, context.Rip); });
}

// Poco's library, and the system libraries that it needs, keep memory of every load.
void hold_libraries_of_others(const std::filesystem::path& producer)
{
    const auto poco =
        std::filesystem::path(producer).replace_filename("libPocoFoundation.dll").make_preferred();
    if (LoadLibraryExW(poco.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH) == nullptr)
        throw std::runtime_error("Poco cannot be loaded");
}

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

} // namespace zvtest
