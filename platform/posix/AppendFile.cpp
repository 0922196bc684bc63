#include "platform/AppendFile.h"

#include <cerrno>
#include <optional>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "platform/paths.h"
#include "platform/posix/file_stamp.h"

namespace platform {

namespace {

// Asking for the size as well would take a tenth of what a line takes.
constexpr unsigned looks_for_size = 16;

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

bool AppendFile::open(Look look)
{
    if (m_handle != -1 && ((look == Look::in_folder && has_kept_the_name()) || has_the_name()))
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
        if (count < 0 && errno != EINTR)
            return false;
        if (count > 0) {
            text.remove_prefix(static_cast<std::size_t>(count));
            m_size += static_cast<std::uint64_t>(count);
        }
    }
    return true;
}

// Looking at a folder that is open takes a third of what the way to a file takes.
bool AppendFile::has_kept_the_name()
{
    struct stat folder = {};
    if (m_folder_stamp.state != FileState::present || fstat(static_cast<int>(m_folder), &folder) != 0 ||
        stamp_from(folder) != m_folder_stamp)
        return false;
    if (++m_looks_in_folder % looks_for_size != 0)
        return true;
    const off_t size = lseek(static_cast<int>(m_handle), 0, SEEK_END);
    m_size = static_cast<std::uint64_t>(size);
    return size != -1;
}

bool AppendFile::has_the_name()
{
    if (!std::exchange(m_folder_was_tried, true)) // not for a single line
        open_folder();
    // Before the look at the name, so that the stamp is never newer than what is found.
    const std::int64_t now = stamp_clock();
    struct stat folder = {};
    const bool is_known = m_folder != -1 && fstat(static_cast<int>(m_folder), &folder) == 0;
    const FileStamp stamp = is_known ? stamp_from(folder) : FileStamp();

    const auto named = identify(AT_FDCWD, m_path.c_str(), 0);
    if (!named || named->device != m_device || named->node != m_node)
        return false;
    m_size = named->size;
    if (stamp != m_folder_stamp)
        m_folder_stamp = is_settled(stamp, now) && is_in_folder() ? stamp : FileStamp();
    return true;
}

void AppendFile::open_folder()
{
    m_folder = ::open(folder_of(m_path).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (m_folder != -1 && !has_own_stamps(static_cast<int>(m_folder))) {
        ::close(static_cast<int>(m_folder));
        m_folder = -1;
    }
}

// Where the name is a link, other folders matter too.
bool AppendFile::is_in_folder() const
{
    const std::string name = m_path.substr(m_path.rfind('/') + 1);
    const auto named = identify(static_cast<int>(m_folder), name.c_str(), AT_SYMLINK_NOFOLLOW);
    return named && named->device == m_device && named->node == m_node;
}

void AppendFile::close()
{
    for (const std::intptr_t descriptor : {m_handle, m_folder}) {
        if (descriptor != -1)
            ::close(static_cast<int>(descriptor));
    }
    m_handle = m_folder = -1;
    m_device = m_node = m_size = 0;
    m_folder_stamp = FileStamp();
    m_folder_was_tried = false;
}

} // namespace platform
