#include <string>

#include "api/DS_modes.h"

// DSGetNumBufferParts, DSGetBufferPartInfo and DSGetBufferChunkData.

using namespace zvtest;

namespace {

class BufferPart : public QueuedStream {
protected:
    void SetUp() override
    {
        QueuedStream::SetUp();
        buffer = &announce(5000);
        forget();
    }

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

    const ExpectedLine invalid_parameter{Priority::error,
                                         "Exit, Returning error GC_ERR_INVALID_PARAMETER (0xFFFFFC0F)",
                                         "DSGetBufferPartInfo"};

    Announced* buffer{nullptr};
};

TEST_F(BufferPart, IsTheFirstOrNone)
{
    expect_refused(GC_ERR_INVALID_PARAMETER, buffer->handle, 1, BUFFER_PART_INFO_BASE, invalid_parameter);
    expect_refused(GC_ERR_INVALID_PARAMETER, buffer->handle, 0xFFFFFFFFU, BUFFER_PART_INFO_BASE,
                   invalid_parameter);
    expect_refused(GC_ERR_INVALID_PARAMETER, buffer->handle, 1, 99, invalid_parameter);
}

TEST_F(BufferPart, LooksAtTheBufferBeforeThePart)
{
    expect_refused(GC_ERR_INVALID_HANDLE, ds, 1, 99,
                   {Priority::information, "DSGetBufferPartInfo - GC_ERR_INVALID_HANDLE"});
}

class BufferPartOfTwoStreams : public TwoStreams {};

TEST_F(BufferPartOfTwoStreams, MayBelongToTheOther)
{
    const BUFFER_HANDLE foreign = announce_on_other();
    const auto info = query<uint64_t>(8, [&](auto... out) {
        return DSGetBufferPartInfo(ds, foreign, 0, BUFFER_PART_INFO_DATA_SIZE, out...);
    });
    EXPECT_EQ(GC_ERR_SUCCESS, info.code);
    EXPECT_EQ(64U, info.value);
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
                     {Priority::error, "Exit, Returning error GC_ERR_NOT_IMPLEMENTED (0xFFFFFC15)",
                      "DSGetBufferChunkData"});
}

} // namespace
