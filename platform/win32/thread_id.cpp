#include "platform/thread_id.h"

#include <windows.h>

namespace platform {

uint32_t thread_id() noexcept { return GetCurrentThreadId(); }

} // namespace platform
