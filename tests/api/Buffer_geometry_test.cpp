#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "api/DS_modes.h"

// What is recorded of an image when its buffer is announced: geometry, pixel format and the settings that
// change them, as DSGetBufferInfo reports them.

using namespace zvtest;

namespace {

class BufferGeometry : public EitherStream {
protected:
    uint64_t info_of_new_buffer(BUFFER_INFO_CMD command)
    {
        return buffer_info<uint64_t>(announce().handle, command).value;
    }
    uint64_t height() { return info_of_new_buffer(BUFFER_INFO_HEIGHT); }
    uint64_t delivered_height() { return info_of_new_buffer(BUFFER_INFO_DELIVERED_IMAGEHEIGHT); }

    /// The library's value queries since the last clear.
    Calls queries()
    {
        return fake.calls_of({"ZVGR_GetGrabberValueInt", "ZVGR_GetCameraValueInt", "ZVGR_GetGrabberValueEnum",
                              "ZVGR_GetCameraValueEnum"});
    }
};

TEST_P(BufferGeometry, IsAskedForInOrderWithTheStreamsHandle)
{
    const Call camera_width = call("ZVGR_GetCameraValueInt", stream(), "Width");
    const Call camera_height = call("ZVGR_GetCameraValueInt", stream(), "Height");
    const Calls without_camera = {call("ZVGR_GetGrabberValueInt", stream(), "Width"),
                                  call("ZVGR_GetGrabberValueInt", stream(), "Height"),
                                  call("ZVGR_GetGrabberValueInt", stream(), "SegmentsPerBuffer"),
                                  call("ZVGR_GetCameraValueInt", stream(), "OffsetX"),
                                  call("ZVGR_GetCameraValueInt", stream(), "OffsetY"),
                                  call("ZVGR_GetCameraValueEnum", stream(), "PixelFormat")};
    Calls with_camera = without_camera;
    with_camera.insert(with_camera.begin() + 2, camera_height);
    with_camera.insert(with_camera.begin() + 1, camera_width);

    fake.camera_int("Width") = 1920;
    fake.camera_int("Height") = 1080;
    fake.grabber_int("Height") = 0;
    const BUFFER_HANDLE buffer = announce().handle;
    EXPECT_EQ(with_camera, queries()) << "where the grabber has none";
    EXPECT_EQ(1920U, buffer_info<size_t>(buffer, BUFFER_INFO_WIDTH).value);
    EXPECT_EQ(1080U, buffer_info<size_t>(buffer, BUFFER_INFO_HEIGHT).value);

    fake.grabber_int("Width") = 640;
    fake.grabber_int("Height") = -1;
    forget();
    const BUFFER_HANDLE later = announce().handle;
    EXPECT_EQ(without_camera, queries());
    EXPECT_EQ(640U, buffer_info<size_t>(later, BUFFER_INFO_WIDTH).value);
    EXPECT_EQ(UINT64_MAX, buffer_info<size_t>(later, BUFFER_INFO_HEIGHT).value) << "-1 is a value";
}

TEST_P(BufferGeometry, ReadsOneSettingBeforeTheQueriesAndTheOthersAfterThem)
{
    const auto expect_one = [&](const Call& made) { EXPECT_EQ(1U, settings.reads().size()) << made; };
    for (const char* const function :
         {"ZVGR_GetGrabberValueInt", "ZVGR_GetCameraValueInt", "ZVGR_GetCameraValueEnum"})
        fake.on(function, expect_one);
    fake.on("ZVGR_BufferAnnounce", [&](const Call&) { EXPECT_EQ(0U, settings.reads().size()); });
    announce();
    EXPECT_EQ((std::vector<SettingsRead>{plain_read("GenTL.Buffer.SerializeBufferType", 1),
                                         plain_read("GenTL.Buffer.PixelFormatNameSpace", 1),
                                         override_read("GenTL.Buffer.PixelFormatNameSpace"),
                                         override_read("GenTL.Buffer.DeliveredImageHeight")}),
              settings.reads());
    EXPECT_FALSE(settings.stored("GenTL.Buffer.PixelFormatNameSpace-Overwrite").has_value());
    EXPECT_FALSE(settings.stored("GenTL.Buffer.DeliveredImageHeight-Overwrite").has_value());
}

TEST_P(BufferGeometry, IsZeroWhereNothingIsAvailable)
{
    const BUFFER_HANDLE buffer = announce().handle;
    for (const BUFFER_INFO_CMD command :
         {BUFFER_INFO_WIDTH, BUFFER_INFO_HEIGHT, BUFFER_INFO_XOFFSET, BUFFER_INFO_YOFFSET,
          BUFFER_INFO_PIXELFORMAT, BUFFER_INFO_DELIVERED_IMAGEHEIGHT})
        EXPECT_EQ(0U, buffer_info<uint64_t>(buffer, command).value) << command;
    EXPECT_EQ(3U, buffer_info<uint64_t>(buffer, BUFFER_INFO_PIXELFORMAT_NAMESPACE).value);
}

TEST_P(BufferGeometry, MultipliesTheHeightBySegments)
{
    fake.camera_int("Height") = 1000;
    EXPECT_EQ(1000U, height());
    fake.grabber_int("SegmentsPerBuffer") = 3;
    EXPECT_EQ(3000U, height());
    fake.grabber_int("Height") = 500;
    EXPECT_EQ(1500U, height());
    EXPECT_EQ(1500U, delivered_height());
    fake.grabber_int("SegmentsPerBuffer") = 0;
    EXPECT_EQ(0U, height());
    EXPECT_EQ(0U, delivered_height());
    fake.grabber_int("Height") = INT64_MAX - 1;
    fake.grabber_int("SegmentsPerBuffer") = 4;
    EXPECT_EQ(static_cast<uint64_t>(INT64_MAX - 1) * 4, height()) << "wraps round";
}

TEST_P(BufferGeometry, ReportsOffsetsOfTheCamera)
{
    fake.camera_int("OffsetX") = 16;
    fake.camera_int("OffsetY") = -2;
    fake.grabber_int("OffsetX") = 99;
    EXPECT_EQ(16U, info_of_new_buffer(BUFFER_INFO_XOFFSET));
    EXPECT_EQ(0xFFFFFFFFFFFFFFFEU, info_of_new_buffer(BUFFER_INFO_YOFFSET));
}

TEST_P(BufferGeometry, IsFixedWhenTheBufferIsAnnounced)
{
    fake.grabber_int("Width") = 640;
    const Announced& buffer = announce();
    fake.grabber_int("Width") = 800;
    settings.set_override("GenTL.Buffer.DeliveredImageHeight", 7);
    queue(buffer);
    start();
    deliver(buffer);
    EXPECT_EQ(640U, buffer_info<size_t>(buffer.handle, BUFFER_INFO_WIDTH).value);
    EXPECT_EQ(0U, buffer_info<size_t>(buffer.handle, BUFFER_INFO_DELIVERED_IMAGEHEIGHT).value);
}

TEST_P(BufferGeometry, DeliversTheHeightThatASettingGivesOrElseItsLow32Bits)
{
    fake.grabber_int("Height") = 0x300000002;
    for (const auto& [setting, delivered] :
         {std::pair{0U, 0U}, {100U, 100U}, {0xFFFFFFFEU, 0xFFFFFFFEU}, {0xFFFFFFFFU, 2U}}) {
        SCOPED_TRACE(setting);
        settings.set_override("GenTL.Buffer.DeliveredImageHeight", setting);
        EXPECT_EQ(delivered, delivered_height());
        EXPECT_EQ(0x300000002U, height());
    }
}

INSTANTIATE_IN_BOTH_MODES(BufferGeometry);

class PixelFormat : public QueuedStream {
protected:
    /// Announces a buffer of a camera with the format and expects what it reports, and the line about a
    /// conversion if there was one.
    void expect_format(int64_t of_camera, uint64_t format, uint64_t name_space)
    {
        SCOPED_TRACE(of_camera);
        fake.camera_enum("PixelFormat") = of_camera;
        forget();
        const BUFFER_HANDLE buffer = announce().handle;
        const std::string conversion = "Camera Pixel Format was converted from CoaXPress 0x" +
                                       hex(static_cast<uint32_t>(of_camera)) + " to GenICam 0x" +
                                       hex(format) + " standard format";
        if (format != static_cast<uint64_t>(of_camera) && of_camera != ZV_NOT_AVAILABLE)
            EXPECT_LOGGED(Priority::warning, conversion, "BufferModule::BufferModule", "BufferModule");
        else
            EXPECT_EQ(2U, log.lines().size()) << "more than enter and exit";
        EXPECT_EQ(format, buffer_info<uint64_t>(buffer, BUFFER_INFO_PIXELFORMAT).value);
        EXPECT_EQ(name_space, buffer_info<uint64_t>(buffer, BUFFER_INFO_PIXELFORMAT_NAMESPACE).value);
    }
};

// The rows of the table are those of PixelFormats.ConvertEveryCodeThatHasARowAndNoOther.
TEST_F(PixelFormat, IsConvertedFromCoaXPressByItsLow32Bits)
{
    for (const auto& [coaxpress, pfnc] : {std::pair{int64_t{0x101}, 0x1080001U},
                                          {0x341, 0x108000B},
                                          {0x404, 0x230005E},
                                          {0x823, 0x2200097},
                                          {0x500000101, 0x1080001}})
        expect_format(coaxpress, pfnc, 4);
}

TEST_F(PixelFormat, IsKeptWhereTheTableHasNoRow)
{
    for (const int64_t format : {0, 0x1, 0x100, 0x106, 0x244, 0x246, 0x316, 0x506, 0x824, 0xFFFF})
        expect_format(format, static_cast<uint64_t>(format), 3);
    for (const int64_t format : {int64_t{0x10000}, int64_t{0x10101}, int64_t{0x01080001}, int64_t{0x80000101},
                                 int64_t{0x100000244}, INT64_MAX - 1, int64_t{-1}})
        expect_format(format, static_cast<uint64_t>(format), 4);
    expect_format(ZV_NOT_AVAILABLE, 0, 3);
}

TEST_F(PixelFormat, IsKeptOnlyWhenASettingIsZero)
{
    settings.set("GenTL.Buffer.PixelFormatNameSpace", 0);
    expect_format(0x101, 0x101, 3);
    expect_format(0x1080001, 0x1080001, 4);
    settings.set_override("GenTL.Buffer.PixelFormatNameSpace", 5);
    expect_format(0x101, 0x101, 5);
    for (const uint32_t setting : {1U, 2U, 0xFFFFFFFFU}) {
        settings.set("GenTL.Buffer.PixelFormatNameSpace", setting);
        expect_format(0x101, 0x1080001, 5);
    }
}

TEST_F(PixelFormat, HasTheNamespaceThatAnOverrideGives)
{
    for (const uint32_t name_space : {0U, 1U, 3U, 7U, 0xFFFFFFFEU}) {
        settings.set_override("GenTL.Buffer.PixelFormatNameSpace", name_space);
        expect_format(0x101, 0x1080001, name_space);
        expect_format(0x244, 0x244, name_space);
    }
    settings.set_override("GenTL.Buffer.PixelFormatNameSpace", 0xFFFFFFFFU);
    expect_format(0x101, 0x1080001, 4);
}

} // namespace
