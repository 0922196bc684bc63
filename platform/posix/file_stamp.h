#pragma once

#include <cstdint>

#include <sys/stat.h>

#include "platform/FileStamp.h"

namespace platform {

/// The stamp in what the system says about a file that exists.
FileStamp stamp_from(const struct stat& state) noexcept;

/// The time that the system would stamp a file with now.
std::int64_t stamp_clock() noexcept;

/// Whether the open file is on a file system of this machine, whose stamps are exact at every moment.
bool has_own_stamps(int descriptor) noexcept;

} // namespace platform
