#include <gmock/gmock.h>

#include "CameraMap.h"

namespace zvgentl::test {

using namespace tool;
using std::chrono::milliseconds;

namespace {

class WriteFeatures : public CameraMap {};

} // namespace

TEST_F(WriteFeatures, SetsNumbersEntriesBytesAndPartsOfRegisters)
{
    registers.put<std::uint32_t>(0x10, 0xFFFFFFFF);
    const struct {
        const char* name;
        const char* value;
        std::size_t address;
        std::uint32_t written;
    } rows[] = {
        {"Width", "320", 0x00, 320},
        {"Width", "0x10", 0x00, 16},
        {"ExposureTime", "250.5", 0x0C, 2505}, // through its converter
        {"PixelFormat", "Mono12", 0x08, 0x01100005},
        {"Nibble", "5", 0x10, 0xFFFFF5FF},
        {"Blob", "01 02 0a FF", 0x200, 0xFF0A0201},
        {"Address", "10.0.0.1", 0x50, 0x0A000001},
        {"TriggerMode", "5", 0x40, 5},
        {"TriggerSelector", "LineStart", 0x30, 1},
        {"TriggerMode", "6", 0x44, 6}, // of the other trigger now
    };
    for (const auto& row : rows) {
        map.set(row.name, row.value);
        EXPECT_EQ(row.written, registers.at<std::uint32_t>(row.address)) << row.name;
    }
    map.set("Gain", "-2.25");
    EXPECT_EQ(-2.25, registers.at<double>(0x20));
}

TEST_F(WriteFeatures, RefusesValuesThatAreNotAllowed)
{
    const struct {
        const char* name;
        std::vector<const char*> values;
        const char* allowed;
    } cases[] = {
        {"Width", {"0", "1040", "-16", "650", "9223372036854775807"}, "16 to 1024 in steps of 16 px"},
        {"Width", {"", "wide", "640.0", "640 ", " 640", "0x", "1e3"}, "a whole number, 16 to 1024"},
        {"Width", {"9223372036854775808"}, "a whole number, 16 to 1024"},
        {"ExposureTime", {"9.5"}, "10 to 1000000 us"},
        {"ExposureTime", {"", "long", "nan", "inf", "1e999", "10us", "1,5"}, "a number, 10 to 1000000"},
        {"ReverseX", {"2"}, "true or false"},
        {"Nibble", {"16"}, "0 to 15"},
        {"PixelFormat", {"RGB8", "mono8", "Mono", "", "17825797"}, "Mono8, Mono12"},
        {"DeviceUserID", {"0123456789abcdefg"}, "at most 16 characters"},
        {"UserName", {"0123456789abcdefg"}, "at most 16 characters"},
        {"Blob", {"", "01 02 03", "0102030405", "01 02 03 4", "01 02 03 0g"}, "4 bytes"},
        {"Address", {"10.0.0", "10.0.0.256", "10.0.0.1.2", "10..0.1"}, "a whole number"},
    };
    for (const auto& row : cases)
        for (const std::string value : row.values)
            EXPECT_THAT(refusal_of_set(row.name, value),
                        StartsWith(row.name + (" cannot be \"" + value) + "\"; allowed: " + row.allowed));
}

TEST_F(WriteFeatures, ChecksAgainstTheLimitsOfTheMoment)
{
    map.set("OffsetX", "384");
    EXPECT_THAT(refusal_of_set("OffsetX", "385"), HasSubstr("allowed: 0 to 384"));
    EXPECT_THAT(refusal_of_set("Width", "656"), HasSubstr("allowed: 16 to 640"));
    map.set("OffsetX", "0");
    map.set("Width", "656");
}

TEST_F(WriteFeatures, SetsABooleanWithoutTouchingItsNeighbours)
{
    registers.put<std::uint32_t>(0x10, 0xFFFFFFF7);
    for (const char* const value : {"true", "On", "1"})
        map.set("ReverseX", value);
    EXPECT_EQ(0xFFFFFFFFU, registers.at<std::uint32_t>(0x10));
    map.set("ReverseX", "FALSE");
    EXPECT_EQ(0xFFFFFFF7U, registers.at<std::uint32_t>(0x10));
}

TEST_F(WriteFeatures, SetsATextAndFillsTheRestWithZeros)
{
    std::memset(registers.bytes.data() + 0x100, 'x', 32);
    map.set("DeviceUserID", "left");
    EXPECT_EQ(std::string("left") + std::string(12, '\0') + "x",
              std::string(reinterpret_cast<const char*>(registers.bytes.data()) + 0x100, 17));
    map.set("DeviceUserID", "0123456789abcdef");
    EXPECT_EQ("0123456789abcdef", text("DeviceUserID"));
    map.set("UserName", "");
    EXPECT_EQ("", text("DeviceUserID"));
}

TEST_F(WriteFeatures, RefusesWhatCannotBeWritten)
{
    registers.put<std::uint32_t>(0x14, 1); // Locked
    registers.put<std::uint32_t>(0x18, 0); // HasGain
    const std::pair<const char*, const char*> cases[] = {
        {"Vendor", "Vendor cannot be written: it is read only"},
        {"Ratio", "Ratio cannot be written: it is read only"},
        {"Temperature", "Temperature cannot be written: it is read only"},
        {"Width", "Width cannot be written: it is locked at the moment"},
        {"Gain", "Gain cannot be written: it is not available at the moment"},
        {"AcquisitionStart", "`zvgentl exec AcquisitionStart`"},
        {"Root", "Root is a category"},
        {"Widht", "did you mean Width?"},
    };
    for (const auto& [name, refusal] : cases)
        EXPECT_THAT(refusal_of_set(name, "1"), HasSubstr(refusal));
}

TEST_F(WriteFeatures, PassesOnWhatThePortSays)
{
    registers.on_write = [] {
        throw std::runtime_error("GCWritePort failed with GC_ERR_INVALID_VALUE (-1019)");
    };
    const std::string refusal = error_of([this] { map.set("Gain", "1"); });
    EXPECT_THAT(refusal, HasSubstr("Gain was not set to \"1\""));
    EXPECT_THAT(refusal, HasSubstr("GC_ERR_INVALID_VALUE"));
}

TEST_F(WriteFeatures, ExecutesACommandThatClearsItselfOrNeverSaysWhetherItIsDone)
{
    registers.on_write = [this] { registers.put<std::uint32_t>(0x34, 0); };
    map.execute("AcquisitionStart", milliseconds(60000));
    EXPECT_EQ(1, registers.writes);
    map.execute("Reset", milliseconds(60000));
    EXPECT_EQ(7U, registers.at<std::uint32_t>(0x38));
}

TEST_F(WriteFeatures, WaitsNoLongerForACommandThanAllowed)
{
    EXPECT_EQ(
        "AcquisitionStart was started, but the device has not finished it after 20 ms; --timeout sets how "
        "long to wait",
        error_of([this] { map.execute("AcquisitionStart", milliseconds(20)); }));
    EXPECT_LT(1, registers.reads);
}

TEST_F(WriteFeatures, SaysWhenACommandWasStartedAndNoMoreIsKnown)
{
    registers.on_write = [this] { registers.refusal = "the cable is out"; };
    EXPECT_EQ(
        "AcquisitionStart was started, but the device does not say whether it is done: the cable is out",
        error_of([&] { map.execute("AcquisitionStart", milliseconds(60000)); }));
}

TEST_F(WriteFeatures, ExecutesCommandsOnly)
{
    EXPECT_EQ("Width is not a command; `zvgentl set Width=VALUE` writes a value",
              error_of([this] { map.execute("Width", milliseconds(1)); }));
    EXPECT_THAT(error_of([this] { map.execute("Rset", milliseconds(1)); }), HasSubstr("no feature Rset"));
    registers.refusal = "the cable is out";
    EXPECT_THAT(error_of([this] { map.execute("Reset", milliseconds(1)); }),
                HasSubstr("Reset was not executed: "));
}

} // namespace zvgentl::test
