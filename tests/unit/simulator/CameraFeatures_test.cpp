#include <cmath>
#include <limits>
#include <set>

#include "unit/simulator/configured_camera.h"

// The registers of a camera: what they hold, what they take, and what they refuse.

namespace {

using namespace zvsim_test;

constexpr int mono8 = 0x01080001;
constexpr int mono16 = 0x01100007;
constexpr int mono12p = 0x010C0047;
constexpr int bayer_rg8 = 0x01080009;
constexpr int yuv411 = 0x020C001E;

const std::set<std::string> commands{"TimestampLatch", "AcquisitionStart", "AcquisitionStop",
                                     "TriggerSoftware"};

const std::set<std::string> writable{"DeviceUserID",
                                     "Width",
                                     "Height",
                                     "OffsetX",
                                     "OffsetY",
                                     "PixelFormat",
                                     "TestPattern",
                                     "AcquisitionMode",
                                     "AcquisitionFrameCount",
                                     "ExposureTime",
                                     "Gain",
                                     "AcquisitionFrameRate",
                                     "TriggerSelector",
                                     "TriggerMode",
                                     "TriggerSource",
                                     "AcquisitionFrameRateEnable",
                                     "TLParamsLocked",
                                     "TimestampLatch",
                                     "TriggerSoftware",
                                     "AcquisitionStart",
                                     "AcquisitionStop",
                                     "TriggerActivation"};

const std::set<std::string> locked{
    "Width", "Height", "OffsetX", "OffsetY", "PixelFormat", "AcquisitionMode", "AcquisitionFrameCount"};

std::string text(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

std::string padded(std::string name)
{
    name.resize(64);
    return name;
}

TEST_F(ConfiguredCamera, SaysWhoItIs)
{
    EXPECT_EQ(padded("Test Maker"), text(bytes("DeviceVendorName")));
    EXPECT_EQ(padded("Test Camera"), text(bytes("DeviceModelName")));
    EXPECT_EQ(padded("T-1"), text(bytes("DeviceSerialNumber")));
    EXPECT_EQ(padded("2.3.4"), text(bytes("DeviceVersion")));
    EXPECT_EQ(padded("first"), text(bytes("DeviceUserID")));
    EXPECT_EQ(2U, number("DeviceSFNCVersionMajor"));
    EXPECT_EQ(4U, number("DeviceSFNCVersionMinor"));
    EXPECT_EQ(0U, number("DeviceSFNCVersionSubMinor"));
}

class WrittenCamera : public ConfiguredCamera {
protected:
    /// Writes to every register what it holds, and 1 to commands: exactly those of these names take it.
    void expect_writable(const std::set<std::string>& names) const
    {
        for (const RegisterPlace& place : camera_registers()) {
            const Bytes value = commands.count(place.name) != 0 ? bytes_of(1, 4) : bytes(place.name);
            const Transfer written = write_camera(camera, place.address, value);
            const bool is_writable = names.count(place.name) != 0;
            EXPECT_EQ(is_writable, written.status == success) << place.name;
            EXPECT_EQ(is_writable ? place.length : 0, written.size) << place.name;
        }
    }
    void expect_lock() const
    {
        EXPECT_EQ(1U, number("ParametersAreLocked"));
        std::set<std::string> names = writable;
        for (const std::string& name : locked)
            names.erase(name);
        expect_writable(names);
    }
};

TEST_F(WrittenCamera, TakesValuesWhereItIsWritable) { expect_writable(writable); }

TEST_F(WrittenCamera, LocksWhatBuffersDependOnWhenAConsumerSaysSo)
{
    EXPECT_EQ(0U, number("ParametersAreLocked"));
    set("TLParamsLocked", 1);
    expect_lock();
    set("TLParamsLocked", 0);
    set("Width", 32);
}

TEST_F(WrittenCamera, LocksWhatBuffersDependOnWhileItAcquires)
{
    ASSERT_EQ(success, start());
    EXPECT_EQ(0U, number("TLParamsLocked"));
    expect_lock();
    ASSERT_EQ(success, stop());
    EXPECT_EQ(0U, number("ParametersAreLocked"));
    set("Width", 32);
}

TEST_F(ConfiguredCamera, CommandsAreDoneWhenTheyReturn)
{
    for (const std::string& command : commands) {
        set(command, 1);
        EXPECT_EQ(0U, number(command)) << command;
        expect_refused(command, 0);
        expect_refused(command, 2);
        expect_refused(command, -1);
    }
}

TEST_F(ConfiguredCamera, TakesIntegersUpToTheirLimits)
{
    struct Row {
        const char* name;
        int lowest;
        int highest;
    };
    for (const Row& row :
         {Row{"Width", 1, 66}, Row{"Height", 1, 50}, Row{"TestPattern", 0, 13}, Row{"AcquisitionMode", 0, 2},
          Row{"AcquisitionFrameCount", 1, 65535}, Row{"AcquisitionFrameRateEnable", 0, 1},
          Row{"TriggerSelector", 0, 0}, Row{"TriggerMode", 0, 1}, Row{"TriggerSource", 0, 2},
          Row{"TriggerActivation", 0, 4}, Row{"TLParamsLocked", 0, 1}}) {
        for (const int good : {row.highest, row.lowest}) {
            set(row.name, good);
            EXPECT_EQ(static_cast<uint64_t>(good), number(row.name)) << row.name;
        }
        expect_refused(row.name, row.highest + 1);
        expect_refused(row.name, row.lowest - 1);
        expect_refused(row.name, std::numeric_limits<int>::min());
    }
}

TEST_F(ConfiguredCamera, TakesNumbersUpToTheirLimits)
{
    struct Row {
        const char* name;
        double lowest;
        double highest;
    };
    for (const Row& row : {Row{"AcquisitionFrameRate", 0.001, 100000}, Row{"ExposureTime", 1, 10000000},
                           Row{"Gain", -12, 48}}) {
        for (const double good : {row.highest, row.lowest, 17.25}) {
            set(row.name, good);
            EXPECT_EQ(good, real(row.name)) << row.name;
        }
        expect_refused(row.name, std::nextafter(row.highest, INFINITY));
        expect_refused(row.name, std::nextafter(row.lowest, -INFINITY));
        expect_refused(row.name, INFINITY);
        expect_refused(row.name, std::nan(""));
    }
}

TEST_F(ConfiguredCamera, KeepsThePictureOnTheSensor)
{
    set("Width", 60);
    set("Height", 40);
    set("OffsetX", 6);
    set("OffsetY", 10);
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
    set("Width", 64);
    set("Height", 48);
    set("OffsetX", 2);
    set("OffsetY", 2);
    for (const char* const name : {"Width", "Height", "OffsetX", "OffsetY"}) {
        expect_refused(name, 1);
        expect_refused(name, 33);
    }
    expect_refused("Width", 0);
}

TEST_F(ConfiguredCamera, FitsTheSizeToANewPixelFormat)
{
    set("Width", 43);
    set("Height", 33);
    set("OffsetX", 23);
    set("OffsetY", 17);
    set("PixelFormat", yuv411);
    EXPECT_EQ(40U, number("Width"));
    EXPECT_EQ(20U, number("OffsetX"));
    EXPECT_EQ(33U, number("Height"));
    EXPECT_EQ(17U, number("OffsetY"));
    set("PixelFormat", bayer_rg8);
    EXPECT_EQ(32U, number("Height"));
    EXPECT_EQ(16U, number("OffsetY"));
}

TEST_F(ConfiguredCamera, WidensASizeThatIsBelowTheStepOfANewPixelFormat)
{
    set("Width", 1);
    set("OffsetX", 65);
    set("PixelFormat", yuv411);
    EXPECT_EQ(4U, number("Width"));
    EXPECT_EQ(60U, number("OffsetX"));
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

TEST_F(ConfiguredCamera, AUserNameMayFillItsRegister)
{
    const RegisterPlace& place = camera_register("DeviceUserID");
    const std::string full(64, 'x');
    EXPECT_EQ(success, write_camera(camera, place.address, bytes_of(full, 64)).status);
    EXPECT_EQ(full, text(bytes("DeviceUserID")));
    EXPECT_EQ(success, write_camera(camera, place.address, bytes_of("", 64)).status);
    EXPECT_EQ(padded(""), text(bytes("DeviceUserID")));
}

TEST_F(ConfiguredCamera, NothingStaysBehindTheEndOfAUserName)
{
    const RegisterPlace& place = camera_register("DeviceUserID");
    EXPECT_EQ(success, write_camera(camera, place.address, bytes_of(std::string{"ab\0cd", 5}, 64)).status);
    EXPECT_EQ(padded("ab"), text(bytes("DeviceUserID")));
    EXPECT_EQ(success, write_camera(camera, place.address, bytes_of("z", 2)).status);
    EXPECT_EQ(padded("z"), text(bytes("DeviceUserID")));
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
    const RegisterPlace& user_id = camera_register("DeviceUserID");
    ASSERT_EQ(success, write_camera(camera, user_id.address, bytes_of("second", 64)).status);
    const std::vector<Bytes> before = everything();
    ASSERT_EQ(success, ZVGR_CameraClose(camera));
    ASSERT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
    EXPECT_EQ(before, everything());
    reopen();
    EXPECT_EQ(before, everything());
    EXPECT_EQ(padded("second"), text(bytes("DeviceUserID")));
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

TEST_F(ConfiguredCamera, CamerasOfOneGrabberHaveSettingsOfTheirOwn)
{
    set("Width", 32);
    EXPECT_EQ(66, ZVGR_GetCameraValueInt(cameras[1], "Width"));
}

} // namespace
