#include "GenTL/GenTL.h"

#include "api/ApiCall.h"
#include "api/InfoOutput.h"
#include "api/InfoTable.h"
#include "api/arguments.h"
#include "api/handle_checks.h"
#include "log/Log.h"
#include "modules/BufferModule.h"
#include "modules/StreamModule.h"
#include "modules/grabber_info.h"

// Functions that describe a buffer: DSGetBufferInfo, its parts and its chunks.

namespace GenTL {

using namespace zvgentl;

namespace {

/// The number that answers a command. Its width is 0 when there is none: for an unknown command, and for
/// BUFFER_INFO_TLTYPE, whose answer is a text. A switch, because a consumer makes such queries several times
/// per frame: unlike a table of functions it costs the query no call.
[[gnu::always_inline]] inline InfoNumber number_for(BUFFER_INFO_CMD command,
                                                    const BufferFacts& buffer) noexcept
{
    const auto size = [&](Geometry value) { return InfoNumber::sizet(buffer.get_Geometry(value)); };
    const auto number = [&](Geometry value) { return InfoNumber::uint64(buffer.get_Geometry(value)); };
    const auto is_in = [&](FillState state) { return InfoNumber::bool8(buffer.fill_state.get() == state); };

    switch (command) {
    case BUFFER_INFO_BASE:
        return InfoNumber::ptr(buffer.memory.get());
    case BUFFER_INFO_SIZE:
        return size(Geometry::size);
    case BUFFER_INFO_USER_PTR:
        return InfoNumber::ptr(buffer.private_pointer.get());
    case BUFFER_INFO_TIMESTAMP:
        return InfoNumber::uint64(buffer.timestamp.get());
    case BUFFER_INFO_NEW_DATA:
    case BUFFER_INFO_IMAGEPRESENT:
        return is_in(FillState::filled);
    case BUFFER_INFO_IS_QUEUED:
        return InfoNumber::bool8(buffer.queue.get() == BUFFER_QUEUE_TYPE::INPUT);
    case BUFFER_INFO_IS_ACQUIRING:
        return is_in(FillState::filling);
    case BUFFER_INFO_IS_INCOMPLETE:
        return is_in(FillState::incomplete);
    case BUFFER_INFO_SIZE_FILLED:
    case BUFFER_INFO_DATA_SIZE:
        return size(Geometry::data_size);
    case BUFFER_INFO_WIDTH:
        return size(Geometry::width);
    case BUFFER_INFO_HEIGHT:
        return size(Geometry::height);
    case BUFFER_INFO_XOFFSET:
        return size(Geometry::x_offset);
    case BUFFER_INFO_YOFFSET:
        return size(Geometry::y_offset);
    case BUFFER_INFO_XPADDING:
    case BUFFER_INFO_YPADDING:
    case BUFFER_INFO_IMAGEOFFSET:
        return InfoNumber::sizet(0);
    case BUFFER_INFO_FRAMEID:
        return InfoNumber::uint64(buffer.frame_id.get());
    case BUFFER_INFO_PAYLOADTYPE:
        return InfoNumber::sizet(PAYLOAD_TYPE_IMAGE);
    case BUFFER_INFO_PIXELFORMAT:
        return number(Geometry::pixel_format);
    case BUFFER_INFO_PIXELFORMAT_NAMESPACE:
        return number(Geometry::pixel_format_namespace);
    case BUFFER_INFO_DELIVERED_IMAGEHEIGHT:
        return size(Geometry::delivered_image_height);
    case BUFFER_INFO_PIXEL_ENDIANNESS:
        return InfoNumber::int32(PIXELENDIANNESS_LITTLE);
    case BUFFER_INFO_DATA_LARGER_THAN_BUFFER:
        return InfoNumber::bool8(buffer.get_Geometry(Geometry::data_size) >
                                 buffer.get_Geometry(Geometry::size));
    case BUFFER_INFO_CONTAINS_CHUNKDATA:
        return InfoNumber::bool8(false);
    default:
        return {};
    }
}

constexpr InfoRow<BufferFacts> buffer_part_info[] = {
    {BUFFER_PART_INFO_BASE, [](const BufferFacts& buffer) { return InfoValue::ptr(buffer.memory.get()); }},
    {BUFFER_PART_INFO_DATA_SIZE,
     [](const BufferFacts& buffer) { return InfoValue::sizet(buffer.get_Geometry(Geometry::size)); }},
};

/// Answers the usual query, for a number while nobody logs traces. False when there is anything to refuse or
/// to log, and also when the buffer's index is being changed: then nothing was done, and the checks say what.
inline bool answer_at_once(DS_HANDLE stream, BUFFER_HANDLE buffer, BUFFER_INFO_CMD command,
                           INFO_DATATYPE* type, void* destination, size_t* size) noexcept
{
    if (is_logged(api_logger, Priority::trace) || !is_initialised() || is_missing(type) ||
        is_missing(destination) || is_missing(size))
        return false;
    const BufferFacts* const facts = glance_at_facts(stream, buffer);
    if (facts == nullptr)
        return false;
    const InfoNumber number = number_for(command, *facts);
    if (facts->buffer.get() != buffer || number.width == 0 || *size < number.width)
        return false;
    InfoOutput::hand_over(number, type, destination, size);
    return true;
}

/// It is not among the facts: the library is asked for it.
GC_ERROR write_transport_type(const ApiCall& call, const InfoOutput& output, const BufferFacts& facts,
                              int32_t command)
{
    return output.write(InfoValue::string(transport_type_of(*facts.stream.get())), call, command,
                        NumberLog::too_small);
}

/// Answers any query, with every check and line in its order.
[[gnu::cold, gnu::noinline]] GC_ERROR get_buffer_info(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer,
                                                      BUFFER_INFO_CMD iInfoCmd, INFO_DATATYPE* piType,
                                                      void* pBuffer, size_t* piSize)
try {
    const ApiCall call{"DSGetBufferInfo", Priority::trace};
    call.log(At{3310}, "Enter DSGetBufferInfo, info=%d, stream handle=0x%X, buffer handle=0x%X", iInfoCmd,
             low32(hDataStream), low32(hBuffer));
    if (!call.library_is_open(At{3312}))
        return GC_ERR_NOT_INITIALIZED;
    const InfoOutput output{piType, pBuffer, piSize};
    if (output.is_malformed())
        return call.fail(At{3316}, GC_ERR_INVALID_PARAMETER);
    const BufferFacts* const facts = find_facts(hDataStream, hBuffer);
    const InfoNumber number = facts != nullptr ? number_for(iInfoCmd, *facts) : InfoNumber{};
    if (facts == nullptr || facts->buffer.get() != hBuffer) { // or revoked meanwhile
        const auto stream = check_stream_handle(hDataStream, call, Open::required);
        if (!stream)
            return stream.error();
        call.log_error(At{3322}, "invalid buffer handle %016llX", address(hBuffer));
        return call.fail(At{3323}, GC_ERR_INVALID_HANDLE);
    }
    const bool is_number = number.width != 0;
    if (!is_number && iInfoCmd != BUFFER_INFO_TLTYPE)
        return output.refuse(call, At{3328}, At{3329}, iInfoCmd);
    const GC_ERROR error = is_number ? output.write(number, call, iInfoCmd, NumberLog::too_small)
                                     : write_transport_type(call, output, *facts, iInfoCmd);
    return error != GC_ERR_SUCCESS ? error : call.succeed(At{3331}, "Exit DSGetBufferInfo");
} catch (...) {
    return after_exception("DSGetBufferInfo");
}

} // namespace

GC_API DSGetBufferInfo(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, BUFFER_INFO_CMD iInfoCmd,
                       INFO_DATATYPE* piType, void* pBuffer, size_t* piSize)
{
    if (answer_at_once(hDataStream, hBuffer, iInfoCmd, piType, pBuffer, piSize))
        return GC_ERR_SUCCESS;
    return get_buffer_info(hDataStream, hBuffer, iInfoCmd, piType, pBuffer, piSize);
}

GC_API DSGetBufferChunkData(DS_HANDLE /*hDataStream*/, BUFFER_HANDLE /*hBuffer*/,
                            SINGLE_CHUNK_DATA* /*pChunkData*/, size_t* /*piNumChunks*/)
try {
    const ApiCall call{"DSGetBufferChunkData"};
    call.log(At{3350}, "Enter DSGetBufferChunkData");
    if (!call.library_is_open(At{3352}))
        return GC_ERR_NOT_INITIALIZED;
    return call.fail(At{3354}, GC_ERR_NOT_IMPLEMENTED); // Contract: whatever the arguments
} catch (...) {
    return after_exception("DSGetBufferChunkData");
}

GC_API DSGetNumBufferParts(DS_HANDLE hDataStream, BUFFER_HANDLE /*hBuffer*/, uint32_t* piNumParts)
try {
    const ApiCall call{"DSGetNumBufferParts", Priority::debug};
    call.log(At{3370}, "Enter DSGetNumBufferParts");
    if (!call.library_is_open(At{3372}))
        return GC_ERR_NOT_INITIALIZED;
    if (is_missing(piNumParts)) // before the handle, and without a log line
        return GC_ERR_INVALID_PARAMETER;
    const auto stream = check_stream_handle(hDataStream, call, Open::required);
    if (!stream)
        return stream.error();

    // Contract: a buffer of one part has none, and its handle is not looked at; yet part 0 can be asked for.
    // Pinned by DSGetNumBufferParts.ReportsNoneForAnyBuffer.
    *piNumParts = 0;
    return call.succeed(At{3383}, "Exit DSGetNumBufferParts");
} catch (...) {
    return after_exception("DSGetNumBufferParts");
}

GC_API DSGetBufferPartInfo(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, uint32_t iPartIndex,
                           BUFFER_PART_INFO_CMD iInfoCmd, INFO_DATATYPE* piType, void* pBuffer,
                           size_t* piSize)
try {
    const ApiCall call{"DSGetBufferPartInfo", Priority::debug};
    call.log(At{3400}, "Enter DSGetBufferPartInfo");
    if (!call.library_is_open(At{3402}))
        return GC_ERR_NOT_INITIALIZED;
    const auto stream = check_stream_handle(hDataStream, call, Open::required);
    if (!stream)
        return stream.error();
    const auto buffer = check_buffer_handle(hBuffer, call); // of any stream
    if (!buffer)
        return buffer.error();
    const InfoOutput output{piType, pBuffer, piSize};
    if (iPartIndex != 0 || output.is_incomplete())
        return call.fail(At{3412}, GC_ERR_INVALID_PARAMETER);

    const auto* const row = find_row(buffer_part_info, iInfoCmd);
    if (row == nullptr)
        return output.refuse(call, At{3416}, At{3417}, iInfoCmd);
    const GC_ERROR error = output.write(row->value(buffer->get_Facts()), call, iInfoCmd, NumberLog::silent);
    return error != GC_ERR_SUCCESS ? error : call.succeed(At{3419}, "Exit DSGetBufferPartInfo");
} catch (...) {
    return after_exception("DSGetBufferPartInfo");
}

} // namespace GenTL
