#pragma once

namespace platform {

/// True once the system has stopped all other threads because the process ends, wherever they were: a lock
/// may be held for good, and nothing can be waited for. Only Windows does so before it unloads a library.
bool other_threads_were_stopped() noexcept;

} // namespace platform
