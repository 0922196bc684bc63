#include <cstdint>
#include <string>
#include <tuple>

#include "api/DS_modes.h"
#include "api/lines.h"

// What is special to DSGetBufferInfo among the info queries, the parts of a buffer and its chunks.

using namespace zvtest;

namespace {

class BufferInfo : public EitherStream {
protected:
    void SetUp() override
    {
        EitherStream::SetUp();
        queue(announce());
        start();
        forget();
    }

    uint64_t number(BUFFER_INFO_CMD command)
    {
        return buffer_info<uint64_t>(buffers[0]->handle, command).value;
    }
};

TEST_P(BufferInfo, KnowsTheLastFrameAlsoWhenTheBufferIsQueuedAgain)
{
    EXPECT_FALSE(is_new(*buffers[0]));
    EXPECT_EQ(0, buffer_info<bool8_t>(buffers[0]->handle, BUFFER_INFO_IMAGEPRESENT).value);
    EXPECT_EQ(0U, number(BUFFER_INFO_TIMESTAMP));
    EXPECT_EQ(0U, number(BUFFER_INFO_FRAMEID));
    EXPECT_EQ(buffer_size, number(BUFFER_INFO_SIZE_FILLED));

    deliver(*buffers[0], Frame{42, 7, 0, -1});
    queue(*buffers[0]);
    EXPECT_TRUE(is_new(*buffers[0]));
    EXPECT_EQ(42U, number(BUFFER_INFO_TIMESTAMP));
}

TEST_P(BufferInfo, LogsEveryCallOfAnAcquisition)
{
    for (int i = 0; i < 3; ++i) {
        forget();
        number(BUFFER_INFO_TIMESTAMP);
        EXPECT_LOG_LINES({Priority::trace, "Enter DSGetBufferInfo, info=3, stream handle=0x" + low_hex(ds) +
                                               ", buffer handle=0x" + low_hex(buffers[0]->handle)},
                         {Priority::trace, "Exit DSGetBufferInfo"});
    }
}

// Without traces the usual query is answered without going through the checks one by one.
TEST_P(BufferInfo, AnswersTheSameWhenTracesAreNotLogged)
{
    deliver(*buffers[0], Frame{42, 7, 0, -1});
    const BUFFER_HANDLE known = buffers[0]->handle;
    const auto ask = [](DS_HANDLE stream, BUFFER_HANDLE buffer, int32_t command, size_t size) {
        const auto info = query<uint64_t>(
            size, [&](auto... out) { return DSGetBufferInfo(stream, buffer, command, out...); });
        return std::tuple{info.code, info.type, info.value, info.size};
    };
    for (const DS_HANDLE stream : {ds, DS_HANDLE{known}, DS_HANDLE{nullptr}}) {
        for (const BUFFER_HANDLE buffer : {known, BUFFER_HANDLE{ds}, BUFFER_HANDLE{nullptr}}) {
            for (int32_t command = -1; command < 35; ++command) {
                for (const size_t size : {size_t{0}, size_t{3}, size_t{8}}) {
                    log.set_level(Priority::trace);
                    const auto logged = ask(stream, buffer, command, size);
                    log.set_level(Priority::debug);
                    EXPECT_EQ(logged, ask(stream, buffer, command, size)) << command << ", " << size;
                }
            }
        }
    }
    ASSERT_EQ(GC_ERR_SUCCESS, DSClose(ds));
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, std::get<0>(ask(ds, known, BUFFER_INFO_WIDTH, 8)));
}

TEST_P(BufferInfo, ChecksItsOutputsAlsoWhenTracesAreNotLogged)
{
    log.set_level(Priority::debug);
    const auto ask = [this](INFO_DATATYPE* type, void* value, size_t* size) {
        return DSGetBufferInfo(ds, buffers[0]->handle, BUFFER_INFO_WIDTH, type, value, size);
    };
    for (const uintptr_t missing : {uintptr_t{0}, UINTPTR_MAX}) {
        INFO_DATATYPE type = 0;
        uint64_t value = 0;
        size_t size = sizeof value;
        // NOLINTBEGIN(performance-no-int-to-ptr): what is not given may be all ones
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, ask(reinterpret_cast<INFO_DATATYPE*>(missing), &value, &size));
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, ask(&type, &value, reinterpret_cast<size_t*>(missing)));
        size = 0;
        EXPECT_EQ(GC_ERR_SUCCESS, ask(&type, reinterpret_cast<void*>(missing), &size));
        // NOLINTEND(performance-no-int-to-ptr)
        EXPECT_EQ(8U, size);
        EXPECT_EQ(INFO_DATATYPE_SIZET, type);
    }
}

