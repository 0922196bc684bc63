#include "simulator/faults/FaultKind.h"

#include <limits>

namespace zvsim {

namespace {

constexpr Amount no_amount{nullptr, 0, 0, 0};
constexpr int64_t most = std::numeric_limits<int64_t>::max();
constexpr int64_t tick_rate = 25'000'000; // time stamps are ticks of 25 MHz
constexpr int64_t one_gib = int64_t{1} << 30U;

constexpr FaultKindRow of_call(const char* name, Effect effect, FunctionSet functions,
                               Amount amount = no_amount)
{
    return {name, functions, amount, Opportunity::call, effect, effect == Effect::delays};
}

constexpr FaultKindRow failing(const char* name, FunctionSet functions)
{
    return of_call(name, Effect::fails, functions);
}

constexpr FaultKindRow altering(const char* name, FunctionSet functions, Amount amount = no_amount)
{
    return of_call(name, Effect::alters, functions, amount);
}

constexpr FaultKindRow of_frame(const char* name, Amount amount = no_amount)
{
    return {name, 0, amount, Opportunity::frame, Effect::on_frames, false};
}

constexpr FaultKindRow holding_up(const char* name)
{
    return {name, 0, no_amount, Opportunity::frame, Effect::on_frames, true};
}

using F = Function;

constexpr FunctionSet outputs = functions(
    F::device_scan, F::device_info, F::update_camera_list, F::camera_info, F::grabber_read, F::grabber_write,
    F::camera_read, F::camera_write, F::stream_create, F::stream_create_and_alloc, F::stream_info,
    F::stream_aux, F::buffer_announce, F::buffer_alloc_and_announce, F::buffer_info, F::xml_url);
constexpr FunctionSet reads = functions(F::grabber_read, F::camera_read);
constexpr FunctionSet writes = functions(F::grabber_write, F::camera_write);
constexpr FunctionSet values =
    functions(F::grabber_integer, F::grabber_enumeration, F::camera_integer, F::camera_enumeration);
// A grabber that disappears while it is being closed is not worth a fault, and a scan is not about a
// particular one.
constexpr FunctionSet at_a_grabber = all_functions & ~functions(F::device_scan, F::close, F::camera_close,
                                                                F::stream_delete, F::buffer_revoke, F::stop);

constexpr FaultKindRow rows[] = {
    of_call("call-fails", Effect::fails, all_functions),
    of_call("call-delays", Effect::delays, all_functions),
    of_call("call-leaves-output-untouched", Effect::untouched, outputs),

    failing("scan-fails", functions(F::device_scan)),
    failing("grabber-info-fails", functions(F::device_info)),
    failing("grabber-name-missing", functions(F::device_display_name)),
    failing("grabber-open-fails", functions(F::open)),
    failing("grabber-close-fails", functions(F::close)),
    failing("camera-list-fails", functions(F::update_camera_list)),
    failing("camera-info-fails", functions(F::camera_info)),
    failing("camera-open-fails", functions(F::camera_open)),
    failing("camera-close-fails", functions(F::camera_close)),
    failing("stream-create-fails", functions(F::stream_create, F::stream_create_and_alloc)),
    failing("stream-delete-fails", functions(F::stream_delete)),
    failing("stream-info-fails", functions(F::stream_info)),
    failing("announce-fails", functions(F::buffer_announce, F::buffer_alloc_and_announce)),
    failing("revoke-fails", functions(F::buffer_revoke)),
    failing("queue-fails", functions(F::buffer_to_queue)),
    failing("buffer-info-fails", functions(F::buffer_info)),
    failing("ring-frame-missing", functions(F::stream_pointer)),
    failing("frame-record-fails", functions(F::stream_aux)),
    failing("start-fails", functions(F::start)),
    failing("stop-fails", functions(F::stop)),
    failing("callback-register-fails", functions(F::camera_callback_register, F::buffer_callback_register)),
    failing("register-read-fails", reads),
    failing("register-write-fails", writes),
    failing("value-not-available", values),
    failing("url-fails", functions(F::xml_url)),

    altering("grabber-count-too-large", functions(F::device_scan), {"count", 100, 1, 1000}),
    altering("protocol-unknown", functions(F::device_info), {"protocol", 99, 0, 0xFFFFFFFF}),
    altering("camera-count-too-large", functions(F::update_camera_list), {"count", 17, 1, 0xFFFFFFFF}),
    altering("camera-texts-unterminated", functions(F::camera_info)),
    altering("camera-texts-empty", functions(F::camera_info)),
    altering("camera-texts-garbage", functions(F::camera_info)),
    altering("register-read-short", reads, {"bytes", 1, 0, one_gib}),
    altering("register-write-short", writes, {"bytes", 1, 0, one_gib}),
    altering("description-garbage", reads),
    altering("description-truncated", functions(F::xml_url), {"bytes", 100, 0, one_gib}),
    altering("description-huge", functions(F::xml_url), {"bytes", one_gib, 1, most}),
    altering("url-empty", functions(F::xml_url)),
    altering("url-garbage", functions(F::xml_url)),
    altering("url-too-long", functions(F::xml_url)),
    altering("url-unterminated", functions(F::xml_url)),
    altering("payload-size-wrong", functions(F::stream_info), {"bytes", 4096, 1, most}),
    altering("payload-size-zero", functions(F::stream_info)),
    altering("pixel-format-unknown", functions(F::camera_enumeration), {"code", 0x7FFFFFFF, 0, 0xFFFFFFFF}),

    of_call("camera-lost-while-opening", Effect::loses, functions(F::camera_open)),
    of_call("camera-lost-while-configuring", Effect::loses, functions(F::camera_read, F::camera_write)),
    of_frame("camera-lost-while-streaming"),
    of_call("grabber-lost", Effect::loses, at_a_grabber),
    of_frame("grabber-lost-while-streaming"),

    {"acquisition-never-starts", 0, no_amount, Opportunity::start, Effect::on_frames, false},
    of_frame("acquisition-ends-early"),
    of_frame("frame-dropped"),
    holding_up("frame-late"),
    of_frame("frame-duplicated"),
    of_frame("frames-out-of-order"),
    of_frame("frame-id-wrong", {"by", 1000, -most, most}),
    of_frame("frame-id-jumps", {"by", 1000, -most, most}),
    of_frame("timestamp-zero"),
    of_frame("timestamp-backwards", {"ticks", tick_rate, 1, most}),
    of_frame("timestamp-jumps", {"ticks", tick_rate, -most, most}),
    of_frame("frame-truncated", {"bytes", 64, 0, most}),
    of_frame("frame-corrupted", {"bytes", 1, 1, one_gib}),
    holding_up("callback-stalls"),
    of_frame("callback-missing"),
};
static_assert(sizeof(rows) / sizeof(rows[0]) == fault_kind_count);

} // namespace

const FaultKindRow& row_of(FaultKind kind) { return rows[static_cast<size_t>(kind)]; }

} // namespace zvsim
