#include "platform/FileStamp.h"

#include "platform/win32/OpenFile.h"
#include "platform/win32/file_stamp.h"

namespace platform {

namespace {

/// Nanoseconds since 1970 of a time in steps of 100 ns since 1601: the range of the type ends in between.
std::int64_t nanoseconds(std::int64_t steps) noexcept
{
    constexpr std::int64_t steps_until_1970 = 116444736000000000;
    return (steps - steps_until_1970) * 100;
}

std::int64_t steps(const FILETIME& time) noexcept
{
    return static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32U | time.dwLowDateTime);
}

} // namespace

FileStamp stamp_of(const std::string& path)
{
    const OpenFile file(path, FILE_READ_ATTRIBUTES, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    if (file.is_open())
        return stamp_from(file.handle());
    const DWORD error = GetLastError();
    FileStamp none;
    if (error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND)
        none.state = FileState::unreadable;
    return none;
}

FileStamp stamp_from(HANDLE file) noexcept
{
    FileStamp stamp;
    stamp.state = FileState::unreadable;
    const FileIdentity identity = identity_of(file);
    FILE_BASIC_INFO times{};
    if (!identity.is_known || GetFileInformationByHandleEx(file, FileBasicInfo, &times, sizeof times) == 0)
        return stamp;
    stamp.state = FileState::present;
    stamp.device = identity.device;
    stamp.node = identity.node;
    stamp.size = identity.size;
    stamp.modified = nanoseconds(times.LastWriteTime.QuadPart);
    stamp.changed = nanoseconds(times.ChangeTime.QuadPart);
    return stamp;
}

std::int64_t stamp_clock() noexcept
{
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    return nanoseconds(steps(now));
}

bool has_own_stamps(HANDLE file) noexcept
{
    FILE_REMOTE_PROTOCOL_INFO server{}; // known of files on other machines only
    return GetFileInformationByHandleEx(file, FileRemoteProtocolInfo, &server, sizeof server) == 0;
}

} // namespace platform
