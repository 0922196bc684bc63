#include <array>
#include <cstring>

#include <gmock/gmock.h>

#include "unit/simulator/faults.h"

namespace {

using namespace zvsim_test;
using testing::HasSubstr;
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
    bool has_kept_off() const
    {
        return std::all_of(memory.begin() + url_space, memory.end(), [](char c) { return c == '~'; });
    }
    /// The last field, or the one before it.
    uint64_t number(bool is_length) const
    {
        const std::string url = text();
        const size_t length = url.rfind(';');
        const size_t address = url.rfind(';', length - 1);
        return std::stoull(url.substr((is_length ? length : address) + 1), nullptr, 16);
    }
};

class FaultedAnswers : public Faulty {
protected:
    ZvCameraInfo info_with(const std::string& text)
    {
        fault(text);
        return camera_info(open_camera());
    }
    Url url_with(const std::string& text)
    {
        fault(text);
        return Url{open_camera()};
    }
    uint64_t length_without_fault()
    {
        plan("");
        const uint64_t length = Url{open_camera()}.number(true);
        close_all();
        return length;
    }
};

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
    ZvCameraInfo spoilt = info_with("kind: camera-texts-unterminated");
    close_all();
    const ZvCameraInfo good = info_with("kind: camera-texts-unterminated, when: {call: 99}");
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
    EXPECT_STREQ("", info_with("kind: camera-texts-empty").model_name);
}

TEST_F(FaultedAnswers, TextsOfACameraCanBeGarbage)
{
    const ZvCameraInfo info = info_with("kind: camera-texts-garbage");
    EXPECT_EQ(20u, strnlen(info.model_name, sizeof(info.model_name)));
    EXPECT_TRUE(std::any_of(info.model_name, info.model_name + 20, [](char c) { return (c & 0x80) != 0; }));
}

TEST_F(FaultedAnswers, AReadCanTransferLessThanItWasAskedFor)
{
    fault("kind: register-read-short, bytes: 2");
    std::array<unsigned char, 4> bytes{};
    uint32_t size = 4;
    EXPECT_EQ(success, ZVGR_CameraReadReg(open_camera(), 0x1000, bytes.data(), &size));
    EXPECT_EQ(2u, size);
}

TEST_F(FaultedAnswers, AWriteCanTransferLessThanItWasGiven)
{
    fault("kind: register-write-short, bytes: 0");
    uint32_t size = 4;
    EXPECT_EQ(success, ZVGR_CameraWriteReg(open_camera(), 0x1100, "new", &size));
    EXPECT_EQ(0u, size);
}

TEST_F(FaultedAnswers, ADescriptionCanBeGarbage)
{
    fault("kind: description-garbage");
    const uint32_t camera = open_camera();
    const Url url{camera};
    std::vector<unsigned char> bytes(url.number(true));
    auto size = static_cast<uint32_t>(bytes.size());
    EXPECT_EQ(success, ZVGR_CameraReadReg(camera, url.number(false), bytes.data(), &size));
    EXPECT_EQ(bytes.size(), size);
    EXPECT_NE("<?xml", std::string(bytes.begin(), bytes.begin() + 5));
}

TEST_F(FaultedAnswers, OtherRegistersAreNotGarbage)
{
    fault("kind: description-garbage");
    const uint32_t camera = open_camera();
    const Url url{camera};
    std::array<char, 64> bytes{};
    uint32_t size = sizeof(bytes);
    EXPECT_EQ(success, ZVGR_CameraReadReg(camera, 0x1000, bytes.data(), &size));
    EXPECT_STREQ("ZEVA Electronics", bytes.data());
}

TEST_F(FaultedAnswers, ADescriptionCanBeCutOff)
{
    const uint64_t length = length_without_fault();
    EXPECT_EQ(length - 40, url_with("kind: description-truncated, bytes: 40").number(true));
}

TEST_F(FaultedAnswers, ADescriptionIsCutToNoLessThanNothing)
{
    EXPECT_EQ(0u, url_with("kind: description-truncated, bytes: 100000000").number(true));
}

TEST_F(FaultedAnswers, ADescriptionCanClaimMoreThanThereIs)
{
    const uint64_t length = length_without_fault();
    fault("kind: description-huge, bytes: 4096");
    const uint32_t camera = open_camera();
    const Url url{camera};
    EXPECT_EQ(length + 4096, url.number(true));
    std::vector<unsigned char> bytes(length + 4096, 0xEE);
    auto size = static_cast<uint32_t>(bytes.size());
    ZVGR_CameraReadReg(camera, url.number(false), bytes.data(), &size);
    EXPECT_EQ(length, size);
    EXPECT_EQ(0xEE, bytes[length]);
}

TEST_F(FaultedAnswers, AUrlCanBeEmpty)
{
    const Url url = url_with("kind: url-empty");
    EXPECT_EQ(success, url.status);
    EXPECT_EQ("", url.text());
    EXPECT_EQ(1u, url.size);
}

TEST_F(FaultedAnswers, AUrlCanBeGarbage)
{
    const Url url = url_with("kind: url-garbage");
    EXPECT_EQ(success, url.status);
    EXPECT_THAT(url.text(), HasSubstr("not a URL"));
}

TEST_F(FaultedAnswers, AUrlCanBeAsLongAsItsMemory)
{
    const Url url = url_with("kind: url-too-long");
    EXPECT_EQ(259u, url.text().size());
    EXPECT_THAT(url.text(), StartsWith("Local:"));
    EXPECT_TRUE(url.has_kept_off());
}

TEST_F(FaultedAnswers, AUrlCanLackItsEndWithinItsMemory)
{
    const Url url = url_with("kind: url-unterminated");
    EXPECT_EQ(260u, url.text().size());
    EXPECT_EQ(260u, url.size);
    EXPECT_TRUE(url.has_kept_off());
}

TEST_F(FaultedAnswers, APayloadSizeCanBeWrong)
{
    fault("kind: payload-size-wrong, bytes: 77");
    const uint32_t stream = create_stream(open_camera());
    EXPECT_EQ(77u, stream_info(stream, zv_stream_payload_now));
    EXPECT_EQ(77u, stream_info(stream, zv_stream_payload_at_creation));
    EXPECT_EQ(64u, stream_info(stream, zv_stream_buffer_alignment)) << "is not a payload size";
}

TEST_F(FaultedAnswers, APayloadSizeCanBeZero)
{
    fault("kind: payload-size-zero, times: 1");
    const uint32_t stream = create_stream(open_camera());
    EXPECT_EQ(64u, stream_info(stream, zv_stream_buffer_alignment)) << "and this call does not count";
    EXPECT_EQ(0u, stream_info(stream, zv_stream_payload_now));
    EXPECT_EQ(frame_size, stream_info(stream, zv_stream_payload_now));
}

TEST_F(FaultedAnswers, APixelFormatCanBeUnknown)
{
    fault("kind: pixel-format-unknown, code: 12345");
    EXPECT_EQ(12345, ZVGR_GetCameraValueEnum(open_camera(), "PixelFormat"));
}

} // namespace
