#include "platform/process.h"

#include <tuple>

#include <windows.h>

namespace platform {

uint32_t thread_id() noexcept { return GetCurrentThreadId(); }

uint32_t process_id() noexcept { return GetCurrentProcessId(); }

bool is_running(uint32_t process) noexcept
{
    const HANDLE handle = OpenProcess(SYNCHRONIZE, FALSE, process);
    if (handle == nullptr)
        return GetLastError() == ERROR_ACCESS_DENIED;
    const bool has_ended = WaitForSingleObject(handle, 0) == WAIT_OBJECT_0;
    CloseHandle(handle);
    return !has_ended;
}

uint64_t monotonic_milliseconds() noexcept
{
    LARGE_INTEGER frequency{};
    LARGE_INTEGER now{};
    // Neither fails on any system that this code runs on.
    std::ignore = QueryPerformanceFrequency(&frequency);
    std::ignore = QueryPerformanceCounter(&now);
    const auto per_second = static_cast<uint64_t>(frequency.QuadPart);
    const auto count = static_cast<uint64_t>(now.QuadPart);
    // Seconds apart from the rest: the whole count times 1000 would overflow after some years.
    return count / per_second * 1000 + count % per_second * 1000 / per_second;
}

std::optional<std::string> module_path()
{
    // Without the flag, asking would count as loading the module once more, and no FreeLibrary would ever
    // unload it.
    HMODULE own = nullptr;
    if (GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                               GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<LPCSTR>(&module_path), &own) == 0)
        return std::nullopt;
    char text[MAX_PATH + 1] = {}; // one longer: a path that is cut is not always ended
    std::ignore = GetModuleFileNameA(own, text, DWORD{MAX_PATH}); // else it stays empty
    return std::string(text);
}

} // namespace platform
