#include "platform/AppendFile.h"

#include <cerrno>
#include <optional>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace platform {

namespace {

struct FileIdentity {
    std::uint64_t device;
    std::uint64_t node;
    std::uint64_t size;
};

// Not with stat(): that asks for times, and of a file whose times somebody has seen, the system has to write
// down a new time at the next write, which takes longer than the write.
std::optional<FileIdentity> identify(int folder, const char* path, int flags)
{
    struct statx state = {};
    if (statx(folder, path, flags, STATX_INO | STATX_SIZE, &state) != 0)
        return std::nullopt;
    return FileIdentity{makedev(state.stx_dev_major, state.stx_dev_minor), state.stx_ino, state.stx_size};
}

} // namespace

bool AppendFile::open()
{
    if (m_handle != -1 && has_the_name())
        return true;
    close();
    // Without O_NONBLOCK a pipe that nobody reads would block the writer for ever.
    m_handle =
        ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0666);
    const auto file = identify(static_cast<int>(m_handle), "", AT_EMPTY_PATH);
    if (file) {
        m_device = file->device;
        m_node = file->node;
        m_size = file->size;
    }
    return m_handle != -1;
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

bool AppendFile::has_the_name()
{
    const auto named = identify(AT_FDCWD, m_path.c_str(), 0);
    if (!named || named->device != m_device || named->node != m_node)
        return false;
    m_size = named->size;
    return true;
}

void AppendFile::close()
{
    if (m_handle != -1)
        ::close(static_cast<int>(m_handle));
    m_handle = -1;
    m_device = m_node = m_size = 0;
}

} // namespace platform
