#include "platform/FileStamp.h"

namespace platform {

namespace {

constexpr std::int64_t nanoseconds_per_second = 1000000000;
constexpr std::int64_t settling_time = 20000000;

} // namespace

bool operator==(const FileStamp& left, const FileStamp& right) noexcept
{
    return left.state == right.state && left.device == right.device && left.node == right.node &&
           left.size == right.size && left.modified == right.modified && left.changed == right.changed;
}

// The system's clock for stamps stands still between two ticks, up to 10 ms apart. Two changes within a tick
// get the same time, so a stamp of the present tick says nothing about changes to come. A stamp that is older
// than the clock is safe: the clock does not go back to it. The rest of the 20 ms is for whoever overwrites a
// file in place: the system stamps first and copies next, and a reader in between sees the new stamp and the
// old text. Where stamps are whole seconds, no age is trusted.
bool is_settled(const FileStamp& stamp, std::int64_t now) noexcept
{
    return stamp.state == FileState::present && stamp.changed % nanoseconds_per_second != 0 &&
           now - stamp.changed > settling_time;
}

} // namespace platform
