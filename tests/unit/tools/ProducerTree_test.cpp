#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "TemporaryFolder.h"
#include "zvgentl/ProducerTree.h"

namespace zvgentl::test {

using namespace tool;

namespace {

DeviceEntry device(const std::string& id, const std::string& model)
{
    DeviceEntry entry;
    entry.id = id;
    entry.vendor = "Maker";
    entry.model = model;
    entry.display_name = model;
    entry.serial_number = "123";
    entry.version = "1.0";
    entry.transport = "CXP";
    entry.access = "read/write";
    entry.timestamp_frequency = 25000000;
    return entry;
}

InterfaceEntry interface_with(const std::string& id, std::vector<DeviceEntry> devices)
{
    InterfaceEntry entry;
    entry.id = id;
    entry.display_name = "Grabber";
    entry.transport = "CXP";
    entry.devices = std::move(devices);
    return entry;
}

ProducerEntry producer_with(std::vector<InterfaceEntry> interfaces)
{
    ProducerEntry entry;
    entry.file = "/opt/some.cti";
    entry.display_name = "Some producer";
    entry.vendor = "Maker";
    entry.version = "1.2.3";
    entry.gentl_version = "1.5";
    entry.interfaces = std::move(interfaces);
    return entry;
}

std::vector<std::string> lines_of(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

std::string line_with(const std::string& text, const std::string& part)
{
    for (const auto& line : lines_of(text))
        if (line.find(part) != std::string::npos)
            return line;
    return {};
}

} // namespace

TEST(ProducerText, LinesUpTheColumnsOfAllInterfaces)
{
    const std::string text =
        to_text(producer_with({interface_with("FG0", {device("Device00", "A")}),
                               interface_with("FG10", {device("Device100", "A long name")})}));
    const std::string heading = line_with(text, "Model");
    const std::string first = line_with(text, "Device00 ");
    const std::string second = line_with(text, "Device100");
    for (const auto& [title, value] :
         {std::pair("Model", "A"), {"Serial", "123"}, {"Access", "read/write"}}) {
        const auto column = heading.find(title);
        ASSERT_NE(std::string::npos, column) << text;
        EXPECT_EQ(0, first.compare(column, std::string(value).size(), value)) << text;
        EXPECT_EQ(0, second.compare(column, std::string(value).size(), value)) << text;
    }
}

TEST(ProducerText, LeavesNoBlanksAtTheEndOfALine)
{
    for (const auto& line :
         lines_of(to_text(producer_with({interface_with("FG0", {device("Device00", "A")})}))))
        EXPECT_TRUE(line.empty() || line.back() != ' ') << line;
}

TEST(ProducerText, ShowsStreamsOnlyWhenTheyWereRead)
{
    DeviceEntry entry = device("Device00", "A");
    EXPECT_EQ(std::string::npos, to_text(producer_with({interface_with("FG0", {entry})})).find("Streams"));
    entry.streams = {"Stream000"};
    EXPECT_NE(std::string::npos, to_text(producer_with({interface_with("FG0", {entry})})).find("Stream000"));
}

TEST(ProducerText, SaysWhatIsMissing)
{
    EXPECT_NE(std::string::npos, to_text(producer_with({})).find("no interface found"));
    EXPECT_NE(std::string::npos, to_text(producer_with({interface_with("FG0", {})})).find("no device found"));
}

TEST(ProducerText, SaysWhyAnInterfaceOrADeviceCannotBeRead)
{
    ProducerEntry entry =
        producer_with({interface_with("FG0", {device("Device00", "A")}), interface_with("FG1", {})});
    entry.interfaces[0].devices[0].problem = "gone";
    entry.interfaces[1].problem = "in use";
    EXPECT_NE("", line_with(to_text(entry), "Device00: gone"));
    EXPECT_NE("", line_with(to_text(entry), "cannot be read: in use"));
}

TEST(ReadProducer, ReportsAFileThatIsNoLibrary)
{
    const TemporaryFolder folder;
    const std::filesystem::path file = folder / "text.cti";
    write_text(file, "no library");
    const ProducerEntry entry = read_producer(file, Streams::left_out);
    EXPECT_NE(std::string::npos, entry.problem.find("cannot load " + file.string())) << entry.problem;
    EXPECT_TRUE(entry.interfaces.empty());
}

} // namespace zvgentl::test
