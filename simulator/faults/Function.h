#pragma once

#include <cstddef>
#include <cstdint>

#include "zvgr/ZVGRLib.h"

// The exported functions by name, and the status values that they answer.

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

enum class Function : uint8_t {
    device_scan,
    device_info,
    device_display_name,
    open,
    close,
    update_camera_list,
    camera_info,
    camera_open,
    camera_close,
    grabber_read,
    grabber_write,
    camera_read,
    camera_write,
    grabber_integer,
    grabber_enumeration,
    camera_integer,
    camera_enumeration,
    stream_create,
    stream_create_and_alloc,
    stream_delete,
    stream_info,
    stream_frame_index,
    stream_pointer,
    stream_aux,
    buffer_announce,
    buffer_alloc_and_announce,
    buffer_revoke,
    buffer_to_queue,
    buffer_info,
    start,
    stop,
    camera_callback_register,
    buffer_callback_register,
    xml_url,
};

constexpr size_t function_count = static_cast<size_t>(Function::xml_url) + 1;

/// What a function's return value is.
enum class ResultType : uint8_t { status, handle, frame, value, pointer };

struct FunctionRow {
    const char* name;
    ResultType result;
    /// Writes through a pointer.
    bool has_output;
    /// Ends something. Callers rely on it being over afterwards, whatever the status.
    bool ends;
};

const FunctionRow& row_of(Function function);

/// Some of the functions.
using FunctionSet = uint64_t;

constexpr FunctionSet all_functions = (FunctionSet{1} << function_count) - 1;

template <class... Functions>
constexpr FunctionSet functions(Functions... of)
{
    return (FunctionSet{0} | ... | (FunctionSet{1} << static_cast<unsigned>(of)));
}

constexpr bool has(FunctionSet set, Function function) { return (set & functions(function)) != 0; }

} // namespace zvsim
