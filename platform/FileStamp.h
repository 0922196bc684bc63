#pragma once

#include <cstdint>
#include <string>

namespace platform {

enum class FileState { present, missing, unreadable };

/// What the system records of a file: which one it is, its size, and when it was changed. Times are in
/// nanoseconds of the system's clock.
struct FileStamp {
    FileState state{FileState::missing};
    /// Together with `node`: which file it is, whatever its name is now.
    std::uint64_t device{0};
    std::uint64_t node{0};
    std::uint64_t size{0};
    /// When its content was written; anybody may set this.
    std::int64_t modified{0};
    /// When anything about it was changed, its content included; only the system sets this.
    std::int64_t changed{0};
};

bool operator==(const FileStamp& left, const FileStamp& right) noexcept;
inline bool operator!=(const FileStamp& left, const FileStamp& right) noexcept { return !(left == right); }

/// The stamp of the file that has the name now. Does not open it where the system can do without.
FileStamp stamp_of(const std::string& path);

/// Whether every change of the file after `now` is certain to change the stamp too. `now` is the time of the
/// clock that the system takes for stamps.
bool is_settled(const FileStamp& stamp, std::int64_t now) noexcept;

} // namespace platform
