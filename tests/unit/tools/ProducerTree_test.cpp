#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "examples.h"

namespace zvgentl::test {

using namespace tool;

namespace {

ProducerEntry producer_with(std::vector<InterfaceEntry> interfaces)
{
    return {"/opt/some.cti", "Some producer", "Maker", "", "1.2.3", "1.5", "", std::move(interfaces), ""};
}

} // namespace

TEST(ProducerText, LinesUpTheColumnsOfAllInterfaces)
{
    DeviceEntry gone = device_of("Device100", "A long name");
    gone.problem = "gone";
    EXPECT_EQ("Some producer 1.2.3, by Maker, GenTL 1.5\n"
              "/opt/some.cti\n"
              "\n"
              "FG0  CXP  Grabber\n"
              "  Device     Vendor  Model        Serial  Version  Transport  Access\n"
              "  Device00   Maker   A            123     1.0      CXP        read/write\n"
              "\n"
              "FG10  CLHS  -\n"
              "  Device     Vendor  Model        Serial  Version  Transport  Access\n"
              "  Device100  Maker   A long name  123     1.0      CXP        read/write\n"
              "    Device100: gone\n"
              "\n"
              "FG20  -  Busy\n"
              "  cannot be read: in use\n"
              "\n"
              "FG30  -  Empty\n"
              "  no device found\n",
              to_text(producer_with({{"FG0", "Grabber", "CXP", {device_of("Device00", "A")}, ""},
                                     {"FG10", "", "CLHS", {gone}, ""},
                                     {"FG20", "Busy", "", {}, "in use"},
                                     {"FG30", "Empty", "", {}, ""}})));
}

TEST(ProducerText, ShowsStreamsWhenTheyWereRead)
{
    DeviceEntry device = device_of("Device00", "A");
    device.streams = {"Stream000", "Stream001"};
    EXPECT_EQ("Some producer 1.2.3, by Maker, GenTL 1.5\n"
              "/opt/some.cti\n"
              "\n"
              "FG0  CXP  Grabber\n"
              "  Device    Vendor  Model  Serial  Version  Transport  Access      Streams\n"
              "  Device00  Maker   A      123     1.0      CXP        read/write  Stream000 Stream001\n",
              to_text(producer_with({{"FG0", "Grabber", "CXP", {device}, ""}})));
}

TEST(ProducerText, HasNoControlCharactersOfAnybodyElse)
{
    ProducerEntry producer = producer_with({{"FG0\n", "Grab\x1B[2Jber", "CXP", {DeviceEntry()}, ""}});
    producer.vendor = "Ma\xC2\x9B"
                      "ker";
    producer.file = "/opt/a\nb.cti";
    DeviceEntry& device = producer.interfaces[0].devices[0];
    device.id = "Device00\nDevice01";
    device.streams = {"A\rB"};
    device.problem = "in use\nby another program";
    const std::string text = to_text(producer);
    for (const char* const shown : {"FG0\\n ", "Grab\\x1B[2Jber", "Ma\\x9Bker", "/opt/a\\nb.cti\n",
                                    "Device00\\nDevice01", "A\\rB", "in use\nby another"})
        EXPECT_THAT(text, testing::HasSubstr(shown));
}

TEST(ProducerText, SaysWhyThereIsNothing)
{
    ProducerEntry producer = producer_with({});
    EXPECT_EQ("Some producer 1.2.3, by Maker, GenTL 1.5\n"
              "/opt/some.cti\n"
              "  no interface found: no frame grabber is installed, or its driver is not running\n",
              to_text(producer));
    producer = {};
    producer.file = "/opt/some.cti";
    producer.problem = "cannot load it";
    EXPECT_EQ("/opt/some.cti\n  cannot load it\n", to_text(producer));
}

TEST(ProducerText, LeavesTheReasonToTheReport)
{
    ProducerEntry producer = producer_with({});
    EXPECT_EQ("", report_text(producer));
    producer.report = "no grabbers\nfile:1: wrong";
    EXPECT_EQ("Some producer 1.2.3, by Maker, GenTL 1.5\n/opt/some.cti\n", to_text(producer));
    EXPECT_EQ("/opt/some.cti:\nno grabbers\nfile:1: wrong\n", report_text(producer));
}

} // namespace zvgentl::test
