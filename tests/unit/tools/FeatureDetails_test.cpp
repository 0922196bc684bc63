#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "genapi/CameraMap.h"
#include "support.h"
#include "zvgentl/FeatureOutput.h"
#include "zvgentl/Json.h"

namespace zvgentl::test {

using namespace tool;

namespace {

using Details = CameraMap;

} // namespace

TEST_F(Details, NameSelectorsAndRegisters)
{
    const FeatureDetails mode = map.details("TriggerMode");
    EXPECT_EQ(std::vector<std::string>{"TriggerSelector"}, mode.selectors);
    ASSERT_EQ(1U, mode.registers.size());
    EXPECT_EQ("TriggerModeReg", mode.registers[0].name);
    EXPECT_EQ(0x40U, mode.registers[0].address);
    map.set("TriggerSelector", "LineStart");
    EXPECT_EQ(0x44U, map.details("TriggerMode").registers[0].address);

    const FeatureDetails exposure = map.details("ExposureTime");
    ASSERT_EQ(1U, exposure.registers.size()) << "through a converter";
    EXPECT_EQ("ExposureReg", exposure.registers[0].name);
    EXPECT_EQ(4, exposure.registers[0].length);
}

TEST_F(Details, AreShownAsLinesOrJson)
{
    EXPECT_EQ("Camera: Width\n"
              "  Display name  Picture Width\n"
              "  Type          Integer (Integer)\n"
              "  Access        RW\n"
              "  Visibility    Expert\n"
              "  Value         640 px\n"
              "  Range         16 to 1024 in steps of 16\n"
              "  Unit          px\n"
              "  Stored        no\n"
              "  Tool tip      Width of the picture\n"
              "  Registers\n"
              "    WidthReg  0x0  4 bytes  RW  WriteThrough  port Device\n",
              to_text("Camera", map.details("Width")));
    EXPECT_THAT(json_text("Camera", map.details("Width")),
                HasSubstr("\"registers\": [\n    {\n      \"name\": "
                          "\"WidthReg\",\n"));
}

TEST_F(Details, AreRefusedForUnknownFeatures)
{
    EXPECT_EQ("there is no feature Widht; did you mean Width?", error_of([&] { map.details("Widht"); }));
}

} // namespace zvgentl::test
