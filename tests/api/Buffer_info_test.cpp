#include <string>

#include "api/DS_modes.h"

// What is special to DSGetBufferInfo among the info queries: which buffer it finds, and what changes with
// frames.

using namespace zvtest;

namespace {

constexpr uint64_t timestamp = 0xFEDCBA9876543210U;

class BufferInfo : public EitherStream {
protected:
    void SetUp() override
    {
        EitherStream::SetUp();
        buffer = &announce();
        forget();
    }

    void deliver_frame()
    {
        queue(*buffer);
        start();
        deliver(*buffer, Frame{timestamp, 7, 0, -1});
    }

    bool flag(BUFFER_INFO_CMD command) { return buffer_info<bool8_t>(buffer->handle, command).value != 0; }
    uint64_t number(BUFFER_INFO_CMD command) { return buffer_info<uint64_t>(buffer->handle, command).value; }

    std::string enter_line(BUFFER_INFO_CMD command, BUFFER_HANDLE handle) const
    {
        return "Enter DSGetBufferInfo, info=" + std::to_string(command) + ", stream handle=0x" + low_hex(ds) +
               ", buffer handle=0x" + low_hex(handle);
    }

    Announced* buffer{nullptr};
};

TEST_P(BufferInfo, KnowsNoFrameOfANewBuffer)
{
    EXPECT_FALSE(flag(BUFFER_INFO_NEW_DATA));
    EXPECT_FALSE(flag(BUFFER_INFO_IMAGEPRESENT));
    EXPECT_EQ(0U, number(BUFFER_INFO_TIMESTAMP));
    EXPECT_EQ(0U, number(BUFFER_INFO_FRAMEID));
    EXPECT_EQ(buffer_size, number(BUFFER_INFO_SIZE_FILLED));
}

TEST_P(BufferInfo, KnowsWhetherABufferIsQueued)
{
    EXPECT_FALSE(flag(BUFFER_INFO_IS_QUEUED));
    queue(*buffer);
    EXPECT_TRUE(flag(BUFFER_INFO_IS_QUEUED));
}

TEST_P(BufferInfo, KeepsTheFrameOfABufferThatIsQueuedAgain)
{
    deliver_frame();
    queue(*buffer);
    EXPECT_TRUE(flag(BUFFER_INFO_NEW_DATA));
    EXPECT_EQ(timestamp, number(BUFFER_INFO_TIMESTAMP));
}

TEST_P(BufferInfo, KnowsWhetherABufferIsBeingFilled)
{
    bool is_acquiring = false;
    bool is_new = true;
    const char* const within = is_queued() ? "ZVGR_BufferGetInfo" : "ZVGR_StreamGetAux";
    fake.on(within, [&](const Call&) {
        is_acquiring = flag(BUFFER_INFO_IS_ACQUIRING);
        is_new = flag(BUFFER_INFO_NEW_DATA);
    });
    deliver_frame();
    EXPECT_TRUE(is_acquiring);
    EXPECT_FALSE(is_new);
}

TEST_P(BufferInfo, LogsEveryCallOfAnAcquisition)
{
    deliver_frame();
    forget();
    for (int i = 0; i < 3; ++i)
        buffer_info<size_t>(buffer->handle, BUFFER_INFO_SIZE);
    EXPECT_EQ(3U, times_logged(enter_line(BUFFER_INFO_SIZE, buffer->handle)));
    EXPECT_EQ(3U, times_logged("Exit DSGetBufferInfo"));
}

INSTANTIATE_IN_BOTH_MODES(BufferInfo);

class BufferInfoOfTwoStreams : public TwoStreams {};

TEST_F(BufferInfoOfTwoStreams, RefusesABufferOfTheOther)
{
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, buffer_info<size_t>(announce_on_other(), BUFFER_INFO_SIZE).code);
}

} // namespace