INSTANTIATE_IN_BOTH_MODES(BufferInfo);

class BufferPart : public QueuedStream {
protected:
    /// A query that must stop before it answers.
    void expect_refused(GC_ERROR code, BUFFER_HANDLE handle, uint32_t part, BUFFER_PART_INFO_CMD command,
                        const ExpectedLine& reason)
    {
        SCOPED_TRACE(command);
        forget();
        const auto info = query<uint64_t>(
            8, [&](auto... out) { return DSGetBufferPartInfo(ds, handle, part, command, out...); });
        EXPECT_EQ(code, info.code);
        EXPECT_EQ(8U, info.size);
        EXPECT_TRUE(is_untouched(info.type));
        EXPECT_TRUE(is_untouched(info.value));
        EXPECT_LOG_LINES({Priority::debug, "Enter DSGetBufferPartInfo", "DSGetBufferPartInfo"}, reason);
    }
};

TEST_F(BufferPart, IsTheFirstOrNoneOfABuffer)
{
    const BUFFER_HANDLE buffer = announce().handle;
    const ExpectedLine invalid = FAILED_WITH(GC_ERR_INVALID_PARAMETER);
    expect_refused(GC_ERR_INVALID_PARAMETER, buffer, 1, BUFFER_PART_INFO_BASE, invalid);
    expect_refused(GC_ERR_INVALID_PARAMETER, buffer, 0xFFFFFFFFU, BUFFER_PART_INFO_BASE, invalid);
    expect_refused(GC_ERR_INVALID_PARAMETER, buffer, 1, 99, invalid);
    expect_refused(GC_ERR_INVALID_HANDLE, ds, 1, 99,
                   info_line("DSGetBufferPartInfo - GC_ERR_INVALID_HANDLE"));
}

class DSGetNumBufferParts : public QueuedStream {};

TEST_F(DSGetNumBufferParts, ReportsNoneForAnyBuffer)
{
    const Announced& buffer = announce();
    int stranger = 0;
    for (const BUFFER_HANDLE handle : {buffer.handle, BUFFER_HANDLE{nullptr}, BUFFER_HANDLE{&stranger}}) {
        forget();
        auto parts = untouched<uint32_t>();
        EXPECT_EQ(GC_ERR_SUCCESS, GenTL::DSGetNumBufferParts(ds, handle, &parts));
        EXPECT_EQ(0U, parts);
        EXPECT_LOG_LINES({Priority::debug, "Enter DSGetNumBufferParts", "DSGetNumBufferParts"},
                         {Priority::debug, "Exit DSGetNumBufferParts", "DSGetNumBufferParts"});
    }
}

class DSGetBufferChunkData : public OpenLibrary {};

TEST_F(DSGetBufferChunkData, IsNotImplementedWhateverTheArguments)
{
    auto chunks = untouched<size_t>();
    SINGLE_CHUNK_DATA data = {};
    int stranger = 0;
    EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, GenTL::DSGetBufferChunkData(nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED,
              GenTL::DSGetBufferChunkData(all_ones<DS_HANDLE>(), &stranger, all_ones<SINGLE_CHUNK_DATA*>(),
                                          all_ones<size_t*>()));
    forget();
    EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, GenTL::DSGetBufferChunkData(&stranger, &stranger, &data, &chunks));
    EXPECT_TRUE(is_untouched(chunks));
    EXPECT_LOG_LINES({Priority::information, "Enter DSGetBufferChunkData", "DSGetBufferChunkData"},
                     FAILED_WITH(GC_ERR_NOT_IMPLEMENTED));
}

} // namespace
