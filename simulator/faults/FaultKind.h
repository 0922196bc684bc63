#pragma once

#include <cstddef>
#include <cstdint>

#include "simulator/faults/Function.h"

// Everything that can go wrong, by name.

namespace zvsim {

enum class FaultKind : uint8_t {
    call_fails,
    call_delays,
    call_leaves_output_untouched,

    scan_fails,
    grabber_info_fails,
    grabber_name_missing,
    grabber_open_fails,
    grabber_close_fails,
    camera_list_fails,
    camera_info_fails,
    camera_open_fails,
    camera_close_fails,
    stream_create_fails,
    stream_delete_fails,
    stream_info_fails,
    announce_fails,
    revoke_fails,
    queue_fails,
    buffer_info_fails,
    ring_frame_missing,
    frame_record_fails,
    start_fails,
    stop_fails,
    callback_register_fails,
    register_read_fails,
    register_write_fails,
    value_not_available,
    url_fails,

    grabber_count_too_large,
    protocol_unknown,
    camera_count_too_large,
    camera_texts_unterminated,
    camera_texts_empty,
    camera_texts_garbage,
    register_read_short,
    register_write_short,
    description_garbage,
    description_truncated,
    description_huge,
    url_empty,
    url_garbage,
    url_too_long,
    url_unterminated,
    payload_size_wrong,
    payload_size_zero,
    pixel_format_unknown,

    camera_lost_while_opening,
    camera_lost_while_configuring,
    camera_lost_while_streaming,
    grabber_lost,
    grabber_lost_while_streaming,

    acquisition_never_starts,
    acquisition_ends_early,
    frame_dropped,
    frame_late,
    frame_duplicated,
    frames_out_of_order,
    frame_id_wrong,
    frame_id_jumps,
    timestamp_zero,
    timestamp_backwards,
    timestamp_jumps,
    frame_truncated,
    frame_corrupted,
    callback_stalls,
    callback_missing,
};

constexpr size_t fault_kind_count = static_cast<size_t>(FaultKind::callback_missing) + 1;

/// What a fault has an opportunity at.
enum class Opportunity : uint8_t { call, start, frame };

/// What a fault does to a call.
enum class Effect : uint8_t {
    /// It is not carried out, or only where it ends something, and fails.
    fails,
    /// It takes longer.
    delays,
    /// It is not carried out, and succeeds.
    untouched,
    /// Its results are others.
    alters,
    /// The camera or grabber is gone from now on.
    loses,
    /// Nothing: it is not a fault of calls.
    on_frames,
};

/// The number that a kind can be given.
struct Amount {
    /// Null: none.
    const char* name;
    int64_t preset;
    int64_t least;
    int64_t most;
};

struct FaultKindRow {
    const char* name;
    /// Of calls: which ones it can happen to.
    FunctionSet functions;
    Amount amount;
    Opportunity opportunity;
    Effect effect;
    /// Can be given a time: how long it holds something up.
    bool has_time;
};

const FaultKindRow& row_of(FaultKind kind);

} // namespace zvsim
