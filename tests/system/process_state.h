#pragma once

#include <cstddef>
#include <set>
#include <string>

#include <sys/types.h>

namespace zvsystem {

/// Whether a file of this name is mapped into the process.
bool is_mapped(const std::string& file_name);

/// The open descriptors, each with what it is open to.
std::set<std::string> open_descriptors();

size_t thread_count();
pid_t this_thread();
/// Whether a thread of this process sleeps in the kernel, as one does that waits; true where the system does
/// not tell.
bool is_asleep(pid_t thread);

/// Bytes of heap memory in use.
size_t heap_in_use();

/// What each load and unload of Poco's library alone leaves on the heap.
#ifdef _WIN32
constexpr size_t foreign_heap_per_load = 256;
#else
constexpr size_t foreign_heap_per_load = 0;
#endif

/// Bytes of memory that are resident, and of address space that is taken.
struct MemorySize {
    size_t resident;
    size_t virtual_space;
};
MemorySize memory_size();

/// Whether a sanitizer keeps freed memory for a while and notes of every library that was ever loaded, so
/// that sizes do not come back; its leak checker tells what was lost.
constexpr bool is_sanitized =
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
    true;
#else
    false;
#endif
#else
    false;
#endif

} // namespace zvsystem
