#pragma once

#include <cstdint>

#include <windows.h>

#include "platform/FileStamp.h"

namespace platform {

/// The stamp of an open file; unreadable if the system does not tell.
FileStamp stamp_from(HANDLE file) noexcept;

/// The time that the system would stamp a file with now.
std::int64_t stamp_clock() noexcept;

/// Whether the open file is on this machine, so that its stamps are exact at every moment.
bool has_own_stamps(HANDLE file) noexcept;

} // namespace platform
