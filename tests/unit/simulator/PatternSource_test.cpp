#include <vector>

#include <gtest/gtest.h>

#include "zvgr/FrameStamp.h"

#include "simulator/Devices.h"
#include "simulator/pictures/PatternSource.h"

namespace {

using zvsim::CameraDevice;
using zvsim::CameraModel;
using zvsim::Exposure;
using zvsim::GrabberModel;
using zvsim::PatternSource;

CameraModel camera_of(uint32_t width, uint32_t height, const char* format)
{
    CameraModel camera;
    camera.start.width = width;
    camera.start.height = height;
    camera.start.format = &zvsim::pixel_format(format);
    return camera;
}

Exposure exposure_of(uint64_t frame) { return {frame, zvsim::TestPattern::diagonal_ramp, 1}; }

std::vector<unsigned char> frame_of(const CameraModel& camera, uint64_t number)
{
    const GrabberModel grabber;
    const CameraDevice device{camera, grabber};
    std::vector<unsigned char> frame(static_cast<size_t>(device.payload()));
    PatternSource{device}.draw(exposure_of(number), frame.data(), frame.size());
    return frame;
}

TEST(PatternSource, EightBitRampMovesAlongTheDiagonal)
{
    const CameraModel camera = camera_of(300, 7, "Mono8");
    for (const uint64_t number : {uint64_t{0}, uint64_t{3}, uint64_t{255}, uint64_t{256}, UINT64_MAX}) {
        const auto frame = frame_of(camera, number);
        for (size_t at = zvgr::frame_stamp_size; at < frame.size(); ++at) {
            const size_t expected = (number + at / 300 + at % 300) & 0xFF;
            ASSERT_EQ(expected, frame[at]) << "frame " << number << ", byte " << at;
        }
    }
}

TEST(PatternSource, SixteenBitRampIsLittleEndianAndUsesBothBytes)
{
    const CameraModel camera = camera_of(1100, 5, "Mono16");
    for (const uint64_t number : {uint64_t{0}, uint64_t{5}, uint64_t{1023}, uint64_t{1024}}) {
        const auto frame = frame_of(camera, number);
        for (size_t at = zvgr::frame_stamp_size; at < frame.size(); at += 2) {
            const size_t pixel = at / 2;
            const size_t expected = (number + pixel / 1100 + pixel % 1100) * 64 & 0xFFFF;
            ASSERT_EQ(expected, frame[at] + 256U * frame[at + 1]) << "frame " << number << ", byte " << at;
        }
    }
}

TEST(PatternSource, CarriesTheFrameNumber)
{
    for (const char* const format : {"Mono8", "Mono16", "RGB8"}) {
        const auto frame = frame_of(camera_of(33, 9, format), 0x1234567890);
        const auto stamp = zvgr::read_stamp(frame.data(), frame.size());
        ASSERT_TRUE(stamp);
        EXPECT_EQ(0x1234567890U, stamp->counter);
        EXPECT_TRUE(stamp->checksum_ok);
    }
}

TEST(PatternSource, OfAPictureTooSmallForAStampIsThePlainRamp)
{
    const auto frame = frame_of(camera_of(4, 2, "Mono8"), 10);
    EXPECT_EQ((std::vector<unsigned char>{10, 11, 12, 13, 11, 12, 13, 14}), frame);
}

TEST(PatternSource, WithoutAStampBeginsWithThePattern)
{
    CameraModel camera = camera_of(64, 2, "Mono8");
    camera.has_stamp = false;
    const auto frame = frame_of(camera, 7);
    EXPECT_FALSE(zvgr::read_stamp(frame.data(), frame.size()));
    EXPECT_EQ(7, frame[0]);
    EXPECT_EQ(38, frame[31]);
}

TEST(PatternSource, StaysWithinTheRoomThatItIsGiven)
{
    const CameraModel camera = camera_of(20, 10, "Mono8");
    const GrabberModel grabber;
    PatternSource source{CameraDevice{camera, grabber}};
    for (size_t room = 0; room <= 220; ++room) {
        std::vector<unsigned char> target(240, 0x5A);
        source.draw(exposure_of(1), target.data(), room);
        for (size_t at = std::min<size_t>(room, 200); at < target.size(); ++at)
            ASSERT_EQ(0x5A, target[at]) << "room " << room << ", byte " << at;
        const auto stamp = zvgr::read_stamp(target.data(), room);
        EXPECT_EQ(room >= zvgr::frame_stamp_size, stamp.has_value());
        EXPECT_EQ(room >= 200, stamp && stamp->checksum_ok);
    }
}

} // namespace
