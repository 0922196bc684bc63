#include <array>
#include <cstring>

#include <gmock/gmock.h>

#include "zvgr/FrameStamp.h"

#include "unit/simulator/configured_camera.h"
#include "unit/simulator/faults.h"

// Faults of calls that succeed with wrong results, and of frames.

namespace {

using namespace zvsim_test;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

using FaultedAnswers = Faulty;

TEST_F(FaultedAnswers, MoreGrabbersCanBeReportedThanThereAre)
{
    fault("kind: grabber-count-too-large, count: 50, times: 1");
    EXPECT_EQ(50u, scan());
    EXPECT_EQ(ZV_NO_HANDLE, ZVGR_Open(49));
    EXPECT_EQ(3u, scan());
}

TEST_F(FaultedAnswers, AProtocolOrAPixelFormatCanBeUnknown)
{
    plan("faults: [{kind: protocol-unknown, grabber: 1, protocol: 7}, {kind: pixel-format-unknown, code: "
         "12345}]");
    const uint32_t camera = open_camera();
    EXPECT_EQ(7u, protocol_of(1));
    EXPECT_EQ(12345, ZVGR_GetCameraValueEnum(camera, "PixelFormat"));
}

TEST_F(FaultedAnswers, MoreCamerasCanBeReportedThanFit)
{
    fault("kind: camera-count-too-large, count: 40");
    scan();
    const uint32_t grabber = open_grabber();
    std::array<uint32_t, 17> cameras{};
    uint32_t count = 16;
    EXPECT_EQ(success, ZVGR_UpdateCameraList(grabber, cameras.data(), &count));
    EXPECT_EQ(40u, count);
    EXPECT_EQ(0u, cameras[2]) << "there are two";
}

TEST_F(FaultedAnswers, TextsOfACameraCanLackTheirEndAndNothingElseChanges)
{
    const uint32_t camera = open_camera_with("kind: camera-texts-unterminated, times: 1");
    ZvCameraInfo spoilt = camera_info(camera);
    const ZvCameraInfo good = camera_info(camera);
    using Text = char(ZvCameraInfo::*)[65];
    for (const Text text : {&ZvCameraInfo::device_version, &ZvCameraInfo::vendor_name,
                            &ZvCameraInfo::model_name, &ZvCameraInfo::serial_number}) {
        EXPECT_EQ(std::string(65, 'x'), std::string(spoilt.*text, 65));
        std::memcpy(spoilt.*text, good.*text, 65);
    }
    EXPECT_EQ(0, std::memcmp(&spoilt, &good, sizeof(good)));
}

TEST_F(FaultedAnswers, TextsOfACameraCanBeEmptyOrGarbage)
{
    plan("faults: [{kind: camera-texts-empty, when: {call: 1}}, {kind: camera-texts-garbage, when: {call: "
         "2}}]");
    const uint32_t camera = open_camera();
    EXPECT_STREQ("", camera_info(camera).model_name);
    const ZvCameraInfo info = camera_info(camera);
    const std::string name{info.model_name, strnlen(info.model_name, sizeof(info.model_name))};
    EXPECT_EQ(20u, name.size());
    EXPECT_TRUE(std::any_of(name.begin(), name.end(), [](char c) { return (c & 0x80) != 0; }));
}

TEST_F(FaultedAnswers, AReadOrWriteCanTransferLessThanItWasAskedFor)
{
    plan("faults: [{kind: register-read-short, bytes: 2}, {kind: register-write-short, bytes: 0}]");
    const uint32_t camera = open_camera();
    const Transfer read = read_camera(camera, 0x1000, 4);
    EXPECT_EQ(success, read.status);
    EXPECT_EQ(2u, read.size);
    const Transfer written = write_camera(camera, 0x1100, {'n', 'e', 'w', 0});
    EXPECT_EQ(success, written.status);
    EXPECT_EQ(0u, written.size);
}

TEST_F(FaultedAnswers, ADescriptionCanBeGarbageAndOtherRegistersAreNot)
{
    const uint32_t camera = open_camera_with("kind: description-garbage");
    const Url url{camera};
    const Transfer read = read_camera(camera, url.address(), url.length());
    EXPECT_EQ(success, read.status);
    EXPECT_EQ(url.length(), read.size);
    EXPECT_THAT(text_from(read.bytes), Not(StartsWith("<?xml")));
    EXPECT_EQ("ZEVA Electronics", text_from(read_camera(camera, 0x1000, 64).bytes));
}

TEST_F(FaultedAnswers, ADescriptionCanBeCutOffToNoLessThanNothing)
{
    plan("faults: [{kind: description-truncated, bytes: 40, when: {call: 2}},"
         " {kind: description-truncated, bytes: 100000000, when: {call: 3}}]");
    const uint32_t camera = open_camera();
    const uint32_t length = Url{camera}.length();
    EXPECT_EQ(length - 40, Url{camera}.length());
    EXPECT_EQ(0u, Url{camera}.length());
}

TEST_F(FaultedAnswers, ADescriptionCanClaimMoreThanThereIs)
{
    const uint32_t camera = open_camera_with("kind: description-huge, bytes: 4096, when: {call: 2}");
    const uint32_t length = Url{camera}.length();
    const Url url{camera};
    EXPECT_EQ(length + 4096, url.length());
    const Transfer read = read_camera(camera, url.address(), length + 4096);
    EXPECT_EQ(length, read.size);
    EXPECT_EQ(0xEE, read.bytes[length]);
}

TEST_F(FaultedAnswers, AUrlCanBeEmptyGarbageOrTooLongWithinItsMemory)
{
    struct Row {
        const char* kind;
        testing::Matcher<std::string> text;
        uint64_t size;
    };
    const Row rows[] = {{"url-empty", "", 1},
                        {"url-garbage", HasSubstr("not a URL"), 21},
                        {"url-too-long", AllOf(SizeIs(259), StartsWith("Local:")), 260},
                        {"url-unterminated", SizeIs(260), 260}};
    for (const Row& row : rows) {
        const Url url{open_camera_with(std::string{"kind: "} + row.kind)};
        close_all();
        EXPECT_EQ(success, url.status) << row.kind;
        EXPECT_THAT(url.text(), row.text) << row.kind;
        EXPECT_EQ(row.size, url.size) << row.kind;
        EXPECT_THAT(std::vector<char>(url.memory.begin() + zv_url_capacity, url.memory.end()), Each('~'))
            << row.kind;
    }
}

TEST_F(FaultedAnswers, APayloadSizeCanBeWrong)
{
    const uint32_t stream = create_stream(open_camera_with("kind: payload-size-wrong, bytes: 77"));
    EXPECT_EQ(77u, stream_info(stream, zv_stream_payload_now));
    EXPECT_EQ(77u, stream_info(stream, zv_stream_payload_at_creation));
    EXPECT_EQ(64u, stream_info(stream, zv_stream_buffer_alignment)) << "is not a payload size";
}

TEST_F(FaultedAnswers, APayloadSizeCanBeZero)
{
    const uint32_t stream = create_stream(open_camera_with("kind: payload-size-zero, times: 1"));
    EXPECT_EQ(64u, stream_info(stream, zv_stream_buffer_alignment)) << "and this call does not count";
    EXPECT_EQ(0u, stream_info(stream, zv_stream_payload_now));
    EXPECT_EQ(frame_size, stream_info(stream, zv_stream_payload_now));
}

class FaultedFrames : public Faulty {
protected:
    /// Acquires `frames` frames, each into a buffer of its own, with one fault.
    std::unique_ptr<Acquired> acquired(const std::string& text, uint32_t frames)
    {
        auto acquired = std::make_unique<Acquired>(open_camera_with(text), frames + 2);
        acquired->run(frames + 1, frames);
        return acquired;
    }
};

TEST_F(FaultedFrames, HaveTheIdsThatTheFaultLeaves)
{
    const std::pair<const char*, std::vector<uint64_t>> rows[] = {
        {"kind: scan-fails, times: 1, when: {call: 99}", {0, 1, 2, 3}},
        {"kind: frame-dropped, when: {frame: 2, until: 3}", {0, 1, 4, 5}},
        {"kind: frame-dropped, when: {every: 2}", {0, 2, 4, 6}},
        {"kind: frame-duplicated, when: {frame: 1}", {0, 1, 1, 2}},
        {"kind: frame-duplicated, when: {frame: 1}", {0, 1}}, // too short for the duplicate
        {"kind: frames-out-of-order, when: {frame: 1}", {0, 2, 1, 3, 4}},
        {"kind: frames-out-of-order, when: {frame: 1, until: 2}", {0, 2, 1, 3, 4}},
        {"kind: frame-id-wrong, when: {frame: 1}, by: 100", {0, 101, 2}},
        {"kind: frame-id-jumps, when: {frame: 1}, by: 100", {0, 101, 102}},
    };
    for (const auto& [fault, ids] : rows) {
        const auto result = acquired(fault, static_cast<uint32_t>(ids.size()));
        close_all();
        EXPECT_EQ(ids, result->ids) << fault;
        EXPECT_EQ(1u, result->receiver.ends()) << fault;
    }
}

TEST_F(FaultedFrames, ATimeStampCanBeZeroOrGoBackwardsOnce)
{
    for (const char* const fault : {"kind: timestamp-zero, when: {frame: 1}",
                                    "kind: timestamp-backwards, when: {frame: 1}, ticks: 1000000000"}) {
        const auto times = acquired(fault, 3)->timestamps;
        close_all();
        EXPECT_LT(times[1], times[0]) << fault;
        EXPECT_GE(times[2], times[0]) << fault;
        EXPECT_EQ(fault == std::string{"kind: timestamp-zero, when: {frame: 1}"}, times[1] == 0);
    }
}

TEST_F(FaultedFrames, AJumpOfTheTimeStampIsForAllThatFollow)
{
    constexpr uint64_t jump = 1'000'000'000'000;
    const auto result = acquired("kind: timestamp-jumps, when: {frame: 1}, ticks: 1000000000000", 3);
    const uint64_t way = result->timestamps[1] - result->timestamps[0];
    EXPECT_GE(way, jump);
    EXPECT_LT(way, 2 * jump) << "it jumps once";
    EXPECT_GE(result->timestamps[2], result->timestamps[1]);
}

/// A frame that damages no more of its memory than it says, and than there is.
TEST_F(FaultedFrames, DamageStaysWithinTheBuffer)
{
    const std::pair<const char*, size_t> rows[] = {{"kind: frame-truncated, bytes: 100", frame_size},
                                                   {"kind: frame-corrupted, bytes: 100000", 100}};
    for (const auto& [fault, size] : rows) {
        std::vector<unsigned char> memory(frame_size, 0xEE);
        Acquired result{open_camera_with(fault), 0};
        queue_memory(result.stream, memory.data(), size);
        result.run(2, 1);
        close_all();
        EXPECT_NE(0xEE, memory[0]) << fault;
        EXPECT_THAT(std::vector<unsigned char>(memory.begin() + 100, memory.end()), Each(0xEE)) << fault;
        const auto stamp = zvgr::read_stamp(memory.data(), memory.size());
        EXPECT_FALSE(stamp && stamp->checksum_ok) << fault;
    }
}

TEST_F(FaultedFrames, HaveAStampThatDoesNotFitWhenCorrupted)
{
    const auto result = acquired("kind: frame-corrupted, when: {frame: 1}", 3);
    for (const size_t i : {size_t{0}, size_t{1}, size_t{2}}) {
        const auto stamp = zvgr::read_stamp(memory_of(result->buffers[i]), frame_size);
        ASSERT_TRUE(stamp);
        EXPECT_EQ(i != 1, stamp->checksum_ok) << i;
    }
}

TEST_F(FaultedFrames, CanBeReportedLaterAndDoNotHoldUpAStop)
{
    for (const std::string kind : {"kind: frame-late", "kind: callback-stalls"}) {
        const auto begin = std::chrono::steady_clock::now();
        const auto late = acquired(kind + ", time: 20 ms, when: {frame: 0}", 1);
        EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds{20}) << kind;
        EXPECT_THAT(late->ids, ElementsAre(0)) << kind;
        close_all();
        Acquired stopped{open_camera_with(kind + ", time: 10 min, when: {frame: 1}"), 3};
        stopped.run(1);
        EXPECT_THAT(stopped.ids, ElementsAre(0)) << kind;
        close_all();
    }
}

