#include "platform/process.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include <dlfcn.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr size_t max_path = 260;

/// The path as it was while the library was being loaded: the loader reports the name that it was given,
/// which may be relative to a folder that the process leaves later. Needs no memory, so that loading cannot
/// fail for it.
class PathAtLoad {
public:
    PathAtLoad() noexcept
    {
        Dl_info info{};
        if (dladdr(reinterpret_cast<const void*>(&module_path), &info) == 0 || info.dli_fname == nullptr)
            return;
        m_is_known = true;
        if (realpath(info.dli_fname, m_text) == nullptr) {
            std::strncpy(m_text, info.dli_fname, sizeof m_text - 1);
            m_text[sizeof m_text - 1] = '\0';
        }
    }

    bool is_known() const noexcept { return m_is_known; }
    const char* text() const noexcept { return m_text; }

private:
    bool m_is_known{false};
    char m_text[PATH_MAX]{};
};

const PathAtLoad path_at_load;

thread_local uint32_t own_thread_id = 0; // 0: not known yet

// The thread that forks is another one in the new process, where it is the only one.
void forget_thread_id() { own_thread_id = 0; }
const int forgets_at_fork = pthread_atfork(nullptr, nullptr, &forget_thread_id);

} // namespace

uint32_t thread_id() noexcept
{
    if (own_thread_id == 0 || forgets_at_fork != 0)
        own_thread_id = static_cast<uint32_t>(::syscall(SYS_gettid));
    return own_thread_id;
}

uint32_t process_id() noexcept { return static_cast<uint32_t>(getpid()); }

bool is_running(uint32_t process) noexcept
{
    // Zero and negative numbers would mean groups of processes.
    if (process == 0 || process > INT_MAX)
        return false;
    return kill(static_cast<pid_t>(process), 0) == 0 || errno == EPERM;
}

uint64_t monotonic_milliseconds() noexcept
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1000 + static_cast<uint64_t>(now.tv_nsec) / 1000000;
}

std::optional<std::string> module_path()
{
    if (!path_at_load.is_known())
        return std::nullopt;
    return std::string(path_at_load.text(), strnlen(path_at_load.text(), max_path));
}

} // namespace platform
