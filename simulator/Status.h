#pragma once

#include <cstdint>

#include "zvgr/ZVGRLib.h"

// The status values that the exported functions answer.

namespace zvsim {

constexpr uint32_t status_ok = zv_success;
constexpr uint32_t status_bad_handle = 0x3001;
constexpr uint32_t status_bad_argument = 0x3002;
/// Already running.
constexpr uint32_t status_in_use = 0x3003;
/// Needs an open camera.
constexpr uint32_t status_not_ready = 0x3004;
constexpr uint32_t status_unsupported = 0x3005;
/// Out of memory or of threads.
constexpr uint32_t status_failed = 0x3006;
/// The camera or grabber is not there any more.
constexpr uint32_t status_gone = 0x3007;

} // namespace zvsim