TEST_F(FaultedFrames, FillABufferAlsoWithoutACallback)
{
    Acquired result{open_camera_with("kind: callback-missing, when: {frame: 0}"), 3};
    result.run(3, 3);
    EXPECT_THAT(result.ids, ElementsAre(1, 2));
    EXPECT_EQ(0u, buffer_info(result.buffers[0], zv_buffer_frame_id));
    EXPECT_NE(0u, buffer_info(result.buffers[0], zv_buffer_timestamp));
}

TEST_F(FaultedFrames, AnAcquisitionCanEndEarlyAndBeStartedAgain)
{
    Acquired result{open_camera_with("kind: acquisition-ends-early, when: {frame: 1}, times: 1"), 4};
    result.run(2);
    EXPECT_THAT(result.receiver.reported, ElementsAre(result.buffers[0], 0));
    result.run(6, 3);
    EXPECT_THAT(result.ids, ElementsAre(0, 0, 1, 2));
}

TEST_F(FaultedFrames, AnAcquisitionThatNeverStartsCanBeStopped)
{
    Acquired result{open_camera_with("kind: acquisition-never-starts, times: 1"), 4};
    ASSERT_EQ(success, result.start(1));
    ASSERT_EQ(success, result.stop());
    EXPECT_THAT(result.ids, IsEmpty());
    result.run(2, 1);
    EXPECT_THAT(result.ids, ElementsAre(0));
}

