#include "platform/AppendFile.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

bool AppendFile::open()
{
    if (m_handle != -1 && has_the_name())
        return true;
    close();
    // Without O_NONBLOCK a pipe that nobody reads would block the writer for ever.
    m_handle =
        ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0666);
    return m_handle != -1;
}

std::uint64_t AppendFile::size() const
{
    struct stat state = {};
    if (m_handle == -1 || fstat(static_cast<int>(m_handle), &state) != 0)
        return 0;
    return static_cast<std::uint64_t>(state.st_size);
}

bool AppendFile::replace(const MoveAway& move_away)
{
    // The lock is on the file that is to be moved: who gets it second finds that the file has lost its name.
    while (flock(static_cast<int>(m_handle), LOCK_EX) != 0) {
        if (errno != EINTR)
            return true;
    }
    if (has_the_name())
        move_away();
    if (!has_the_name())
        return open();
    flock(static_cast<int>(m_handle), LOCK_UN); // it could not be moved: keep using it
    return true;
}

bool AppendFile::append(std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = write(static_cast<int>(m_handle), text.data(), text.size());
        if (count >= 0)
            text.remove_prefix(static_cast<std::size_t>(count));
        else if (errno != EINTR)
            return false;
    }
    return true;
}

bool AppendFile::has_the_name() const
{
    struct stat named = {};
    struct stat opened = {};
    return stat(m_path.c_str(), &named) == 0 && fstat(static_cast<int>(m_handle), &opened) == 0 &&
           named.st_dev == opened.st_dev && named.st_ino == opened.st_ino;
}

void AppendFile::close()
{
    if (m_handle != -1)
        ::close(static_cast<int>(m_handle));
    m_handle = -1;
}

} // namespace platform
