#include <array>
#include <cstring>

#include <gmock/gmock.h>

#include "unit/simulator/faults.h"
#include "unit/simulator/register_calls.h"

namespace {

using namespace zvsim_test;
using testing::AllOf;
using testing::Each;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

constexpr size_t url_space = 260;

/// A URL and what lies behind the memory that the library was given.
struct Url {
    std::array<char, url_space + 40> memory;
    uint64_t size{url_space};
    uint32_t status{0};

    explicit Url(uint32_t handle)
    {
        memory.fill('~');
        status = ZVGR_GetXmlUrl(handle, memory.data(), &size);
    }
    std::string text() const { return {memory.data(), strnlen(memory.data(), url_space)}; }
    uint64_t address() const { return field(2); }
    uint32_t length() const { return static_cast<uint32_t>(field(1)); }

private:
    /// Counted from the end.
    uint64_t field(int number) const
    {
        const std::string url = text();
        size_t at = std::string::npos;
        for (; number > 0; --number)
            at = url.rfind(';', at - 1);
        return std::stoull(url.substr(at + 1), nullptr, 16);
    }
};

using FaultedAnswers = Faulty;

TEST_F(FaultedAnswers, MoreGrabbersCanBeReportedThanThereAre)
{
    fault("kind: grabber-count-too-large, count: 50, times: 1");
    EXPECT_EQ(50u, scan());
    EXPECT_EQ(ZV_NO_HANDLE, ZVGR_Open(49));
    EXPECT_EQ(3u, scan());
}

TEST_F(FaultedAnswers, AProtocolCanBeUnknown)
{
    fault("kind: protocol-unknown, grabber: 1, protocol: 7");
    scan();
    EXPECT_EQ(7u, protocol_of(1));
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

TEST_F(FaultedAnswers, TextsOfACameraCanBeEmpty)
{
    EXPECT_STREQ("", camera_info(open_camera_with("kind: camera-texts-empty")).model_name);
}

TEST_F(FaultedAnswers, TextsOfACameraCanBeGarbage)
{
    const ZvCameraInfo info = camera_info(open_camera_with("kind: camera-texts-garbage"));
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
        EXPECT_THAT(std::vector<char>(url.memory.begin() + url_space, url.memory.end()), Each('~'))
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

TEST_F(FaultedAnswers, APixelFormatCanBeUnknown)
{
    const uint32_t camera = open_camera_with("kind: pixel-format-unknown, code: 12345");
    EXPECT_EQ(12345, ZVGR_GetCameraValueEnum(camera, "PixelFormat"));
}

} // namespace