TEST_F(FaultedFrames, OtherCamerasAreUntouched)
{
    fault("kind: frame-dropped, grabber: 0, camera: 1, when: {frame: 0}");
    scan();
    const auto cameras = cameras_of(open_grabber());
    for (const size_t index : {0U, 1U}) {
        ASSERT_EQ(success, ZVGR_CameraOpen2(cameras[index], nullptr));
        Acquired result{cameras[index], 2};
        result.run(3, 2);
        EXPECT_THAT(result.ids, ElementsAre(index, index + 1));
    }
}

TEST_F(FaultedFrames, AreThoseOfCyclicModeToo)
{
    const uint32_t camera = open_camera_with("kind: timestamp-zero, when: {frame: 1}");
    Receiver receiver;
    const uint32_t ring = create_stream(camera, Mode::cyclic, &receiver);
    ASSERT_EQ(success, ZVGR_CameraStartAcquire_GenTL(camera, ring, 3));
    ASSERT_TRUE(receiver.wait_for(3));
    EXPECT_NE(0u, ring_frame_time(ring, 0));
    EXPECT_EQ(0u, ring_frame_time(ring, 1));
    EXPECT_NE(0u, ring_frame_time(ring, 2));
    ASSERT_EQ(success, ZVGR_StreamDelete(ring));
}

} // namespace
