#include "unit/simulator/fixtures.h"
#include "unit/simulator/picture_files.h"

namespace {

using namespace zvsim_test;

constexpr uint32_t success = zv_success;

/// Three pictures of one kind, written before the library scans.
class Pictures {
protected:
    explicit Pictures(Pixels pixels)
    {
        for (unsigned number = 0; number < 3; ++number) {
            pictures.push_back(test_picture(50, 30, pixels, number));
            write_png(m_folder.file(std::to_string(number) + ".png"), pictures.back());
        }
    }

    const std::vector<unsigned char> expected(uint64_t frame) const
    {
        return pictures[frame % 3].in_memory();
    }

    std::vector<TestPicture> pictures;

private:
    Folder m_folder;
    Variable m_variable{"ZV_GRABBER_PICTURES", m_folder.path().string()};
};

template <Pixels pixels>
struct PicturesOf : Pictures {
    PicturesOf() : Pictures{pixels} {}
};

template <Pixels pixels>
class QueuedPictures : private PicturesOf<pixels>, public QueuedStream {
protected:
    void play()
    {
        uint64_t frames = 0;
        receiver.on_buffer = [&](uint64_t buffer) {
            const auto expected = this->expected(frames++);
            const std::vector<unsigned char> delivered(memory(buffer), memory(buffer) + expected.size());
            EXPECT_EQ(expected, delivered);
            ZVGR_BufferToQueue(buffer, zv_queue_input);
        };
        EXPECT_EQ(this->expected(0).size(), stream_info(stream, zv_stream_payload_now));
        queued();
        queued();
        ASSERT_EQ(success, start(stream));
        ASSERT_TRUE(receiver.wait_for(7));
        ASSERT_EQ(success, stop());
    }
};

using QueuedPictures8 = QueuedPictures<Pixels::grey_8>;
using QueuedPictures16 = QueuedPictures<Pixels::grey_16>;
using QueuedPicturesRgb = QueuedPictures<Pixels::rgb_8>;

TEST_F(QueuedPictures8, ArriveBitForBitInALoop)
{
    EXPECT_EQ(0x01080001, ZVGR_GetCameraValueEnum(camera, "PixelFormat"));
    EXPECT_EQ(50, ZVGR_GetCameraValueInt(camera, "Width"));
    EXPECT_EQ(30, ZVGR_GetCameraValueInt(camera, "Height"));
    play();
}

TEST_F(QueuedPictures16, ArriveBitForBitInALoop)
{
    EXPECT_EQ(0x01100007, ZVGR_GetCameraValueEnum(camera, "PixelFormat"));
    play();
}

TEST_F(QueuedPicturesRgb, ArriveBitForBitInALoop)
{
    EXPECT_EQ(0x02180014, ZVGR_GetCameraValueEnum(camera, "PixelFormat"));
    play();
}

class CyclicPictures : private PicturesOf<Pixels::grey_16>, public CyclicStream {
protected:
    using PicturesOf<Pixels::grey_16>::expected;
};

TEST_F(CyclicPictures, ArriveBitForBitInALoop)
{
    uint64_t frames = 0;
    receiver.on_frame = [&](uint32_t handle) {
        const auto wanted = expected(frames++);
        const auto* const memory =
            static_cast<const unsigned char*>(ZVGR_StreamGetPtr(handle, ZVGR_StreamGetFrameIndex(handle)));
        EXPECT_EQ(wanted, std::vector<unsigned char>(memory, memory + wanted.size()));
    };
    ASSERT_EQ(success, start(stream));
    ASSERT_TRUE(receiver.wait_for(7));
    ASSERT_EQ(success, stop());
}

TEST_F(OpenCamera, KeepsItsConfigurationUntilNothingIsOpen)
{
    uint32_t stream = 0;
    uint32_t count = 0;
    const Variable other_size{"ZV_GRABBER_SIZE", "10x20"};
    ASSERT_EQ(success, ZV_DeviceScan(&count));
    ASSERT_EQ(success, ZVGR_StreamCreate(camera, &stream, 0));
    EXPECT_EQ(64U * 48U, stream_info(stream, zv_stream_payload_now));
    ASSERT_EQ(success, ZVGR_Close(grabber));
    ASSERT_EQ(success, ZV_DeviceScan(&count));

    const uint32_t again = ZVGR_Open(coaxpress);
    uint32_t camera_again = 0;
    uint32_t room = 1;
    ASSERT_EQ(success, ZVGR_UpdateCameraList(again, &camera_again, &room));
    EXPECT_EQ(10, ZVGR_GetCameraValueInt(camera_again, "Width"));
    EXPECT_EQ(20, ZVGR_GetCameraValueInt(camera_again, "Height"));
    EXPECT_EQ(success, ZVGR_Close(again));
}

} // namespace
