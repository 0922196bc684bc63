#include "platform/FileLock.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace platform {

FileLock::FileLock(const std::string& path)
{
    // Reading is enough to lock, so a file that another user made serves as well.
    const int descriptor = open(path.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666);
    int outcome = descriptor == -1 ? -1 : flock(descriptor, LOCK_EX);
    while (outcome == -1 && descriptor != -1 && errno == EINTR)
        outcome = flock(descriptor, LOCK_EX);
    if (outcome == 0) {
        m_handle = descriptor;
        return;
    }
    m_reason = std::generic_category().message(errno);
    if (descriptor != -1)
        close(descriptor);
}

FileLock::~FileLock()
{
    if (m_handle != -1)
        close(static_cast<int>(m_handle));
}

} // namespace platform
