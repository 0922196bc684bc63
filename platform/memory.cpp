#include "platform/memory.h"

namespace platform {

namespace {

/// Asking takes longer than providing less than this.
constexpr size_t worth_asking = size_t{1} << 20U;

bool is_affordable(size_t size) noexcept
{
    if (size > most_provided)
        return false;
    if (size < worth_asking)
        return true;
    const MachineMemory memory = machine_memory();
    return memory.available >= size + memory.total / 4;
}

} // namespace

bool provide(void* memory, size_t size) noexcept
{
    constexpr size_t page = 4096;
    if (!is_affordable(size))
        return false;
    allow_large_pages(memory, size);
    auto* const bytes = static_cast<volatile unsigned char*>(memory);
    for (size_t i = 0; i < size; i += page)
        bytes[i] = 0;
    return true;
}

} // namespace platform
