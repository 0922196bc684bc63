#include <cmath>
#include <limits>
#include <tuple>

#include <gmock/gmock.h>

#include "unit/simulator/configured_camera.h"

// The registers of a camera: what they hold, what they take and refuse, and access of any address and length.
// The URLs of the descriptions.

namespace {

using namespace zvsim_test;
using testing::ElementsAre;
using testing::StartsWith;

TEST_F(ConfiguredCamera, SaysWhoItIs)
{
    EXPECT_EQ("Test Maker", text("DeviceVendorName"));
    EXPECT_EQ("Test Camera", text("DeviceModelName"));
    EXPECT_EQ("T-1", text("DeviceSerialNumber"));
    EXPECT_EQ("2.3.4", text("DeviceVersion"));
    EXPECT_EQ("first", text("DeviceUserID"));
    EXPECT_EQ(2U, number("DeviceSFNCVersionMajor"));
    EXPECT_EQ(4U, number("DeviceSFNCVersionMinor"));
    EXPECT_EQ(0U, number("DeviceSFNCVersionSubMinor"));
}

class WrittenCamera : public ConfiguredCamera {
protected:
    /// Writes to every register what it holds, and 1 to commands.
    void expect_writable_registers(bool is_locked) const
    {
        EXPECT_EQ(is_locked ? 1U : 0U, number("ParametersAreLocked"));
        for (const RegisterPlace& place : camera_registers()) {
            const bool is_command = place.access == Access::command;
            const bool is_writable =
                place.access != Access::read && !(is_locked && place.access == Access::write_unlocked);
            const Transfer written =
                write_camera(camera, place.address, is_command ? bytes_of(1, 4) : bytes(place.name));
            EXPECT_EQ(is_writable, written.status == success) << place.name;
            EXPECT_EQ(is_writable ? place.length : 0, written.size) << place.name;
        }
    }
};

TEST_F(WrittenCamera, TakesValuesWhereItIsWritable) { expect_writable_registers(false); }

TEST_F(WrittenCamera, LocksWhatBuffersDependOnWhenAConsumerSaysSo)
{
    set("TLParamsLocked", 1);
    expect_writable_registers(true);
    set("TLParamsLocked", 0);
    set("Width", 32);
}

TEST_F(WrittenCamera, LocksWhatBuffersDependOnWhileItAcquires)
{
    ASSERT_EQ(success, start());
    EXPECT_EQ(0U, number("TLParamsLocked"));
    expect_writable_registers(true);
    ASSERT_EQ(success, stop());
    EXPECT_EQ(0U, number("ParametersAreLocked"));
    set("Width", 32);
}

TEST_F(ConfiguredCamera, CommandsAreDoneWhenTheyReturn)
{
    for (const RegisterPlace& place : camera_registers()) {
        if (place.access != Access::command)
            continue;
        set(place.name, 1);
        EXPECT_EQ(0U, number(place.name)) << place.name;
        for (const int refused : {0, 2, -1})
            expect_refused(place.name, refused);
    }
}

TEST_F(ConfiguredCamera, TakesIntegersUpToTheirLimits)
{
    const std::tuple<const char*, int, int> limits[] = {{"Width", 1, 66},
                                                        {"Height", 1, 50},
                                                        {"TestPattern", 0, 13},
                                                        {"AcquisitionMode", 0, 2},
                                                        {"AcquisitionFrameCount", 1, 65535},
                                                        {"AcquisitionFrameRateEnable", 0, 1},
                                                        {"TriggerSelector", 0, 0},
                                                        {"TriggerMode", 0, 1},
                                                        {"TriggerSource", 0, 2},
                                                        {"TriggerActivation", 0, 4},
                                                        {"TLParamsLocked", 0, 1}};
    for (const auto& [name, lowest, highest] : limits) {
        for (const int good : {highest, lowest}) {
            set(name, good);
            EXPECT_EQ(static_cast<uint64_t>(good), number(name)) << name;
        }
        for (const int bad : {highest + 1, lowest - 1, std::numeric_limits<int>::min()})
            expect_refused(name, bad);
    }
}

TEST_F(ConfiguredCamera, TakesNumbersUpToTheirLimits)
{
    const std::tuple<const char*, double, double> limits[] = {
        {"AcquisitionFrameRate", 0.001, 100000}, {"ExposureTime", 1, 10000000}, {"Gain", -12, 48}};
    for (const auto& [name, lowest, highest] : limits) {
        for (const double good : {highest, lowest, 17.25}) {
            set(name, good);
            EXPECT_EQ(good, real(name)) << name;
        }
        for (const double bad : {std::nextafter(highest, INFINITY), std::nextafter(lowest, -INFINITY),
                                 static_cast<double>(INFINITY), std::nan("")})
            expect_refused(name, bad);
    }
}

TEST_F(ConfiguredCamera, KeepsThePictureOnTheSensor)
{
    set_picture(60, 40, 6, 10);
    expect_refused("OffsetX", 7);
    expect_refused("OffsetY", 11);
    expect_refused("Width", 61);
    expect_refused("Height", 41);
    expect_refused("OffsetX", -1);
    set("OffsetX", 0);
    set("Width", 66);
    expect_refused("OffsetX", 1);
}

TEST_F(ConfiguredCamera, TakesSizesInStepsOfThePixelFormat)
{
    set("PixelFormat", bayer_rg8);
    EXPECT_EQ(2U, number("WidthIncrement"));
    EXPECT_EQ(2U, number("HeightIncrement"));
    set_picture(64, 48, 2, 2);
    for (const char* const name : {"Width", "Height", "OffsetX", "OffsetY"}) {
        expect_refused(name, 1);
        expect_refused(name, 33);
    }
    expect_refused("Width", 0);
}

TEST_F(ConfiguredCamera, FitsThePictureToANewPixelFormat)
{
    set_picture(43, 33, 23, 17);
    set("PixelFormat", yuv411);
    EXPECT_THAT(picture(), ElementsAre(40, 33, 20, 17));
    set("PixelFormat", bayer_rg8);
    EXPECT_THAT(picture(), ElementsAre(40, 32, 20, 16));
    set("PixelFormat", mono8);
    set_picture(1, 33, 65, 17);
    set("PixelFormat", yuv411);
    EXPECT_THAT(picture(), ElementsAre(4, 33, 60, 17)) << "no less than one step";
}

TEST_F(ConfiguredCamera, TakesThePixelFormatsThatItHas)
{
    for (const int code : {mono16, mono12p, bayer_rg8, yuv411, mono8}) {
        set("PixelFormat", code);
        EXPECT_EQ(static_cast<uint64_t>(code), number("PixelFormat"));
        EXPECT_EQ(static_cast<uint64_t>(code) >> 16U & 0xFFU, number("PixelSize"));
    }
    expect_refused("PixelFormat", 0x02180014); // RGB8, which it does not have
    expect_refused("PixelFormat", 0);
    expect_refused("PixelFormat", 0x101); // Mono8 in CoaXPress
}

TEST_F(ConfiguredCamera, AnotherOneNumbersPixelFormatsAsCoaXPressDoes)
{
    ASSERT_EQ(success, ZVGR_CameraOpen2(cameras[1], nullptr));
    const RegisterPlace& format = camera_register("PixelFormat");
    EXPECT_EQ(0x101U, number_from(read_camera(cameras[1], format.address, 4).bytes));
    EXPECT_EQ(success, write_camera(cameras[1], format.address, bytes_of(0x401, 4)).status);
    EXPECT_EQ(0x401, ZVGR_GetCameraValueEnum(cameras[1], "PixelFormat"));
    EXPECT_NE(success, write_camera(cameras[1], format.address, bytes_of(0x02180014, 4)).status);
    EXPECT_EQ(24, ZVGR_GetCameraValueEnum(cameras[1], "PixelSize"));
}

TEST_F(ConfiguredCamera, AUserNameMayFillItsRegisterAndNothingStaysBehindItsEnd)
{
    const std::string full(64, 'x');
    set("DeviceUserID", full);
    EXPECT_EQ(full, text("DeviceUserID"));
    for (const std::string& name : {std::string{""}, std::string{"ab\0cd", 5}}) {
        set("DeviceUserID", name);
        EXPECT_EQ(bytes_of(name.substr(0, 2), 64), bytes("DeviceUserID"));
    }
    EXPECT_EQ(success, write_camera(camera, camera_register("DeviceUserID").address, {'z', 0}).status);
    EXPECT_EQ(bytes_of("z", 64), bytes("DeviceUserID"));
}

TEST_F(ConfiguredCamera, LatchesTheTime)
{
    EXPECT_EQ(25000000U, number("TimestampTickFrequency"));
    EXPECT_EQ(0U, number("TimestampLatchValue"));
    const uint64_t before = ticks_now();
    set("TimestampLatch", 1);
    const uint64_t latched = number("TimestampLatchValue");
    EXPECT_LE(before, latched);
    EXPECT_GE(ticks_now(), latched);
    EXPECT_EQ(latched, number("TimestampLatchValue"));
    EXPECT_LE(latched, number("Timestamp"));
}

TEST_F(ConfiguredCamera, IsBetweenRoomTemperatureAndWarm)
{
    const double first = real("DeviceTemperature");
    EXPECT_GT(first, 20);
    EXPECT_LT(first, 45);
    EXPECT_LE(first, real("DeviceTemperature")) << "it warms up";
}

TEST_F(ConfiguredCamera, KeepsItsSettingsWhileItIsClosed)
{
    set("Width", 32);
    set("Gain", 6.5);
    set("PixelFormat", mono16);
    set("DeviceUserID", std::string{"second"});
    const std::vector<Bytes> before = everything();
    ASSERT_EQ(success, ZVGR_CameraClose(camera));
    ASSERT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
    EXPECT_EQ(before, everything());
    reopen();
    EXPECT_EQ(before, everything());
    EXPECT_EQ("second", text("DeviceUserID"));
}

TEST_F(ConfiguredCamera, ForgetsTheLockOfAConsumerThatHasGone)
{
    set("TLParamsLocked", 1);
    reopen();
    EXPECT_EQ(0U, number("TLParamsLocked"));
    set("TLParamsLocked", 1);
    ASSERT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
    EXPECT_EQ(1U, number("TLParamsLocked")) << "it had not been closed";
}

TEST_F(ConfiguredCamera, HasTheSettingsOfPowerOnWhenTheConfigurationIsReadAgain)
{
    set("Width", 32);
    reopen();
    EXPECT_EQ(32U, number("Width"));
    EXPECT_EQ(success, ZVGR_Close(grabber));
    {
        const Variable other_rate{"ZV_GRABBER_RATE", "99999"};
        scan();
    }
    open();
    EXPECT_EQ(66U, number("Width"));
}

// Places of camera registers.
constexpr uint64_t user_id = 0x1100;
constexpr uint64_t sensor_width = 0x2000;
constexpr uint64_t width = 0x2008;
constexpr uint64_t height_increment = 0x2028; // the last one before a gap
constexpr uint64_t gain = 0x4000;             // a gap behind it
constexpr uint64_t description = 0x10000000;
constexpr uint64_t statistics_reset = 0x2098; // of a grabber

struct ReadRow {
    const char* name;
    uint64_t address;
    uint32_t asked;
    uint32_t transferred;
    Bytes bytes;
};

const ReadRow read_rows[] = {
    {"ARegister", sensor_width, 4, 4, {0, 0, 0, 64}},
    {"PartOfARegister", sensor_width + 2, 2, 2, {0, 64}},
    {"SeveralRegisters", sensor_width + 3, 6, 6, {64, 0, 0, 0, 48, 0}},
    {"WhatLiesBeforeAGap", height_increment, 6, 4, {0, 0, 0, 1, 0xEE, 0xEE}},
    {"NoByteOfARegister", width, 0, 0, {}},
};

TEST_F(OpenCamera, ReadsTransferWhatIsThere)
{
    for (const ReadRow& row : read_rows) {
        const Transfer read = read_camera(camera, row.address, row.asked);
        EXPECT_EQ(success, read.status) << row.name;
        EXPECT_EQ(row.transferred, read.size) << row.name;
        EXPECT_EQ(row.bytes, read.bytes) << row.name;
    }
}

struct WriteRow {
    const char* name;
    uint64_t address;
    Bytes bytes;
    /// 0 for a write that fails.
    uint32_t transferred;
    /// What is there afterwards, from the address or from `read_from` on.
    Bytes expected;
    uint64_t read_from{address};
};

Bytes operator+(Bytes first, const Bytes& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

const WriteRow write_rows[] = {
    {"ARegister", width, {0, 0, 0, 32}, 4, {0, 0, 0, 32}},
    {"PartOfARegister", user_id + 2, {'X', 'Y'}, 2, {'a', 'b', 'X', 'Y', 'e', 'f', 0}, user_id},
    {"SeveralRegisters", width, {0, 0, 0, 32, 0, 0, 0, 16}, 8, {0, 0, 0, 32, 0, 0, 0, 16}},
    {"WhatLiesBeforeAGap", gain, bytes_of(6.0) + Bytes(12), 8, bytes_of(6.0)},
    {"NothingWhenOneRegisterRefuses", width, {0, 0, 0, 32, 0, 0, 0, 49}, 0, {0, 0, 0, 64, 0, 0, 0, 48}},
    {"NothingWhenItReachesAReadOnlyRegister", user_id, Bytes(68, 'x'), 0, {'a', 'b', 'c', 'd', 'e', 'f', 0}},
};

class BlockWrite : public OpenCamera, public testing::WithParamInterface<WriteRow> {};

INSTANTIATE_TEST_SUITE_P(Registers, BlockWrite, testing::ValuesIn(write_rows),
                         [](const auto& row) { return row.param.name; });

TEST_P(BlockWrite, Transfers)
{
    const WriteRow& row = GetParam();
    ASSERT_EQ(success, write_camera(camera, user_id, bytes_of("abcdef", 64)).status);
    const Transfer written = write_camera(camera, row.address, row.bytes);
    EXPECT_EQ(row.transferred != 0, written.status == success);
    EXPECT_EQ(row.transferred, written.size);
    EXPECT_EQ(row.expected,
              read_camera(camera, row.read_from, static_cast<uint32_t>(row.expected.size())).bytes);
}

TEST_F(OpenCamera, UnmappedAddressesFail)
{
    for (const uint64_t address :
         {uint64_t{0}, uint64_t{0xFFC}, uint64_t{0x1170}, uint64_t{0x202C}, uint64_t{0x4008},
          uint64_t{0x5010}, uint64_t{0x0FFFFFFF}, uint64_t{0x20000000}, uint64_t{0x100001000},
          uint64_t{0x100002008}, UINT64_MAX}) {
        const Transfer read = read_camera(camera, address, 4);
        EXPECT_NE(success, read.status) << address;
        EXPECT_EQ(0U, read.size) << address;
        EXPECT_EQ((Bytes{0xEE, 0xEE, 0xEE, 0xEE}), read.bytes) << address;
        const Transfer written = write_camera(camera, address, bytes_of(1, 4));
        EXPECT_NE(success, written.status) << address;
        EXPECT_EQ(0U, written.size) << address;
    }
}

TEST_F(OpenGrabber, UnmappedAddressesOfAGrabberFail)
{
    for (const uint64_t address : {0x0U, 0xFFCU, 0x10D0U, 0x1FFCU, 0x20A8U, 0x21A8U, 0x2200U, 0x20000000U}) {
        const Transfer read = read_grabber(grabber, address, 4);
        EXPECT_NE(success, read.status) << address;
        EXPECT_EQ(0U, read.size) << address;
        EXPECT_NE(success, write_grabber(grabber, address, bytes_of(1, 4)).status) << address;
    }
}

TEST_F(OpenCamera, ATransferOfNoBytesNeedsARegisterToo)
{
    EXPECT_EQ(success, write_camera(camera, width, {}).status);
    EXPECT_NE(success, read_camera(camera, 0, 0).status);
    EXPECT_NE(success, write_camera(camera, 0, {}).status);
}

TEST_F(OpenCamera, HugeSizesAreServedAsFarAsRegistersGo)
{
    Bytes bytes(8, 0xEE);
    uint32_t size = UINT32_MAX;
    EXPECT_EQ(success, ZVGR_CameraReadReg(camera, gain, bytes.data(), &size));
    EXPECT_EQ(8U, size);
}

TEST_F(OpenCamera, NullPointersFail)
{
    uint32_t word = 0;
    const auto expect_failures = [&](auto call, uint32_t handle, uint64_t address) {
        uint32_t size = 4;
        EXPECT_NE(success, call(handle, address, nullptr, &size));
        EXPECT_EQ(0U, size);
        EXPECT_NE(success, call(handle, address, &word, nullptr));
    };
    expect_failures(ZVGR_CameraReadReg, camera, width);
    expect_failures(ZVGR_CameraWriteReg, camera, width);
    expect_failures(ZVGR_GrabberReadReg, grabber, statistics_reset);
    expect_failures(ZVGR_GrabberWriteReg, grabber, statistics_reset);
}

TEST_F(OpenCamera, RegistersAreOutOfReachUnlessTheCameraIsOpen)
{
    ASSERT_EQ(success, ZVGR_CameraClose(camera));
    for (const uint32_t closed : cameras) { // one of them has been open
        const Transfer read = read_camera(closed, width, 4);
        EXPECT_NE(success, read.status);
        EXPECT_EQ(0U, read.size);
        EXPECT_NE(success, write_camera(closed, width, bytes_of(32, 4)).status);
    }
    ASSERT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
    EXPECT_EQ(success, read_camera(camera, width, 4).status);
}

TEST_F(QueuedStream, EveryHandleHasADescription)
{
    const Url of_camera{camera};
    EXPECT_EQ(success, of_camera.status);
    EXPECT_EQ(of_camera.text().size() + 1, of_camera.size);
    EXPECT_THAT(of_camera.text(), StartsWith("Local:ZV_Camera_SoftCam_CX_640.xml;10000000;"));
    EXPECT_EQ(of_camera.text(), Url{stream}.text());
    EXPECT_THAT(Url{grabber}.text(), StartsWith("Local:ZV_Grabber_Software_Grabber_CXP_2.xml;10000000;"));
}

TEST_F(OpenCamera, OneReadServesAWholeDescriptionThatCannotBeWritten)
{
    const uint32_t length = Url{camera}.length();
    for (const uint32_t asked : {length, length + 8}) {
        const Transfer read = read_camera(camera, description, asked);
        EXPECT_EQ(success, read.status);
        EXPECT_EQ(length, read.size);
        const std::string text{read.bytes.begin(), read.bytes.begin() + length};
        EXPECT_EQ(0U, text.rfind("<?xml", 0));
        EXPECT_NE(std::string::npos, text.find("</RegisterDescription>"));
    }
    const uint32_t of_grabber = Url{grabber}.length();
    EXPECT_EQ(of_grabber, read_grabber(grabber, description, of_grabber + 8).size);
    EXPECT_EQ(4U, read_camera(camera, description + length - 4, 8).size);
    EXPECT_NE(success, read_camera(camera, description + length, 4).status);
    const Transfer written = write_camera(camera, description, bytes_of(1, 4));
    EXPECT_NE(success, written.status);
    EXPECT_EQ(0U, written.size);
}

TEST_F(OpenGrabber, AUrlNeedsRoom)
{
    char url[zv_url_capacity] = "unchanged";
    const uint64_t needed = Url{grabber}.size;
    uint64_t size = needed - 1;
    EXPECT_NE(success, ZVGR_GetXmlUrl(grabber, url, &size));
    EXPECT_EQ(0U, size);
    EXPECT_STREQ("unchanged", url);
    size = sizeof url;
    EXPECT_NE(success, ZVGR_GetXmlUrl(grabber, nullptr, &size));
    EXPECT_NE(success, ZVGR_GetXmlUrl(grabber, url, nullptr));
    EXPECT_STREQ("unchanged", url);
    size = needed;
    EXPECT_EQ(success, ZVGR_GetXmlUrl(grabber, url, &size));
}

} // namespace
