#include <cmath>
#include <limits>
#include <tuple>

#include <gmock/gmock.h>

#include "unit/simulator/configured_camera.h"

// The registers of a camera: what they hold, what they take, and what they refuse.

namespace {

using namespace zvsim_test;
using testing::ElementsAre;

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

} // namespace
