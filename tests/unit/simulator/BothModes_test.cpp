#include "zvgr/FrameStamp.h"

#include "unit/simulator/fixtures.h"

// The rules that streams of both modes obey while they run.

namespace {

using namespace zvsim_test;

INSTANTIATE_TEST_SUITE_P(BothModes, EitherMode, testing::Values(Mode::queued, Mode::cyclic), name_of_mode);

TEST_P(EitherMode, FramesCarryCounterChecksumIdsAndTime)
{
    uint64_t frames = 0;
    uint64_t last_time = ticks_now();
    keep_supplied();
    receiver.on_call = [&](uint64_t reported) {
        const auto stamp = zvgr::read_stamp(frame_memory(reported), frame_size);
        ASSERT_TRUE(stamp);
        EXPECT_TRUE(stamp->checksum_ok);
        EXPECT_EQ(frames, stamp->counter);
        uint64_t time = 0;
        if (mode == Mode::queued) {
            EXPECT_EQ(frames, buffer_info(reported, zv_buffer_frame_id));
            EXPECT_EQ(frames, buffer_info(reported, zv_buffer_image_id));
            time = buffer_info(reported, zv_buffer_timestamp);
            requeue(reported);
        } else {
            EXPECT_EQ(stream, reported);
            time = ring_frame_time(stream, ZVGR_StreamGetFrameIndex(stream));
        }
        EXPECT_GE(time, last_time);
        EXPECT_LE(time, ticks_now());
        last_time = time;
        ++frames;
    };
    acquire(200);
}

TEST_P(EitherMode, EndsAfterTheFramesAskedForAndCanBeStartedAgain)
{
    const uint64_t reports_of_end = mode == Mode::queued ? 1 : 0;
    keep_supplied();
    ASSERT_EQ(success, start(6));
    ASSERT_TRUE(receiver.wait_for(6 + reports_of_end));
    ASSERT_TRUE(becomes_true([this] { return !is_grabbing(camera); }));
    acquire(7 + 2 * reports_of_end, 1);
    EXPECT_EQ(7U, receiver.frames());
    EXPECT_EQ(2 * reports_of_end, receiver.ends());
}

TEST_P(EitherMode, AStartWhileRunningFails)
{
    const uint32_t other = create_stream(camera, mode);
    ASSERT_EQ(success, start());
    EXPECT_NE(success, start());
    EXPECT_NE(success, start_stream(other)) << "a camera serves one stream at a time";
    ASSERT_EQ(success, stop());
    EXPECT_EQ(success, start_stream(other));
    EXPECT_EQ(success, stop());
    EXPECT_EQ(success, start());
}

TEST_P(EitherMode, IsStartedByItsOwnCameraOnly)
{
    ASSERT_EQ(success, ZVGR_CameraOpen2(cameras[1], nullptr));
    EXPECT_NE(success, ZVGR_CameraStartAcquire_GenTL(cameras[1], stream, 0));
}

/// Three pictures of one kind, written before the library scans.
template <Pixels pixels>
class Pictures {
protected:
    Pictures()
    {
        for (unsigned number = 0; number < 3; ++number) {
            const TestPicture picture = test_picture(50, 30, pixels, number);
            write_png(m_folder.file(std::to_string(number) + ".png"), picture);
            expected.push_back(picture.in_memory());
        }
    }

    std::vector<std::vector<unsigned char>> expected;

private:
    Folder m_folder;
    Variable m_variable{"ZV_GRABBER_PICTURES", m_folder.path().string()};
};

template <Pixels pixels>
class PictureStream : private Pictures<pixels>, public EitherMode {
protected:
    void expect_the_pictures_in_a_loop(int64_t pixel_format)
    {
        uint64_t frames = 0;
        this->keep_supplied();
        this->receiver.on_call = [&](uint64_t reported) {
            const auto* const memory = this->frame_memory(reported);
            const auto& picture = this->expected[frames++ % 3];
            EXPECT_EQ(picture, std::vector<unsigned char>(memory, memory + picture.size()));
            if (this->mode == Mode::queued)
                requeue(reported);
        };
        EXPECT_EQ(pixel_format, ZVGR_GetCameraValueEnum(camera, "PixelFormat"));
        EXPECT_EQ(50, ZVGR_GetCameraValueInt(camera, "Width"));
        EXPECT_EQ(30, ZVGR_GetCameraValueInt(camera, "Height"));
        EXPECT_EQ(this->expected[0].size(), stream_info(stream, zv_stream_payload_now));
        this->acquire(7);
    }
};

using Pictures8 = PictureStream<Pixels::grey_8>;
using Pictures16 = PictureStream<Pixels::grey_16>;
using PicturesRgb = PictureStream<Pixels::rgb_8>;

INSTANTIATE_TEST_SUITE_P(BothModes, Pictures8, testing::Values(Mode::queued, Mode::cyclic), name_of_mode);
INSTANTIATE_TEST_SUITE_P(BothModes, Pictures16, testing::Values(Mode::queued, Mode::cyclic), name_of_mode);
INSTANTIATE_TEST_SUITE_P(BothModes, PicturesRgb, testing::Values(Mode::queued, Mode::cyclic), name_of_mode);

TEST_P(Pictures8, ArriveBitForBitInALoop) { expect_the_pictures_in_a_loop(0x01080001); }
TEST_P(Pictures16, ArriveBitForBitInALoop) { expect_the_pictures_in_a_loop(0x01100007); }
TEST_P(PicturesRgb, ArriveBitForBitInALoop) { expect_the_pictures_in_a_loop(0x02180014); }

} // namespace
