#include "platform/memory.h"

#include <cstdlib>
#include <cstring>
#include <tuple>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace platform {

namespace {

/// A line such as "MemTotal:       24684092 kB".
uint64_t bytes_of(const char* text, const char* name) noexcept
{
    const char* const line = std::strstr(text, name);
    return line != nullptr ? std::strtoull(line + std::strlen(name), nullptr, 10) * 1024 : 0;
}

} // namespace

// What is available includes files that the system can drop from memory; sysinfo() does not count those.
MachineMemory machine_memory() noexcept
{
    char text[512] = {}; // both are among the first lines
    const int file = open("/proc/meminfo", O_RDONLY | O_CLOEXEC);
    if (file == -1)
        return {0, 0};
    const ssize_t length = read(file, text, sizeof text - 1);
    std::ignore = close(file); // only read
    if (length <= 0)
        return {0, 0};
    return {bytes_of(text, "MemTotal:"), bytes_of(text, "MemAvailable:")};
}

void allow_large_pages(void* memory, size_t size) noexcept
{
    constexpr uintptr_t page = 4096;
    const uintptr_t place = reinterpret_cast<uintptr_t>(memory);
    if (place % page == 0)
        std::ignore = madvise(memory, size, MADV_HUGEPAGE); // without them it is only slower
}

} // namespace platform
