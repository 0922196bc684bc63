#include <atomic>
#include <cstring>

#include "GenTL/GenTL.h"

#include "api/ApiCall.h"
#include "api/InfoOutput.h"
#include "api/InfoTable.h"
#include "api/arguments.h"
#include "api/handle_checks.h"
#include "log/Log.h"
#include "modules/EventModule.h"
#include "modules/StreamModule.h"
#include "modules/handles.h"
#include "platform/process.h"

// Event functions: GCRegisterEvent, GCUnregisterEvent and Event*.

namespace GenTL {

using namespace zvgentl;

namespace {

/// No memory for the event object.
GC_ERROR report_not_available(const ApiCall& call, EVENT_TYPE type, const char* handle_name)
{
    if (type == EVENT_REMOTE_DEVICE) { // Contract: only information for this type, and without an exit line
        call.log_info(At{1110},
                      "GCRegisterEvent GC_ERR_NOT_AVAILABLE - wasn't able to set event for handle=%s",
                      handle_name);
        return GC_ERR_NOT_AVAILABLE;
    }
    call.log_error(At{1114}, "GCRegisterEvent GC_ERR_NOT_AVAILABLE - wasn't able to set event for handle=%s",
                   handle_name);
    return call.fail(At{1116}, GC_ERR_NOT_AVAILABLE);
}

/// Registering twice gives the event that exists, as a success.
GC_ERROR report_existing(const ApiCall& call, EVENT_TYPE type, const char* handle_name)
{
    constexpr const char* format =
        "GCRegisterEvent GC_ERR_RESOURCE_IN_USE - event was already set for handle=%s";
    if (type == EVENT_REMOTE_DEVICE)
        call.log_info(At{1124}, format, handle_name);
    else
        log_warning(api_logger, "GCRegisterEvent", At{1126}, format, handle_name);
    return GC_ERR_SUCCESS;
}

/// The enter and exit lines of EventGetData: debug, or trace once one call of an acquisition has been logged.
inline ApiCall throttled_call(StreamModule& stream, LogThrottle::Mark mark)
{
    const bool is_due = stream.is_log_due(LogThrottle::Function::event_get_data, mark);
    return ApiCall{"EventGetData", is_due ? Priority::debug : Priority::trace};
}

/// Drops the oldest entry. Its buffer is in no queue afterwards: neither delivered nor to be filled again.
void discard_next(const EventPlace& place, EVENT_HANDLE handle)
{
    const EventRef event = place.stream->get_Events().find(handle);
    EVENT_NEW_BUFFER_DATA datum{};
    const bool has_datum = place.type == EVENT_NEW_BUFFER;
    if (!event || !event->try_take(has_datum ? &datum : nullptr) || !has_datum)
        return;
    BufferPool& buffers = place.stream->get_Buffers();
    if (const PinnedBuffer buffer = buffers.find(datum.BufferHandle))
        buffers.set_queue(*buffer, BUFFER_QUEUE_TYPE::GENERAL);
}

/// Logs only the first time in the process.
void log_once(std::atomic<bool>& is_logged_already, At at, const char* text)
{
    if (!is_logged_already.exchange(true))
        log_error(api_logger, "EventGetData", at, "%s", text);
}

GC_ERROR wait_for_signal(const StreamModule& stream, EVENT_HANDLE handle, void* destination, uint64_t timeout)
{
    static std::atomic<bool> is_abort_logged{false};
    static std::atomic<bool> is_timeout_logged{false};
    const EventRef event = stream.get_Events().find(handle);
    if (!event) // unregistered since it was checked
        return GC_ERR_ABORT;
    const GC_ERROR error = event->get_event_data(destination, timeout);
    if (error == GC_ERR_ABORT)
        log_once(is_abort_logged, At{1150}, "EventGetData GC_ERR_ABORT");
    else if (error != GC_ERR_SUCCESS)
        log_once(is_timeout_logged, At{1152}, "Timeout has passed but no data has arrive during this time");
    return error;
}

/// Spins on the queue, for consumers that prefer latency to processor time. Ignores that the event was
/// closed.
GC_ERROR poll(const ApiCall& call, const StreamModule& stream, EVENT_HANDLE handle, void* destination,
              uint64_t timeout)
{
    const EventRef event = stream.get_Events().find(handle);
    if (!event) // unregistered since it was checked
        return GC_ERR_ABORT;
    constexpr uint32_t turns_per_clock_reading = 32; // a turn takes some nanoseconds, a reading 25
    const uint64_t start = platform::monotonic_milliseconds();
    for (uint32_t turn = 0;; ++turn) {
        if (event->take_abort()) {
            call.log(At{1162}, "EventGetData GC_ERR_ABORT");
            return GC_ERR_ABORT;
        }
        const bool is_taken = event->has_entries() && event->try_take(destination);
        if (!is_taken && turn % turns_per_clock_reading != 0) {
            platform::spin_pause();
            continue;
        }
        // Contract: an entry that was taken too late is lost. Pinned by PollingEventGetData.LosesALateEntry.
        if (platform::monotonic_milliseconds() - start >= timeout) {
            call.log(At{1168}, "EventGetData - GC_ERR_TIMEOUT, event was signaled but no data can be "
                               "retreived after timeout");
            return GC_ERR_TIMEOUT;
        }
        if (is_taken)
            return GC_ERR_SUCCESS;
    }
}

constexpr InfoRow<EventModule> event_info[] = {
    {EVENT_EVENT_TYPE, [](const EventModule& event) { return InfoValue::int32(event.get_Type()); }},
    {EVENT_NUM_IN_QUEUE, [](const EventModule& event) { return InfoValue::sizet(event.get_QueueLength()); }},
    {EVENT_NUM_FIRED, [](const EventModule& event) { return InfoValue::uint64(event.get_FiredCount()); }},
    {EVENT_SIZE_MAX, [](const EventModule& event) { return InfoValue::sizet(event.get_DataSize()); }},
    {EVENT_INFO_DATA_SIZE_MAX,
     [](const EventModule& event) { return InfoValue::sizet(event.get_DataSize()); }},
};

/// Contract: a second way of dequeuing; the datum that the consumer passed in is not looked at. The type is
/// PTR although the value is the whole datum. Pinned by EventGetDataInfo.ValueTakesTheNextEntry.
GC_ERROR take_value(const ApiCall& call, EventModule& event, INFO_DATATYPE* type, void* buffer, size_t* size)
{
    *type = INFO_DATATYPE_PTR;
    const size_t data_size = event.get_DataSize();
    if (!is_missing(buffer)) {
        if (data_size > *size) {
            *size = data_size;
            log_warning(api_logger, "EventGetDataInfo", At{1192},
                        "EventGetDataInfo - GC_ERR_BUFFER_TOO_SMALL, wanted size=%d",
                        static_cast<int>(data_size));
            return GC_ERR_BUFFER_TOO_SMALL;
        }
        if (!event.try_take(buffer))
            return call.fail(At{1197}, GC_ERR_NOT_AVAILABLE);
    }
    *size = data_size;
    return GC_ERR_SUCCESS;
}

} // namespace

GC_API GCRegisterEvent(EVENTSRC_HANDLE hEventSrc, EVENT_TYPE iEventID, EVENT_HANDLE* phEvent)
try {
    const ApiCall call{"GCRegisterEvent"};
    call.log(At{1210}, "Enter GCRegisterEvent, source handle=0x%016llX, event type=%d", address(hEventSrc),
             iEventID);
    if (!call.library_is_open(At{1212}))
        return GC_ERR_NOT_INITIALIZED;
    if (hEventSrc == nullptr) // without a log line
        return GC_ERR_INVALID_HANDLE;
    if (is_missing(phEvent))
        return call.fail(At{1217}, GC_ERR_INVALID_PARAMETER);
    const ModuleKind kind = get_handle_type(hEventSrc);
    const char* const kind_name = handle_type_name(kind);
    StreamModule* const stream = kind == ModuleKind::stream ? find_stream(hEventSrc) : nullptr;
    if (stream == nullptr) {
        call.log_error(At{1222}, "Request not implemented for handle=%s", kind_name);
        return call.fail(At{1223}, GC_ERR_INVALID_HANDLE);
    }

    *phEvent = nullptr;
    if (iEventID != EVENT_NEW_BUFFER && iEventID != EVENT_REMOTE_DEVICE) {
        call.log_error(At{1228}, "handle=%s", kind_name);
        return call.fail(At{1229}, GC_ERR_NOT_IMPLEMENTED);
    }
    const EventList::Registration registration = stream->get_Events().add(*stream, iEventID);
    if (registration.outcome == EventList::Outcome::failed)
        return report_not_available(call, iEventID, kind_name);
    *phEvent = registration.event.get();
    if (registration.outcome == EventList::Outcome::existed)
        return report_existing(call, iEventID, kind_name);
    return call.succeed(At{1237}, "Exit GCRegisterEvent, handle=0x%X", low32(*phEvent));
} catch (...) {
    return after_exception("GCRegisterEvent");
}

GC_API GCUnregisterEvent(EVENTSRC_HANDLE hEventSrc, EVENT_TYPE iEventID)
try {
    const ApiCall call{"GCUnregisterEvent"};
    call.log(At{1250}, "Enter GCUnregisterEvent, source handle=0x%016llX, event id= %d", address(hEventSrc),
             iEventID);
    if (!call.library_is_open(At{1252}))
        return GC_ERR_NOT_INITIALIZED;
    const ModuleKind kind = get_handle_type(hEventSrc);
    if (kind == ModuleKind::invalid) // without a log line
        return GC_ERR_INVALID_HANDLE;
    if (iEventID != EVENT_NEW_BUFFER) {
        call.log_error(At{1258}, "handle=%s", handle_type_name(kind));
        return call.fail(At{1259}, GC_ERR_NOT_IMPLEMENTED);
    }
    StreamModule* const stream = kind == ModuleKind::stream ? find_stream(hEventSrc) : nullptr;
    if (stream == nullptr) // without a log line, as the next
        return GC_ERR_NOT_IMPLEMENTED;
    if (!stream->get_Events().remove(iEventID))
        return GC_ERR_NOT_INITIALIZED; // Contract: this code. Pinned by GCUnregisterEvent.OfNothing.
    return call.succeed(At{1266}, "Exit GCUnregisterEvent");
} catch (...) {
    return after_exception("GCUnregisterEvent");
}

namespace {

/// The usual call, for a buffer that has arrived, while nobody logs calls. False when there is anything to
/// wait for, to refuse or to log: then nothing was done.
inline bool take_at_once(EVENT_HANDLE handle, void* destination, size_t* size)
{
    if (is_logged(api_logger, Priority::debug) || !is_initialised() || is_missing(destination) ||
        is_missing(size) || *size < sizeof(EVENT_NEW_BUFFER_DATA))
        return false;
    StreamModule* const stream = stream_index.glance(handle);
    if (stream == nullptr || !stream->is_Listed() || !has_open_owners(*stream) ||
        !stream->is_SignaledEventMode() || !stream->get_Events().take_at_once(handle, destination))
        return false;
    *size = sizeof(EVENT_NEW_BUFFER_DATA);
    stream->is_log_due(LogThrottle::Function::event_get_data, LogThrottle::Mark::yes);
    return true;
}

/// Any call, with every check and line in its order.
[[gnu::noinline]] GC_ERROR get_data(EVENT_HANDLE hEvent, void* pBuffer, size_t* piSize, uint64_t iTimeout)
try {
    const ApiCall call{"EventGetData", Priority::debug};
    if (!call.library_is_open(At{1280}))
        return GC_ERR_NOT_INITIALIZED;
    const auto place = check_event_place(hEvent, call, Open::required);
    if (!place)
        return place.error();
    // The stream decides the priority of the enter line, so the line comes after the handle check.
    StreamModule& stream = *place->stream;
    throttled_call(stream, LogThrottle::Mark::no)
        .log(At{1287}, "Enter EventGetData, handle=0x%X, buffer size=%d, timeout=%d ms", low32(hEvent),
             logged_size(piSize), low32_signed(iTimeout));
    if (is_missing(piSize))
        return call.fail(At{1290}, GC_ERR_INVALID_PARAMETER);
    const size_t data_size = EventModule::data_size_of(place->type);
    if (data_size > *piSize) { // before the missing buffer
        *piSize = data_size;
        call.log(At{1294}, "EventGetData - GC_ERR_BUFFER_TOO_SMALL, wanted size=%d",
                 static_cast<int>(data_size));
        return GC_ERR_BUFFER_TOO_SMALL;
    }
    if (is_missing(pBuffer)) {
        discard_next(*place, hEvent);
        return call.succeed(At{1299}, "EventGetData, pBuffer is NULL, discard next event");
    }

    const GC_ERROR error = stream.is_SignaledEventMode() ? wait_for_signal(stream, hEvent, pBuffer, iTimeout)
                                                         : poll(call, stream, hEvent, pBuffer, iTimeout);
    if (error != GC_ERR_SUCCESS)
        return error;
    *piSize = data_size;
    const ApiCall exit = throttled_call(stream, LogThrottle::Mark::yes);
    if (place->type != EVENT_NEW_BUFFER)
        return exit.succeed(At{1309}, "Exit EventGetData");
    EVENT_NEW_BUFFER_DATA datum{};
    std::memcpy(&datum, pBuffer, sizeof datum);
    return exit.succeed(At{1312}, "Exit EventGetData, buffer handle=0x%X, private=0x%X ",
                        low32(datum.BufferHandle), low32(datum.pUserPointer));
} catch (...) {
    return after_exception("EventGetData");
}

} // namespace

GC_API EventGetData(EVENT_HANDLE hEvent, void* pBuffer, size_t* piSize, uint64_t iTimeout)
{
    if (take_at_once(hEvent, pBuffer, piSize))
        return GC_ERR_SUCCESS;
    return get_data(hEvent, pBuffer, piSize, iTimeout);
}

GC_API EventFlush(EVENT_HANDLE hEvent)
try {
    const ApiCall call{"EventFlush"};
    call.log(At{1330}, "Enter EventFlush");
    if (!call.library_is_open(At{1332}))
        return GC_ERR_NOT_INITIALIZED;
    const auto event = check_event_handle(hEvent, call, Open::required);
    if (!event)
        return event.error();

    event->flush();
    return call.succeed(At{1339}, "Exit EventFlush");
} catch (...) {
    return after_exception("EventFlush");
}

GC_API EventKill(EVENT_HANDLE hEvent)
try {
    const ApiCall call{"EventKill"};
    call.log(At{1350}, "Enter EventKill, event handle=0x%016llX", address(hEvent));
    if (!call.library_is_open(At{1352}))
        return GC_ERR_NOT_INITIALIZED;
    const auto event = check_event_handle(hEvent, call, Open::required);
    if (!event)
        return event.error();

    event->kill();
    return call.succeed(At{1359}, "Exit EventKill");
} catch (...) {
    return after_exception("EventKill");
}

GC_API EventGetInfo(EVENT_HANDLE hEvent, EVENT_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                    size_t* piSize)
try {
    const ApiCall call{"EventGetInfo", Priority::debug};
    call.log(At{1370}, "Enter EventGetInfo, handle=0x%X, info=%d", low32(hEvent), iInfoCmd);
    if (!call.library_is_open(At{1372}))
        return GC_ERR_NOT_INITIALIZED;
    const InfoOutput output{piType, pBuffer, piSize};
    if (output.is_malformed())
        return call.fail(At{1376}, GC_ERR_INVALID_PARAMETER);
    const auto event = check_event_handle(hEvent, call, Open::required);
    if (!event)
        return event.error();

    const auto* const row = find_row(event_info, iInfoCmd);
    if (row == nullptr)
        return output.refuse(call, At{1383}, At{1384}, iInfoCmd);
    const GC_ERROR error = output.write(row->value(*event), call, iInfoCmd, NumberLog::silent);
    return error != GC_ERR_SUCCESS ? error : call.succeed(At{1386}, "Exit EventGetInfo");
} catch (...) {
    return after_exception("EventGetInfo");
}

GC_API EventGetDataInfo(EVENT_HANDLE hEvent, const void* /*pInBuffer*/, size_t /*iInBufferSize*/,
                        EVENT_DATA_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pOutBuffer,
                        size_t* piOutSize)
try {
    const ApiCall call{"EventGetDataInfo", Priority::debug};
    call.log(At{1400}, "Enter EventGetDataInfo, handle=0x%X, info=%d", low32(hEvent), iInfoCmd);
    if (!call.library_is_open(At{1402}))
        return GC_ERR_NOT_INITIALIZED;
    const InfoOutput output{piType, pOutBuffer, piOutSize};
    if (output.is_malformed())
        return call.fail(At{1406}, GC_ERR_INVALID_PARAMETER);
    const auto event = check_event_handle(hEvent, call, Open::required);
    if (!event)
        return event.error();

    GC_ERROR error = GC_ERR_SUCCESS;
    switch (iInfoCmd) {
    case EVENT_DATA_ID:
        error = output.write(InfoValue::string(event->getId()), call, iInfoCmd, NumberLog::silent);
        break;
    case EVENT_DATA_VALUE:
        error = take_value(call, *event, piType, pOutBuffer, piOutSize);
        break;
    case EVENT_DATA_NUMID:
        error = output.write(InfoValue::uint64(address(hEvent)), call, iInfoCmd, NumberLog::silent);
        break;
    default:
        call.log_error(At{1422}, "info= %d", iInfoCmd); // Contract: the size stays, unlike everywhere else
        return call.fail(At{1423}, GC_ERR_NOT_IMPLEMENTED);
    }
    return error != GC_ERR_SUCCESS ? error : call.succeed(At{1425}, "Exit EventGetDataInfo");
} catch (...) {
    return after_exception("EventGetDataInfo");
}

} // namespace GenTL
