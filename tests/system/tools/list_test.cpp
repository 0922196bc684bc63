#include <gtest/gtest.h>

#include "Program.h"
#include "platform/environment.h"

namespace zvgentl::test {

namespace {

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

/// The IDs of the devices of each interface, as `list --json` tells them.
std::map<std::string, std::vector<std::string>> devices_in(const nlohmann::json& list)
{
    std::map<std::string, std::vector<std::string>> devices;
    for (const auto& iface : list["producers"][0]["interfaces"])
        for (const auto& device : iface["devices"])
            devices[iface["id"]].push_back(device["id"]);
    return devices;
}

/// As the system itself writes it.
std::string producer_file() { return std::filesystem::path(PRODUCER_FILE).make_preferred().u8string(); }

using Tree = std::map<std::string, std::vector<std::string>>;

} // namespace

TEST(List, ShowsTheTreeOfTheProducerBesideTheProgram)
{
    const std::string producer = producer_file();
    const Ended ended = Program({"list"}).run();
    EXPECT_EQ(0, ended.code) << ended.errors;
    EXPECT_EQ("", ended.errors);
    for (const char* const part : {"ZEVA Electronics GenTL Producer 6.3.3", producer.c_str(), "FG0  CXP",
                                   "FG1  CLHS", "Device00", "Device01", "Device10", "read/write"})
        EXPECT_TRUE(contains(ended.output, part)) << part << " is missing from\n" << ended.output;
}

TEST(List, TellsProgramsTheSame)
{
    const Ended ended = Program({"list", "--json"}).run();
    ASSERT_EQ(0, ended.code) << ended.errors;
    const auto list = ended.json();
    EXPECT_EQ((Tree{{"FG0", {"Device00", "Device01"}}, {"FG1", {"Device10"}}}), devices_in(list));
    const auto& producer = list["producers"][0];
    EXPECT_EQ("1.5", producer["gentl_version"]);
    EXPECT_EQ("Mixed", producer["transport"]);
    const auto& device = producer["interfaces"][1]["devices"][0];
    EXPECT_EQ("CLHS", device["transport"]);
    EXPECT_EQ("read/write", device["access"]);
    EXPECT_EQ(25000000, device["timestamp_frequency"]);
    for (const char* const key : {"vendor", "model", "serial_number", "version", "display_name"})
        EXPECT_NE("", device[key]) << key;
}

TEST(List, OpensTheDevicesForTheirStreams)
{
    const Ended ended = Program({"list", "--json", "--streams"}).run();
    ASSERT_EQ(0, ended.code) << ended.errors;
    const auto list = ended.json();
    EXPECT_EQ((std::vector<std::string>{"Stream010"}),
              list["producers"][0]["interfaces"][0]["devices"][1]["streams"].get<std::vector<std::string>>());
}

TEST(List, FindsProducersThroughTheVariable)
{
    const std::string folders = std::string("/does/not/exist") + platform::path_list_separator +
                                std::filesystem::path(producer_file()).parent_path().u8string();
    const Ended ended = Program({"list", "--json"}).with("GENICAM_GENTL64_PATH", folders).run();
    ASSERT_EQ(0, ended.code) << ended.errors;
    EXPECT_EQ(producer_file(), ended.json()["producers"][0]["file"]);
}

TEST(List, FollowsTheUsersSettings)
{
    Program program({"list", "--json"});
    write_text(program.folder() / "settings.properties", "GenTL.Interface.ExposeDemoGrabber = 1\n");
    const Ended ended = program.run();
    ASSERT_EQ(0, ended.code) << ended.errors;
    EXPECT_EQ(1U, devices_in(ended.json()).count("FG2"));
}

} // namespace zvgentl::test
