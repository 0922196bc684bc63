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

bool is_in(const BufferFacts& buffer, FillState state) { return buffer.fill_state.get() == state; }

template <Geometry value>
InfoNumber geometry_size(const BufferFacts& buffer)
{
    return InfoNumber::sizet(buffer.get_Geometry(value));
}

template <Geometry value>
InfoNumber geometry_number(const BufferFacts& buffer)
{
    return InfoNumber::uint64(buffer.get_Geometry(value));
}

InfoNumber zero_size(const BufferFacts&) { return InfoNumber::sizet(0); }

InfoNumber memory_address(const BufferFacts& buffer) { return InfoNumber::ptr(buffer.memory.get()); }

constexpr NumberRow<BufferFacts> buffer_info[] = {
    {BUFFER_INFO_BASE, memory_address},
    {BUFFER_INFO_SIZE, geometry_size<Geometry::size>},
    {BUFFER_INFO_USER_PTR,
     [](const BufferFacts& buffer) { return InfoNumber::ptr(buffer.private_pointer.get()); }},
    {BUFFER_INFO_TIMESTAMP,
     [](const BufferFacts& buffer) { return InfoNumber::uint64(buffer.timestamp.get()); }},
    {BUFFER_INFO_NEW_DATA,
     [](const BufferFacts& buffer) { return InfoNumber::bool8(is_in(buffer, FillState::filled)); }},
    {BUFFER_INFO_IS_QUEUED,
     [](const BufferFacts& buffer) {
         return InfoNumber::bool8(buffer.queue.get() == BUFFER_QUEUE_TYPE::INPUT);
     }},
    {BUFFER_INFO_IS_ACQUIRING,
     [](const BufferFacts& buffer) { return InfoNumber::bool8(is_in(buffer, FillState::filling)); }},
    {BUFFER_INFO_IS_INCOMPLETE,
     [](const BufferFacts& buffer) { return InfoNumber::bool8(is_in(buffer, FillState::incomplete)); }},
    {BUFFER_INFO_TLTYPE, nullptr}, // no number: see write_transport_type
    {BUFFER_INFO_SIZE_FILLED, geometry_size<Geometry::data_size>},
    {BUFFER_INFO_WIDTH, geometry_size<Geometry::width>},
    {BUFFER_INFO_HEIGHT, geometry_size<Geometry::height>},
    {BUFFER_INFO_XOFFSET, geometry_size<Geometry::x_offset>},
    {BUFFER_INFO_YOFFSET, geometry_size<Geometry::y_offset>},
    {BUFFER_INFO_XPADDING, zero_size},
    {BUFFER_INFO_YPADDING, zero_size},
    {BUFFER_INFO_FRAMEID,
     [](const BufferFacts& buffer) { return InfoNumber::uint64(buffer.frame_id.get()); }},
    {BUFFER_INFO_IMAGEPRESENT,
     [](const BufferFacts& buffer) { return InfoNumber::bool8(is_in(buffer, FillState::filled)); }},
    {BUFFER_INFO_IMAGEOFFSET, zero_size},
    {BUFFER_INFO_PAYLOADTYPE, [](const BufferFacts&) { return InfoNumber::sizet(PAYLOAD_TYPE_IMAGE); }},
    {BUFFER_INFO_PIXELFORMAT, geometry_number<Geometry::pixel_format>},
    {BUFFER_INFO_PIXELFORMAT_NAMESPACE, geometry_number<Geometry::pixel_format_namespace>},
    {BUFFER_INFO_DELIVERED_IMAGEHEIGHT, geometry_size<Geometry::delivered_image_height>},
    {BUFFER_INFO_PIXEL_ENDIANNESS,
     [](const BufferFacts&) { return InfoNumber::int32(PIXELENDIANNESS_LITTLE); }},
    {BUFFER_INFO_DATA_SIZE, geometry_size<Geometry::data_size>},
    {BUFFER_INFO_DATA_LARGER_THAN_BUFFER,
     [](const BufferFacts& buffer) {
         return InfoNumber::bool8(buffer.get_Geometry(Geometry::data_size) >
                                  buffer.get_Geometry(Geometry::size));
     }},
    {BUFFER_INFO_CONTAINS_CHUNKDATA, [](const BufferFacts&) { return InfoNumber::bool8(false); }},
};

constexpr NumberRow<BufferFacts> buffer_part_info[] = {
    {BUFFER_PART_INFO_BASE, memory_address},
    {BUFFER_PART_INFO_DATA_SIZE, geometry_size<Geometry::size>},
};

/// Answers the usual query, for a number while nobody logs traces, as a consumer makes several per frame.
/// False when there is anything to refuse or to log: then nothing was done, and the checks say what.
bool answer_at_once(DS_HANDLE stream, BUFFER_HANDLE buffer, BUFFER_INFO_CMD command, INFO_DATATYPE* type,
                    void* destination, size_t* size)
{
    if (is_logged(api_logger, Priority::trace) || !is_initialised() || is_missing(type) ||
        is_missing(destination) || is_missing(size))
        return false;
    const auto* const row = find_row(buffer_info, command);
    const BufferFacts* const facts = find_facts(stream, buffer);
    if (row == nullptr || row->value == nullptr || facts == nullptr)
        return false;
    const InfoNumber number = row->value(*facts);
    if (facts->buffer.get() != buffer || *size < number.width)
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
{
    const ApiCall call{"DSGetBufferInfo", Priority::trace};
    call.log(At{3310}, "Enter DSGetBufferInfo, info=%d, stream handle=0x%X, buffer handle=0x%X", iInfoCmd,
             low32(hDataStream), low32(hBuffer));
    if (!call.library_is_open(At{3312}))
        return GC_ERR_NOT_INITIALIZED;
    const InfoOutput output{piType, pBuffer, piSize};
    if (output.is_malformed())
        return call.fail(At{3316}, GC_ERR_INVALID_PARAMETER);
    const auto* const row = find_row(buffer_info, iInfoCmd);
    const BufferFacts* const facts = find_facts(hDataStream, hBuffer);
    InfoNumber number{};
    if (facts != nullptr && row != nullptr && row->value != nullptr)
        number = row->value(*facts);
    if (facts == nullptr || facts->buffer.get() != hBuffer) { // or revoked meanwhile
        const auto stream = check_stream_handle(hDataStream, call, Open::required);
        if (!stream)
            return stream.error();
        call.log_error(At{3322}, "invalid buffer handle %016llX", address(hBuffer));
        return call.fail(At{3323}, GC_ERR_INVALID_HANDLE);
    }
    if (row == nullptr)
        return output.refuse(call, At{3328}, At{3329}, iInfoCmd);
    const GC_ERROR error = row->value != nullptr ? output.write(number, call, iInfoCmd, NumberLog::too_small)
                                                 : write_transport_type(call, output, *facts, iInfoCmd);
    return error != GC_ERR_SUCCESS ? error : call.succeed(At{3331}, "Exit DSGetBufferInfo");
}

} // namespace

GC_API DSGetBufferInfo(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, BUFFER_INFO_CMD iInfoCmd,
                       INFO_DATATYPE* piType, void* pBuffer, size_t* piSize)
try {
    if (answer_at_once(hDataStream, hBuffer, iInfoCmd, piType, pBuffer, piSize))
        return GC_ERR_SUCCESS;
    return get_buffer_info(hDataStream, hBuffer, iInfoCmd, piType, pBuffer, piSize);
} catch (...) {
    return after_exception("DSGetBufferInfo");
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
