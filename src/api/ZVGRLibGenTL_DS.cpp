#include "GenTL/GenTL.h"

#include "api/ApiCall.h"
#include "api/InfoOutput.h"
#include "api/InfoTable.h"
#include "api/arguments.h"
#include "api/handle_checks.h"
#include "log/Log.h"
#include "modules/BufferModule.h"
#include "modules/CameraModule.h"
#include "modules/StreamModule.h"
#include "modules/grabber_info.h"

// Data stream functions: DS*, except those that describe a buffer (ZVGRLibGenTL_Buffer.cpp).

namespace GenTL {

using namespace zvgentl;

namespace {

using Place = BufferPool::Place;

constexpr InfoRow<StreamModule> stream_info[] = {
    {STREAM_INFO_ID, [](const StreamModule& stream) { return InfoValue::string(stream.getId()); }},
    {STREAM_INFO_NUM_DELIVERED,
     [](const StreamModule& stream) {
         return InfoValue::uint64(static_cast<uint64_t>(stream.get_Delivered()));
     }},
    {STREAM_INFO_NUM_UNDERRUN,
     [](const StreamModule& stream) {
         return InfoValue::uint64(static_cast<uint64_t>(stream.get_Underruns()));
     }},
    {STREAM_INFO_NUM_ANNOUNCED,
     [](const StreamModule& stream) { return InfoValue::sizet(stream.get_Buffers().size()); }},
    {STREAM_INFO_NUM_QUEUED,
     [](const StreamModule& stream) { return InfoValue::sizet(stream.get_Buffers().count(Place::waiting)); }},
    {STREAM_INFO_NUM_AWAIT_DELIVERY,
     [](const StreamModule& stream) { return InfoValue::sizet(stream.get_Buffers().count(Place::output)); }},
    // Contract: UINT64, where the standard has SIZET.
    {STREAM_INFO_NUM_STARTED,
     [](const StreamModule& stream) {
         return InfoValue::uint64(stream.get_Buffers().count(Place::started));
     }},
    {STREAM_INFO_PAYLOAD_SIZE,
     [](const StreamModule& stream) { return InfoValue::sizet(stream.get_PayloadSize()); }},
    {STREAM_INFO_IS_GRABBING,
     [](const StreamModule& stream) { return InfoValue::bool8(stream.is_Grabbing()); }},
    {STREAM_INFO_DEFINES_PAYLOADSIZE, [](const StreamModule&) { return InfoValue::bool8(true); }},
    {STREAM_INFO_TLTYPE,
     [](const StreamModule& stream) { return InfoValue::string(transport_type_of(stream)); }},
    {STREAM_INFO_NUM_CHUNKS_MAX, [](const StreamModule&) { return InfoValue::sizet(0); }},
    {STREAM_INFO_BUF_ANNOUNCE_MIN,
     [](const StreamModule& stream) { return InfoValue::sizet(stream.get_BufferAllocMin()); }},
    {STREAM_INFO_BUF_ALIGNMENT,
     [](const StreamModule& stream) { return InfoValue::sizet(stream.get_Alignment()); }},
};

} // namespace

GC_API DSAnnounceBuffer(DS_HANDLE hDataStream, void* pBuffer, size_t iSize, void* pPrivate,
                        BUFFER_HANDLE* phBuffer)
try {
    const ApiCall call{"DSAnnounceBuffer", Priority::debug};
    call.log(At{2910},
             "Enter DSAnnounceBuffer, stream handle=0x%X, requested buffer=0x%X, size=%d, private=0x%X",
             low32(hDataStream), low32(pBuffer), low32_signed(iSize), low32(pPrivate));
    if (!call.library_is_open(At{2912}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_missing(pBuffer) || is_missing(phBuffer)) // before the handle, and without a log line
        return GC_ERR_INVALID_PARAMETER;
    const auto stream = check_stream_handle(hDataStream, call, Open::required);
    if (!stream)
        return stream.error();

    BufferModule* const buffer = stream->new_buffer(pBuffer, iSize, pPrivate);
    *phBuffer = buffer;
    if (buffer == nullptr) {
        call.log_error(At{2922},
                       "Wasn't able to create buffer=0x%016llX with size=%llu, for stream handle=0x%X",
                       address(pBuffer), static_cast<unsigned long long>(iSize), low32(hDataStream));
        return call.fail(At{2924}, GC_ERR_RESOURCE_IN_USE);
    }
    return call.succeed(At{2926}, "Exit DSAnnounceBuffer, buffer handle=0x%X", low32(buffer));
} catch (...) {
    return after_exception("DSAnnounceBuffer");
}

GC_API DSAllocAndAnnounceBuffer(DS_HANDLE hDataStream, size_t iSize, void* pPrivate, BUFFER_HANDLE* phBuffer)
try {
    const ApiCall call{"DSAllocAndAnnounceBuffer", Priority::debug};
    call.log(At{2940}, "Enter DSAllocAndAnnounceBuffer, stream handle=0x%X, size=%d, private=0x%X",
             low32(hDataStream), low32_signed(iSize), low32(pPrivate));
    if (!call.library_is_open(At{2942}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_missing(phBuffer)) // before the handle, and without a log line
        return GC_ERR_INVALID_PARAMETER;
    const auto stream = check_stream_handle(hDataStream, call, Open::required);
    if (!stream)
        return stream.error();

    BufferModule* const buffer = stream->new_buffer(nullptr, iSize, pPrivate);
    *phBuffer = buffer;
    if (buffer == nullptr) {
        call.log_error(At{2952}, "Wasn't able to alllocate buffer with size=%llu, for stream handle=0x%X",
                       static_cast<unsigned long long>(iSize), low32(hDataStream));
        return call.fail(At{2954}, GC_ERR_RESOURCE_IN_USE);
    }
    return call.succeed(At{2956}, "Exit DSAllocAndAnnounceBuffer, buffer handle=0x%X", low32(buffer));
} catch (...) {
    return after_exception("DSAllocAndAnnounceBuffer");
}

GC_API DSRevokeBuffer(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, void** ppBuffer, void** ppPrivate)
try {
    const ApiCall call{"DSRevokeBuffer"};
    call.log(At{2970}, "Enter DSRevokeBuffer, stream handle=0x%X, buffer handle=0x%X, user buffer=0x%X",
             low32(hDataStream), low32(hBuffer), is_missing(ppBuffer) ? 0U : low32(*ppBuffer));
    if (!call.library_is_open(At{2972}))
        return GC_ERR_NOT_INITIALIZED;
    const auto stream = check_stream_handle(hDataStream, call, Open::required);
    if (!stream)
        return stream.error();

    uint64_t grabber_handle = 0;
    {
        const PinnedBuffer buffer = stream->get_Buffers().find(hBuffer);
        if (!buffer)
            return call.fail(At{2981}, GC_ERR_INVALID_HANDLE);
        // Contract: also when the buffer allocated that memory itself and now frees it.
        if (!is_missing(ppBuffer))
            *ppBuffer = buffer->get_Memory();
        if (!is_missing(ppPrivate))
            *ppPrivate = buffer->get_Private();
        grabber_handle = buffer->get_GrabberHandle();
    }
    switch (stream->revoke(hBuffer, grabber_handle)) {
    case RevokeOutcome::not_in_pool: // another thread was faster
        call.log_error(At{2991}, "buffer 0x%016llX wasn't found in buffer pool", address(hBuffer));
        return call.fail(At{2992}, GC_ERR_INVALID_HANDLE);
    case RevokeOutcome::in_use:
        call.log_error(At{2994}, "buffer 0x%016llX is in one of the acquisition pools", address(hBuffer));
        return call.fail(At{2995}, GC_ERR_RESOURCE_IN_USE);
    case RevokeOutcome::revoked:
        break;
    }
    return call.succeed(At{2999}, "Exit DSRevokeBuffer");
} catch (...) {
    return after_exception("DSRevokeBuffer");
}

namespace {

/// The usual call, while nobody logs traces. False when there is anything to refuse or to log, and also when
/// a buffer is being announced or revoked somewhere: then nothing was done.
inline bool queue_at_once(DS_HANDLE stream, BUFFER_HANDLE buffer)
{
    if (is_logged(api_logger, Priority::trace) || !is_initialised())
        return false;
    BufferFacts* const facts = glance_at_facts(stream, buffer);
    return facts != nullptr && facts->stream.get()->queue_buffer(buffer, *facts);
}

/// Any call, with every check and line in its order.
[[gnu::noinline]] GC_ERROR queue_buffer(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer)
{
    const ApiCall call{"DSQueueBuffer", Priority::trace};
    call.log(At{3010}, "Enter DSQueueBuffer, stream handle=0x%X, buffer handle=0x%X", low32(hDataStream),
             low32(hBuffer));
    if (!call.library_is_open(At{3012}))
        return GC_ERR_NOT_INITIALIZED;
    BufferFacts* const facts = find_facts(hDataStream, hBuffer);
    if (facts == nullptr || !facts->stream.get()->queue_buffer(hBuffer, *facts)) {
        const auto stream = check_stream_handle(hDataStream, call, Open::required);
        if (!stream)
            return stream.error();
        call.log_error(At{3020}, "DSQueueBuffer - GC_ERR_INVALID_HANDLE: invalid buffer handle");
        return GC_ERR_INVALID_HANDLE;
    }
    return call.succeed(At{3024}, "Exit DSQueueBuffer");
}

} // namespace

GC_API DSQueueBuffer(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer)
try {
    if (queue_at_once(hDataStream, hBuffer))
        return GC_ERR_SUCCESS;
    return queue_buffer(hDataStream, hBuffer);
} catch (...) {
    return after_exception("DSQueueBuffer");
}

GC_API DSFlushQueue(DS_HANDLE hDataStream, ACQ_QUEUE_TYPE iOperation)
try {
    const ApiCall call{"DSFlushQueue", Priority::debug};
    call.log(At{3040}, "Enter DSFlushQueue, stream handle=0x%016llX, operation=%d", address(hDataStream),
             iOperation);
    if (!call.library_is_open(At{3042}))
        return GC_ERR_NOT_INITIALIZED;
    const auto stream = check_stream_handle(hDataStream, call, Open::required);
    if (!stream)
        return stream.error();

    if (!stream->buffer_operation(iOperation)) {
        call.log_error(At{3049}, "Unsupported buffer operation= %d", iOperation);
        return call.fail(At{3050}, GC_ERR_NOT_IMPLEMENTED);
    }
    return call.succeed(At{3052}, "Exit DSFlushQueue");
} catch (...) {
    return after_exception("DSFlushQueue");
}

GC_API DSGetBufferID(DS_HANDLE hDataStream, uint32_t iIndex, BUFFER_HANDLE* phBuffer)
try {
    const ApiCall call{"DSGetBufferID"};
    call.log(At{3060}, "Enter DSGetBufferID");
    if (!call.library_is_open(At{3062}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_missing(phBuffer)) // before the handle, and without a log line
        return GC_ERR_INVALID_PARAMETER;
    const auto stream = check_stream_handle(hDataStream, call, Open::required);
    if (!stream)
        return stream.error();

    *phBuffer = stream->get_Buffers().at(iIndex).get();
    if (*phBuffer == nullptr) // without a log line
        return GC_ERR_INVALID_INDEX;
    return call.succeed(At{3073}, "Exit DSGetBufferID");
} catch (...) {
    return after_exception("DSGetBufferID");
}

GC_API DSClose(DS_HANDLE hDataStream)
try {
    const ApiCall call{"DSClose"};
    call.log(At{3090}, "Enter DSClose");
    if (!call.library_is_open(At{3092}))
        return GC_ERR_NOT_INITIALIZED;
    const auto stream = check_stream_handle(hDataStream, call, Open::required);
    if (!stream)
        return stream.error();

    stream->close();
    return call.succeed(At{3099}, "Exit DSClose");
} catch (...) {
    return after_exception("DSClose");
}

GC_API DSGetParentDev(DS_HANDLE hDataStream, DEV_HANDLE* phDevice)
try {
    const ApiCall call{"DSGetParentDev"};
    call.log(At{3110}, "Enter DSGetParentDev");
    if (!call.library_is_open(At{3112}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_missing(phDevice)) // before the handle, and without a log line
        return GC_ERR_INVALID_PARAMETER;
    const auto stream = check_stream_handle(hDataStream, call, Open::required);
    if (!stream)
        return stream.error();

    // Contract: the camera, which is the remote device's port. Pinned by DSGetParentDev.GivesTheCamera.
    *phDevice = stream->get_Camera();
    return call.succeed(At{3122}, "Exit DSGetParentDev");
} catch (...) {
    return after_exception("DSGetParentDev");
}

GC_API DSStartAcquisition(DS_HANDLE hDataStream, ACQ_START_FLAGS iStartFlags, uint64_t iNumToAcquire)
try {
    const ApiCall call{"DSStartAcquisition"};
    call.log(At{3140}, "Enter DSStartAcquisition, stream handle=0x%X, flags=0x%X, frames=%d",
             low32(hDataStream), static_cast<unsigned>(iStartFlags), low32_signed(iNumToAcquire));
    if (!call.library_is_open(At{3142}))
        return GC_ERR_NOT_INITIALIZED;
    if (iNumToAcquire == 0) // before the handle, and without a log line
        return GC_ERR_INVALID_PARAMETER;
    const auto stream = check_stream_handle(hDataStream, call, Open::required);
    if (!stream)
        return stream.error();
    if (stream->get_Buffers().size() == 0) {
        call.log_error(At{3150}, "No buffers in stream=0x%016llX", address(hDataStream));
        return call.fail(At{3151}, GC_ERR_INVALID_BUFFER);
    }

    constexpr uint32_t until_stopped = 0;
    const uint32_t frames =
        iNumToAcquire == GENTL_INFINITE ? until_stopped : static_cast<uint32_t>(iNumToAcquire);
    if (!stream->start(frames)) // without a log line
        return GC_ERR_RESOURCE_IN_USE;
    return call.succeed(At{3158}, "Exit DSStartAcquisition");
} catch (...) {
    return after_exception("DSStartAcquisition");
}

GC_API DSStopAcquisition(DS_HANDLE hDataStream, ACQ_STOP_FLAGS iStopFlags)
try {
    const ApiCall call{"DSStopAcquisition"};
    call.log(At{3170}, "Enter DSStopAcquisition, flags=0x%X", static_cast<unsigned>(iStopFlags));
    if (!call.library_is_open(At{3172}))
        return GC_ERR_NOT_INITIALIZED;
    const auto stream = check_stream_handle(hDataStream, call, Open::required);
    if (!stream)
        return stream.error();

    stream->stop();
    return call.succeed(At{3179}, "Exit DSStopAcquisition");
} catch (...) {
    return after_exception("DSStopAcquisition");
}

GC_API DSGetInfo(DS_HANDLE hDataStream, STREAM_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                 size_t* piSize)
try {
    const ApiCall call{"DSGetInfo", Priority::debug};
    call.log(At{3190}, "Enter DSGetInfo, stream handle=0x%016llX, iInfoCmd=%d", address(hDataStream),
             iInfoCmd);
    if (!call.library_is_open(At{3192}))
        return GC_ERR_NOT_INITIALIZED;
    const InfoOutput output{piType, pBuffer, piSize};
    if (output.is_malformed())
        return call.fail(At{3196}, GC_ERR_INVALID_PARAMETER);
    const auto stream = check_stream_handle(hDataStream, call, Open::required);
    if (!stream)
        return stream.error();

    const auto* const row = find_row(stream_info, iInfoCmd);
    if (row == nullptr)
        return output.refuse(call, At{3203}, At{3204}, iInfoCmd);
    const GC_ERROR error = output.write(row->value(*stream), call, iInfoCmd, NumberLog::both);
    return error != GC_ERR_SUCCESS ? error : call.succeed(At{3206}, "Exit DSGetInfo");
} catch (...) {
    return after_exception("DSGetInfo");
}

} // namespace GenTL
