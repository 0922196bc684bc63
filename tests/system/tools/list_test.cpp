#include <gmock/gmock.h>

#include "Program.h"

namespace zvgentl::test {

namespace {

using Tree = std::map<std::string, std::vector<std::string>>;

/// The IDs of the devices of each interface, as `list --json` lists them.
Tree devices_in(const nlohmann::json& list)
{
    Tree devices;
    for (const auto& iface : list["producers"][0]["interfaces"])
        for (const auto& device : iface["devices"])
            devices[iface["id"]].push_back(device["id"]);
    return devices;
}

} // namespace

TEST(List, ShowsTheTreeOfTheProducerBesideTheProgram)
{
    const std::string producer = std::filesystem::path(PRODUCER_FILE).make_preferred().u8string();
    const Ended ended = Program({"list"}).run();
    EXPECT_EQ(0, ended.code) << ended.errors;
    EXPECT_EQ("", ended.errors);
    for (const char* const part : {"ZEVA Electronics GenTL Producer 6.3.3", producer.c_str(), "FG0  CXP",
                                   "FG1  CLHS", "Device00", "Device01", "Device10", "read/write"})
        EXPECT_THAT(ended.output, HasSubstr(part));
}

TEST(List, PrintsTheSameAsJson)
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

TEST(List, FollowsTheVariableToAFolderOfAnyName)
{
    const TemporaryFolder folder;
    const auto file = folder.path() / std::filesystem::u8path(u8"gro\u00df \u0416") / "text.cti";
    write_text(file, "not a library");
    const Ended ended = Program({"list"}).with("GENICAM_GENTL64_PATH", file.parent_path().u8string()).run();
    EXPECT_EQ(1, ended.code);
    EXPECT_THAT(ended.errors, HasSubstr("cannot load " + file.u8string()));
}

} // namespace zvgentl::test
