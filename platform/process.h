#pragma once

#include <cstdint>
#include <optional>
#include <string>

// What the system knows about the code that is running.

namespace platform {

/// The operating system's id of the calling thread, as log lines print it.
uint32_t thread_id() noexcept;

/// The operating system's number of this process.
uint32_t process_id() noexcept;

/// Whether there is a process of that number, of whatever user.
bool is_running(uint32_t process) noexcept;

/// Whole milliseconds of a clock that never goes back. Only differences mean something.
uint64_t monotonic_milliseconds() noexcept;

/// Tells the processor that the calling thread looks again and again at what another one is about to write.
inline void spin_pause() noexcept
{
#if defined(__x86_64__)
    __builtin_ia32_pause();
#endif
}

/// The full path of the file that this code was loaded from, cut at 260 characters; nothing when the system
/// does not know it. Asking does not keep the module loaded.
std::optional<std::string> module_path();

} // namespace platform
