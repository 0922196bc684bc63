#pragma once

#include <cstddef>
#include <filesystem>
#include <set>
#include <string>

#include <sys/types.h>

namespace zvtest {

/// Whether a file of this name is mapped into the process.
bool is_mapped(const std::string& file_name);

/// The open descriptors, each with what it is open to.
std::set<std::string> open_descriptors();

size_t thread_count();
pid_t this_thread();
/// Whether a thread of this process sleeps in the kernel, as one does that waits.
bool is_asleep(pid_t thread);

/// Bytes of heap memory in use.
size_t heap_in_use();

/// Loads for good the libraries of others that the producer needs and that leave something behind at each
/// unload, so that this is not taken for something of the producer's. Does nothing where there are none.
void hold_libraries_of_others(const std::filesystem::path& producer);

/// Bytes of memory that are resident, and of address space that is taken.
struct MemorySize {
    size_t resident;
    size_t virtual_space;
};
MemorySize memory_size();

/// Whether a sanitizer keeps freed memory for a while, and a record of every library that was ever loaded, so
/// that sizes do not come back; its leak checker reports what was lost.
constexpr bool is_sanitized =
#if defined(ZV_SANITIZED)
    true;
#else
    false;
#endif

} // namespace zvtest
