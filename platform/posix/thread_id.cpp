#include "platform/thread_id.h"

#include <sys/syscall.h>
#include <unistd.h>

namespace platform {

uint32_t thread_id() noexcept { return static_cast<uint32_t>(::syscall(SYS_gettid)); }

} // namespace platform
