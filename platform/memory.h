#pragma once

#include <cstddef>
#include <cstdint>

// Memory that the system has promised but not provided yet.

namespace platform {

/// The machine's memory in bytes, and what of it new uses can have; both 0 when the system does not tell.
struct MachineMemory {
    uint64_t total;
    uint64_t available;
};
MachineMemory machine_memory() noexcept;

/// Tells the system that it may use large pages for this memory, which is written as a whole.
void allow_large_pages(void* memory, size_t size) noexcept;

/// No more than this is provided in one call, so that none takes long.
constexpr size_t most_provided = size_t{1} << 30U;

/// Makes the system provide memory now that it would else provide page by page, at the first write to each.
/// What is in the memory is lost. False, and nothing is done, for more than `most_provided` bytes, and for a
/// megabyte or more when less than a quarter of the machine's memory would be left: memory that is only
/// reserved costs nothing, and a machine that runs out of it ends programs.
bool provide(void* memory, size_t size) noexcept;

} // namespace platform
