#include "platform/FileStamp.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <iterator>

#include <linux/magic.h>
#include <sys/statfs.h>

#include "platform/posix/file_stamp.h"

namespace platform {

namespace {

constexpr std::int64_t file_systems[] = {EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC, BTRFS_SUPER_MAGIC,
                                         F2FS_SUPER_MAGIC, TMPFS_MAGIC,     OVERLAYFS_SUPER_MAGIC};

std::int64_t nanoseconds(const timespec& time) noexcept
{
    return std::int64_t{time.tv_sec} * 1000000000 + time.tv_nsec;
}

} // namespace

FileStamp stamp_of(const std::string& path)
{
    struct stat state = {};
    if (stat(path.c_str(), &state) == 0)
        return stamp_from(state);
    FileStamp none;
    none.state = errno == ENOENT || errno == ENOTDIR ? FileState::missing : FileState::unreadable;
    return none;
}

FileStamp stamp_from(const struct stat& state) noexcept
{
    FileStamp stamp;
    stamp.state = FileState::present;
    stamp.device = state.st_dev;
    stamp.node = state.st_ino;
    stamp.size = static_cast<std::uint64_t>(state.st_size);
    stamp.modified = nanoseconds(state.st_mtim);
    stamp.changed = nanoseconds(state.st_ctim);
    return stamp;
}

// The finer clock may be ahead of this one by more than a tick, for example in a virtual machine.
std::int64_t stamp_clock() noexcept
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME_COARSE, &now);
    return nanoseconds(now);
}

bool has_own_stamps(int descriptor) noexcept
{
    struct statfs system = {};
    return fstatfs(descriptor, &system) == 0 &&
           std::find(std::begin(file_systems), std::end(file_systems), std::int64_t{system.f_type}) !=
               std::end(file_systems);
}

} // namespace platform
