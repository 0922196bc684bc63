#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "api/DS_modes.h"

// What a buffer is told about its image when it is announced: geometry, pixel format and the settings that
// change them, as DSGetBufferInfo reports them.

using namespace zvtest;

namespace {

class BufferGeometry : public EitherStream {
protected:
    template <class T = uint64_t>
    T info_of_new_buffer(BUFFER_INFO_CMD command)
    {
        return buffer_info<T>(announce().handle, command).value;
    }

    uint64_t width() { return info_of_new_buffer(BUFFER_INFO_WIDTH); }
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
    fake.grabber_int("Width") = 640;
    fake.grabber_int("Height") = 480;
    announce();
    EXPECT_EQ((Calls{call("ZVGR_GetGrabberValueInt", stream(), "Width"),
                     call("ZVGR_GetGrabberValueInt", stream(), "Height"),
                     call("ZVGR_GetGrabberValueInt", stream(), "SegmentsPerBuffer"),
                     call("ZVGR_GetCameraValueInt", stream(), "OffsetX"),
                     call("ZVGR_GetCameraValueInt", stream(), "OffsetY"),
                     call("ZVGR_GetCameraValueEnum", stream(), "PixelFormat")}),
              queries());
}

TEST_P(BufferGeometry, IsAskedOfTheCameraWhereTheGrabberHasNone)
{
    fake.grabber_int("Height") = 0;
    fake.camera_int("Width") = 1920;
    fake.camera_int("Height") = 1080;
    const BUFFER_HANDLE buffer = announce().handle;
    EXPECT_EQ((Calls{call("ZVGR_GetGrabberValueInt", stream(), "Width"),
                     call("ZVGR_GetCameraValueInt", stream(), "Width"),
                     call("ZVGR_GetGrabberValueInt", stream(), "Height"),
                     call("ZVGR_GetCameraValueInt", stream(), "Height"),
                     call("ZVGR_GetGrabberValueInt", stream(), "SegmentsPerBuffer"),
                     call("ZVGR_GetCameraValueInt", stream(), "OffsetX"),
                     call("ZVGR_GetCameraValueInt", stream(), "OffsetY"),
                     call("ZVGR_GetCameraValueEnum", stream(), "PixelFormat")}),
              queries());
    EXPECT_EQ(1920U, buffer_info<size_t>(buffer, BUFFER_INFO_WIDTH).value);
    EXPECT_EQ(1080U, buffer_info<size_t>(buffer, BUFFER_INFO_HEIGHT).value);
}

TEST_P(BufferGeometry, ReadsItsSettingsInOrder)
{
    announce();
    EXPECT_EQ((std::vector<SettingsRead>{plain_read("GenTL.Buffer.SerializeBufferType", 1),
                                         plain_read("GenTL.Buffer.PixelFormatNameSpace", 1),
                                         override_read("GenTL.Buffer.PixelFormatNameSpace"),
                                         override_read("GenTL.Buffer.DeliveredImageHeight")}),
              settings.reads());
    EXPECT_FALSE(settings.stored("GenTL.Buffer.PixelFormatNameSpace-Overwrite").has_value());
    EXPECT_FALSE(settings.stored("GenTL.Buffer.DeliveredImageHeight-Overwrite").has_value());
}

TEST_P(BufferGeometry, ReadsSettingsAroundTheQueries)
{
    std::vector<std::pair<std::string, size_t>> reads_before;
    const auto note = [&](const Call& made) {
        reads_before.emplace_back(made.function + " " + made.arguments[1].text(), settings.reads().size());
    };
    for (const char* function :
         {"ZVGR_GetGrabberValueInt", "ZVGR_GetCameraValueInt", "ZVGR_GetCameraValueEnum"})
        fake.on(function, note);
    if (is_queued())
        fake.on("ZVGR_BufferAnnounce", [&](const Call&) { EXPECT_EQ(0U, settings.reads().size()); });
    fake.grabber_int("Width") = 1;
    fake.grabber_int("Height") = 1;
    announce();
    EXPECT_EQ((std::vector<std::pair<std::string, size_t>>{{"ZVGR_GetGrabberValueInt Width", 1},
                                                           {"ZVGR_GetGrabberValueInt Height", 1},
                                                           {"ZVGR_GetGrabberValueInt SegmentsPerBuffer", 1},
                                                           {"ZVGR_GetCameraValueInt OffsetX", 1},
                                                           {"ZVGR_GetCameraValueInt OffsetY", 1},
                                                           {"ZVGR_GetCameraValueEnum PixelFormat", 1}}),
              reads_before);
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

TEST_P(BufferGeometry, PrefersTheGrabbersDimensionsOverTheCameras)
{
    fake.camera_int("Width") = 4096;
    fake.camera_int("Height") = 2160;
    fake.grabber_int("Width") = 100;
    fake.grabber_int("Height") = 50;
    EXPECT_EQ(100U, width());
    EXPECT_EQ(50U, height());
    fake.grabber_int("Width") = -1;
    EXPECT_EQ(0xFFFFFFFFFFFFFFFFU, width()) << "a negative value is a value";
}

TEST_P(BufferGeometry, MultipliesTheHeightBySegments)
{
    fake.grabber_int("Height") = 1000;
    EXPECT_EQ(1000U, height());
    fake.grabber_int("SegmentsPerBuffer") = 4;
    EXPECT_EQ(4000U, height());
    EXPECT_EQ(4000U, delivered_height());
    fake.grabber_int("SegmentsPerBuffer") = 0;
    EXPECT_EQ(0U, height());
    EXPECT_EQ(0U, delivered_height());
}

TEST_P(BufferGeometry, MultipliesTheCamerasHeightToo)
{
    fake.camera_int("Height") = 1000;
    fake.grabber_int("SegmentsPerBuffer") = 3;
    EXPECT_EQ(3000U, height());
}

TEST_P(BufferGeometry, WrapsRoundInAnAbsurdMultiplication)
{
    fake.grabber_int("Height") = INT64_MAX - 1;
    fake.grabber_int("SegmentsPerBuffer") = 4;
    EXPECT_EQ(static_cast<uint64_t>(INT64_MAX - 1) * 4, height());
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
    queue(buffer);
    start();
    deliver(buffer);
    EXPECT_EQ(640U, buffer_info<size_t>(buffer.handle, BUFFER_INFO_WIDTH).value);
}

TEST_P(BufferGeometry, DeliversTheLow32BitsOfTheHeight)
{
    fake.grabber_int("Height") = 0x300000002;
    EXPECT_EQ(2U, delivered_height());
    EXPECT_EQ(0x300000002U, height());
}

TEST_P(BufferGeometry, DeliversTheHeightThatASettingGives)
{
    fake.grabber_int("Height") = 480;
    for (const auto& [setting, delivered] :
         {std::pair{0U, 0U}, {100U, 100U}, {0xFFFFFFFEU, 0xFFFFFFFEU}, {0xFFFFFFFFU, 480U}}) {
        SCOPED_TRACE(setting);
        settings.set_override("GenTL.Buffer.DeliveredImageHeight", setting);
        EXPECT_EQ(delivered, delivered_height());
        EXPECT_EQ(480U, height());
    }
}

TEST_P(BufferGeometry, TakesAnOverrideThatIsNotWrittenForNone)
{
    fake.grabber_int("Height") = 480;
    settings.set_override("GenTL.Buffer.DeliveredImageHeight", 7);
    settings.set_override("GenTL.Buffer.PixelFormatNameSpace", 7);
    settings.get_writes_nothing();
    const BUFFER_HANDLE buffer = announce().handle;
    EXPECT_EQ(480U, buffer_info<size_t>(buffer, BUFFER_INFO_DELIVERED_IMAGEHEIGHT).value);
    EXPECT_EQ(3U, buffer_info<uint64_t>(buffer, BUFFER_INFO_PIXELFORMAT_NAMESPACE).value);
}

TEST_P(BufferGeometry, TakesSettingsAsTheyAreAtEachAnnouncement)
{
    settings.set_override("GenTL.Buffer.DeliveredImageHeight", 7);
    const BUFFER_HANDLE first = announce().handle;
    settings.set_override("GenTL.Buffer.DeliveredImageHeight", 8);
    EXPECT_EQ(8U, delivered_height());
    EXPECT_EQ(7U, buffer_info<size_t>(first, BUFFER_INFO_DELIVERED_IMAGEHEIGHT).value);
}

TEST_P(BufferGeometry, MovesBuffersAlsoWithoutTheQueueLock)
{
    settings.set("GenTL.Buffer.SerializeBufferType", 0);
    const Announced& buffer = announce();
    queue(buffer);
    EXPECT_TRUE(is_in_input_pool(buffer));
    start();
    deliver(buffer);
    EXPECT_EQ(1U, num_await_delivery());
}

INSTANTIATE_IN_BOTH_MODES(BufferGeometry);

/// Codes of CoaXPress and of the Pixel Format Naming Convention for the same format.
struct FormatRow {
    uint32_t coaxpress;
    uint32_t pfnc;
};

const FormatRow formats[] = {
    {0x101, 0x1080001}, {0x102, 0x1100003}, {0x103, 0x1100005}, {0x104, 0x1100025}, {0x105, 0x1100007},
    {0x311, 0x1080008}, {0x312, 0x110000C}, {0x313, 0x1100010}, {0x314, 0x1100109}, {0x315, 0x110002E},
    {0x321, 0x1080009}, {0x322, 0x110000D}, {0x323, 0x1100011}, {0x324, 0x110010A}, {0x325, 0x110002F},
    {0x331, 0x108000A}, {0x332, 0x110000E}, {0x333, 0x1100012}, {0x334, 0x110010B}, {0x335, 0x1100030},
    {0x341, 0x108000B}, {0x342, 0x110000F}, {0x343, 0x1100013}, {0x344, 0x110010C}, {0x345, 0x1100031},
    {0x401, 0x2180014}, {0x402, 0x2300018}, {0x403, 0x230001A}, {0x404, 0x230005E}, {0x405, 0x2300033},
    {0x241, 0x2180021}, {0x242, 0x2300022}, {0x243, 0x2300023}, {0x245, 0x2300024}, {0x501, 0x2200016},
    {0x502, 0x240005F}, {0x503, 0x2400061}, {0x504, 0x2400063}, {0x505, 0x2400064}, {0x611, 0x20C001E},
    {0x621, 0x2100032}, {0x631, 0x2180020}, {0x721, 0x210003E}, {0x722, 0x220008D}, {0x723, 0x220008F},
    {0x821, 0x2100041}, {0x822, 0x2200095}, {0x823, 0x2200097},
};
static_assert(std::size(formats) == 48);

class PixelFormat : public QueuedStream {
protected:
    /// Announces a buffer of a camera with the format and expects what it reports.
    void expect_format(int64_t of_camera, uint64_t format, uint64_t name_space)
    {
        SCOPED_TRACE(of_camera);
        fake.camera_enum("PixelFormat") = of_camera;
        forget();
        const BUFFER_HANDLE buffer = announce().handle;
        EXPECT_EQ(format, buffer_info<uint64_t>(buffer, BUFFER_INFO_PIXELFORMAT).value);
        EXPECT_EQ(name_space, buffer_info<uint64_t>(buffer, BUFFER_INFO_PIXELFORMAT_NAMESPACE).value);
    }

    static std::string conversion_line(const FormatRow& row)
    {
        return "Camera Pixel Format was converted from CoaXPress 0x" + hex(row.coaxpress) + " to GenICam 0x" +
               hex(row.pfnc) + " standard format";
    }

    size_t num_conversions_logged()
    {
        size_t count = 0;
        for (const LogLine& line : log.lines())
            count += line.logger == "BufferModule" ? 1 : 0;
        return count;
    }

    void expect_unchanged(int64_t of_camera, uint64_t name_space)
    {
        expect_format(of_camera, static_cast<uint64_t>(of_camera), name_space);
        EXPECT_EQ(0U, num_conversions_logged());
    }
};

TEST_F(PixelFormat, IsConvertedByEveryRowOfTheTable)
{
    for (const FormatRow& row : formats) {
        expect_format(row.coaxpress, row.pfnc, 4);
        EXPECT_LOGGED(Priority::warning, conversion_line(row), "BufferModule::BufferModule", "BufferModule");
        EXPECT_EQ(1U, num_conversions_logged());
    }
}

TEST_F(PixelFormat, IsKeptWhereTheTableHasNoRow)
{
    for (const int64_t format : {0, 0x1, 0x100, 0x106, 0x244, 0x246, 0x316, 0x506, 0x824, 0xFFFF})
        expect_unchanged(format, 3);
    for (const int64_t format : {int64_t{0x10000}, int64_t{0x10101}, int64_t{0x01080001}, int64_t{0x80000101},
                                 int64_t{0x100000244}, INT64_MAX - 1, int64_t{-1}})
        expect_unchanged(format, 4);
}

TEST_F(PixelFormat, IsLookedUpByItsLow32Bits) { expect_format(0x500000101, 0x1080001, 4); }

TEST_F(PixelFormat, IsZeroWhenNotAvailable) { expect_format(ZV_NOT_AVAILABLE, 0, 3); }

TEST_F(PixelFormat, IsKeptWhenASettingSaysSo)
{
    settings.set("GenTL.Buffer.PixelFormatNameSpace", 0);
    expect_unchanged(0x101, 3);
    expect_unchanged(0x1080001, 4);
}

TEST_F(PixelFormat, IsConvertedForAnyOtherSetting)
{
    for (const uint32_t setting : {1U, 2U, 0xFFFFFFFFU}) {
        settings.set("GenTL.Buffer.PixelFormatNameSpace", setting);
        expect_format(0x101, 0x1080001, 4);
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

TEST_F(PixelFormat, HasTheNamespaceOfAnOverrideWithoutConversion)
{
    settings.set("GenTL.Buffer.PixelFormatNameSpace", 0);
    settings.set_override("GenTL.Buffer.PixelFormatNameSpace", 5);
    expect_format(0x101, 0x101, 5);
}

} // namespace
