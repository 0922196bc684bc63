#include <gmock/gmock.h>

#include "CameraMap.h"
#include "genapi/values.h"

namespace zvgentl::test {

using namespace tool;

namespace {

class ReadFeatures : public CameraMap {};

using Names = std::vector<std::string>;

} // namespace

TEST_F(ReadFeatures, ListsTheTreeBelowRootOrOneCategory)
{
    std::string names;
    for (const auto& entry : map.tree())
        names += (entry.level == 0 ? "\n" : " ") + entry.name;
    EXPECT_EQ("\nImageFormat Width OffsetX PixelFormat ReverseX NotThere"
              "\nAcquisition ExposureTime Gain TriggerSelector TriggerMode AcquisitionStart DeviceUserID",
              names);
    EXPECT_EQ("Width", map.tree("ImageFormat").at(0).name);
    EXPECT_EQ(5U, map.tree("ImageFormat").size());
    EXPECT_EQ("there is no category Width; there are Root, ImageFormat, Acquisition",
              error_of([this] { map.tree("Width"); }));
}

TEST_F(ReadFeatures, DescribesAnInteger)
{
    const Feature width = feature("Width");
    EXPECT_EQ(FeatureKind::integer, width.kind);
    EXPECT_EQ(Value(std::int64_t{640}), width.value);
    EXPECT_EQ("16 to 1024 in steps of 16", range_text(width));
    EXPECT_EQ("px", width.unit);
    EXPECT_EQ("Expert", width.visibility);
    EXPECT_EQ("Picture Width", width.display_name);
    EXPECT_EQ("Width of the picture", width.description);
    EXPECT_EQ("RW", access_name(width.access));
    EXPECT_EQ("", width.problem);
}

TEST_F(ReadFeatures, FollowsTheDevicesValuesAndLimitsThatDependOnThem)
{
    EXPECT_EQ("640", text("Width"));
    EXPECT_EQ("0 to 384", range_text(feature("OffsetX")));
    registers.put<std::uint32_t>(0x04, 300);
    EXPECT_EQ("16 to 724 in steps of 16", range_text(feature("Width")));
    registers.put<std::uint32_t>(0x00, 320);
    EXPECT_EQ("320", text("Width"));
}

TEST_F(ReadFeatures, ReadsRegistersAndFormulasOfEveryKind)
{
    registers.put<std::uint32_t>(0x10, 0xF08);
    registers.put<std::uint32_t>(0x310, 0xFEFFFFFF);
    registers.put<std::uint32_t>(0x300, 0x0A14);
    registers.put<std::uint32_t>(0x200, 0xD4C3B2A1);
    registers.put<std::uint32_t>(0x3C, 21);
    registers.put<std::uint32_t>(0x50, 0xC0A80001);
    const std::pair<const char*, const char*> values[] = {
        {"WidthReg", "640"},        {"Nibble", "15"},        {"ReverseX", "true"},    {"BigEndian", "-2"},
        {"Temperature", "20"},      {"Voltage", "10"},       {"Blob", "A1 B2 C3 D4"}, {"Gain", "1.5"},
        {"Ratio", "6.4"},           {"ExposureTime", "100"}, {"Doubled", "42"},       {"WidthMax", "1024"},
        {"Address", "192.168.0.1"}, {"Mask", "0xC0A80001"},
    };
    for (const auto& [name, value] : values)
        EXPECT_EQ(value, text(name)) << name;
}

TEST_F(ReadFeatures, ReadsTextsUpToTheEndOfTheirRegister)
{
    std::memcpy(registers.bytes.data() + 0x100, "left", 4);
    EXPECT_EQ("left", text("DeviceUserID"));
    EXPECT_EQ("left", text("UserName"));
    EXPECT_EQ("Test Ltd.", text("Vendor"));
    EXPECT_EQ(Value(std::int64_t{16}), feature("UserName").maximum);
    std::memset(registers.bytes.data() + 0x100, 'x', 32);
    EXPECT_EQ(std::string(16, 'x'), text("DeviceUserID"));
}

TEST_F(ReadFeatures, DescribesAnEnumerationWithWhatCanBeChosen)
{
    const Feature format = feature("PixelFormat");
    EXPECT_EQ(FeatureKind::enumeration, format.kind);
    EXPECT_EQ(Value(std::string("Mono8")), format.value);
    EXPECT_EQ((Names{"Mono8", "Mono12"}), format.entries) << "colour is not available";
    registers.put<std::uint32_t>(0x08, 99);
    EXPECT_EQ("PixelFormat cannot be read: the device's value 99 is not one of its entries",
              feature("PixelFormat").problem);
}

TEST_F(ReadFeatures, FollowsASelector)
{
    registers.put<std::uint32_t>(0x40, 5);
    registers.put<std::uint32_t>(0x44, 6);
    EXPECT_EQ("5", text("TriggerMode"));
    registers.put<std::uint32_t>(0x30, 1);
    EXPECT_EQ("6", text("TriggerMode"));
    EXPECT_EQ(Names{"TriggerMode"}, feature("TriggerSelector").selects);
}

TEST_F(ReadFeatures, KnowsWhatMayBeDone)
{
    const std::pair<const char*, const char*> accesses[] = {{"Width", "RW"},
                                                            {"Gain", "RW"},
                                                            {"Ratio", "RO"},
                                                            {"Temperature", "RO"},
                                                            {"Doubled", "RO"},
                                                            {"Vendor", "RO"},
                                                            {"AcquisitionStart", "WO"},
                                                            {"Acquisition", "RO"},
                                                            {"Reset", "WO"}};
    for (const auto& [name, access] : accesses)
        EXPECT_EQ(access, access_name(feature(name).access)) << name;
}

TEST_F(ReadFeatures, ChangesWhatMayBeDoneWithTheDevice)
{
    registers.put<std::uint32_t>(0x14, 1); // Locked
    registers.put<std::uint32_t>(0x18, 0); // HasGain
    EXPECT_EQ("RO locked", access_name(feature("Width").access));
    EXPECT_EQ("NA", access_name(feature("Gain").access));
    EXPECT_EQ("", feature("Gain").problem);
    EXPECT_THAT(error_of([this] { map.get("Gain"); }),
                HasSubstr("Gain cannot be read: it is not available at the moment"));
}

TEST_F(ReadFeatures, DoesNotReadWhatCanOnlyBeWritten)
{
    EXPECT_EQ("ResetReg cannot be read: it is write only", error_of([this] { map.get("ResetReg"); }));
    EXPECT_EQ("AcquisitionStart is a command and has no value; `zvgentl exec AcquisitionStart` executes it",
              error_of([this] { map.get("AcquisitionStart"); }));
    EXPECT_THAT(error_of([this] { map.get("Root"); }), HasSubstr("is a category"));
}

TEST_F(ReadFeatures, SuggestsNamesForOneThatIsNotThere)
{
    const std::pair<const char*, const char*> cases[] = {
        {"Wdith", "there is no feature Wdith; did you mean Width?"},
        {"exposure", "there is no feature exposure; did you mean ExposureTime?"},
        {"Zoom", "there is no feature Zoom; `zvgentl features` lists those that exist"},
        {"Device", "there is no feature Device; "}, // it is a port
        {"", "there is no feature ; "},
    };
    for (const auto& [name, refusal] : cases) {
        EXPECT_THAT(error_of([this, name = name] { map.get(name); }), StartsWith(refusal));
    }
}

TEST_F(ReadFeatures, PassesOnWhatThePortSays)
{
    registers.refusal = "GCReadPort failed with GC_ERR_IO (-1010): the cable is out";
    EXPECT_THAT(error_of([this] { map.get("ExposureTime"); }), HasSubstr(registers.refusal));
    EXPECT_THAT(feature("Width").problem, HasSubstr(registers.refusal));
    registers.refusal.clear();
    EXPECT_EQ("640", text("Width")) << "and goes on when the port is back";
}

TEST_F(ReadFeatures, UsesDescriptionsOfAnOlderSchema)
{
    std::string description = camera_description();
    const std::string version = "SchemaMinorVersion=\"1\"";
    description.replace(description.find(version), version.size(), "SchemaMinorVersion=\"0\"");
    const NodeMap old(description, registers);
    EXPECT_EQ("640", old.get_text("Width"));
    old.set("Width", "320");
    EXPECT_EQ(320U, registers.at<std::uint32_t>(0x00));
}

} // namespace zvgentl::test
