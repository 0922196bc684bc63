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

bool is_filled(const BufferModule& buffer) { return buffer.get_FillState() == FillState::filled; }

template <Geometry value>
InfoValue geometry_size(const BufferModule& buffer)
{
    return InfoValue::sizet(buffer.get_Geometry(value));
}

template <Geometry value>
InfoValue geometry_number(const BufferModule& buffer)
{
    return InfoValue::uint64(buffer.get_Geometry(value));
}

InfoValue zero_size(const BufferModule&) { return InfoValue::sizet(0); }

InfoValue memory_address(const BufferModule& buffer) { return InfoValue::ptr(buffer.get_Memory()); }

constexpr InfoRow<BufferModule> buffer_info[] = {
    {BUFFER_INFO_BASE, memory_address},
    {BUFFER_INFO_SIZE, geometry_size<Geometry::size>},
    {BUFFER_INFO_USER_PTR, [](const BufferModule& buffer) { return InfoValue::ptr(buffer.get_Private()); }},
    {BUFFER_INFO_TIMESTAMP,
     [](const BufferModule& buffer) { return InfoValue::uint64(buffer.get_Timestamp()); }},
    {BUFFER_INFO_NEW_DATA, [](const BufferModule& buffer) { return InfoValue::bool8(is_filled(buffer)); }},
    {BUFFER_INFO_IS_QUEUED,
     [](const BufferModule& buffer) {
         return InfoValue::bool8(buffer.get_Queue() == BUFFER_QUEUE_TYPE::INPUT);
     }},
    {BUFFER_INFO_IS_ACQUIRING,
     [](const BufferModule& buffer) {
         return InfoValue::bool8(buffer.get_FillState() == FillState::filling);
     }},
    {BUFFER_INFO_IS_INCOMPLETE,
     [](const BufferModule& buffer) {
         return InfoValue::bool8(buffer.get_FillState() == FillState::incomplete);
     }},
    {BUFFER_INFO_TLTYPE,
     [](const BufferModule& buffer) { return InfoValue::string(transport_type_of(buffer.get_Stream())); }},
    {BUFFER_INFO_SIZE_FILLED, geometry_size<Geometry::data_size>},
    {BUFFER_INFO_WIDTH, geometry_size<Geometry::width>},
    {BUFFER_INFO_HEIGHT, geometry_size<Geometry::height>},
    {BUFFER_INFO_XOFFSET, geometry_size<Geometry::x_offset>},
    {BUFFER_INFO_YOFFSET, geometry_size<Geometry::y_offset>},
    {BUFFER_INFO_XPADDING, zero_size},
    {BUFFER_INFO_YPADDING, zero_size},
    {BUFFER_INFO_FRAMEID, [](const BufferModule& buffer) { return InfoValue::uint64(buffer.get_FrameId()); }},
    {BUFFER_INFO_IMAGEPRESENT,
     [](const BufferModule& buffer) { return InfoValue::bool8(is_filled(buffer)); }},
    {BUFFER_INFO_IMAGEOFFSET, zero_size},
    {BUFFER_INFO_PAYLOADTYPE, [](const BufferModule&) { return InfoValue::sizet(PAYLOAD_TYPE_IMAGE); }},
    {BUFFER_INFO_PIXELFORMAT, geometry_number<Geometry::pixel_format>},
    {BUFFER_INFO_PIXELFORMAT_NAMESPACE, geometry_number<Geometry::pixel_format_namespace>},
    {BUFFER_INFO_DELIVERED_IMAGEHEIGHT, geometry_size<Geometry::delivered_image_height>},
    {BUFFER_INFO_PIXEL_ENDIANNESS,
     [](const BufferModule&) { return InfoValue::int32(PIXELENDIANNESS_LITTLE); }},
    {BUFFER_INFO_DATA_SIZE, geometry_size<Geometry::data_size>},
    {BUFFER_INFO_DATA_LARGER_THAN_BUFFER,
     [](const BufferModule& buffer) {
         return InfoValue::bool8(buffer.get_Geometry(Geometry::data_size) > buffer.get_Size());
     }},
    {BUFFER_INFO_CONTAINS_CHUNKDATA, [](const BufferModule&) { return InfoValue::bool8(false); }},
};

constexpr InfoRow<BufferModule> buffer_part_info[] = {
    {BUFFER_PART_INFO_BASE, memory_address},
    {BUFFER_PART_INFO_DATA_SIZE, geometry_size<Geometry::size>},
};

} // namespace

GC_API DSGetBufferInfo(DS_HANDLE hDataStream, BUFFER_HANDLE hBuffer, BUFFER_INFO_CMD iInfoCmd,
                       INFO_DATATYPE* piType, void* pBuffer, size_t* piSize)
try {
    const ApiCall call{"DSGetBufferInfo", Priority::trace};
    call.log(At{3310}, "Enter DSGetBufferInfo, info=%d, stream handle=0x%X, buffer handle=0x%X", iInfoCmd,
             low32(hDataStream), low32(hBuffer));
    if (!call.library_is_open(At{3312}))
        return GC_ERR_NOT_INITIALIZED;
    const InfoOutput output{piType, pBuffer, piSize};
    if (output.is_malformed())
        return call.fail(At{3316}, GC_ERR_INVALID_PARAMETER);
    const auto stream = check_stream_handle(hDataStream, call, Open::required);
    if (!stream)
        return stream.error();
    const PinnedBuffer buffer = stream->get_Buffers().find(hBuffer);
    if (!buffer) {
        call.log_error(At{3322}, "invalid buffer handle %016llX", address(hBuffer));
        return call.fail(At{3323}, GC_ERR_INVALID_HANDLE);
    }

    const auto* const row = find_row(buffer_info, iInfoCmd);
    if (row == nullptr)
        return output.refuse(call, At{3328}, At{3329}, iInfoCmd);
    const GC_ERROR error = output.write(row->value(*buffer), call, iInfoCmd, NumberLog::too_small);
    return error != GC_ERR_SUCCESS ? error : call.succeed(At{3331}, "Exit DSGetBufferInfo");
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
    const GC_ERROR error = output.write(row->value(*buffer), call, iInfoCmd, NumberLog::silent);
    return error != GC_ERR_SUCCESS ? error : call.succeed(At{3419}, "Exit DSGetBufferPartInfo");
} catch (...) {
    return after_exception("DSGetBufferPartInfo");
}

} // namespace GenTL
