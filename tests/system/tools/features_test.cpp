#include <algorithm>

#include <gtest/gtest.h>

#include "Program.h"

namespace zvgentl::test {

namespace {

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

/// The features that `zvgentl features --json` tells, by name.
std::map<std::string, nlohmann::json> by_name(const nlohmann::json& tree)
{
    std::map<std::string, nlohmann::json> features;
    for (const auto& feature : tree["features"])
        features[feature["name"]] = feature;
    return features;
}

} // namespace

TEST(FeaturesOfTheSystem, AreShownAsATree)
{
    const Ended ended = Program({"features", "--port", "system"}).run();
    ASSERT_EQ(0, ended.code) << ended.errors;
    EXPECT_EQ("", ended.errors);
    EXPECT_EQ(0U, ended.output.find("system: Root\nSystemInformation\n  TLVendorName ")) << ended.output;
    for (const char* const part : {"  TLModelName               String   RO  \"ZVGRLibGenTL\"\n",
                                   "  GenTLVersionMajor         Integer  RO  1\n"})
        EXPECT_TRUE(contains(ended.output, part)) << part << " is missing from\n" << ended.output;
}

TEST(FeaturesOfTheSystem, AreToldToProgramsToo)
{
    const Ended ended = Program({"features", "--port", "system", "--json"}).run();
    ASSERT_EQ(0, ended.code) << ended.errors;
    const auto tree = ended.json();
    EXPECT_EQ("system", tree["port"]);
    EXPECT_EQ("Root", tree["category"]);
    const auto features = by_name(tree);
    EXPECT_EQ(10U, features.size());
    EXPECT_EQ("Category", features.at("SystemInformation")["type"]);
    EXPECT_EQ(5, features.at("GenTLVersionMinor")["value"]);
    EXPECT_EQ("RO", features.at("TLVersion")["access"]);
    EXPECT_EQ("Beginner", features.at("TLVersion")["visibility"]);
}

TEST(FeaturesOfTheSystem, AreLimitedToACategory)
{
    const Ended ended =
        Program({"features", "--port", "system", "--category", "SystemInformation", "--json"}).run();
    ASSERT_EQ(0, ended.code) << ended.errors;
    EXPECT_EQ("TLVendorName", ended.json()["features"][0]["name"]);
    const Ended wrong = Program({"features", "--port", "system", "--category", "Camera"}).run();
    EXPECT_EQ(1, wrong.code);
    EXPECT_TRUE(contains(wrong.errors, "no category Camera; there are Root, SystemInformation"))
        << wrong.errors;
}

TEST(FeaturesOfTheSystem, AreReadOneByOne)
{
    const Ended one = Program({"get", "--port", "system", "TLModelName"}).run();
    EXPECT_EQ(0, one.code) << one.errors;
    EXPECT_EQ("ZVGRLibGenTL\n", one.output);
    const Ended two = Program({"get", "--port", "system", "TLModelName", "GenTLVersionMajor"}).run();
    EXPECT_EQ("TLModelName=ZVGRLibGenTL\nGenTLVersionMajor=1\n", two.output);
    const Ended json =
        Program({"get", "--port", "system", "TLModelName", "GenTLVersionMajor", "--json"}).run();
    EXPECT_EQ(1, json.json()["GenTLVersionMajor"]);
    EXPECT_EQ("ZVGRLibGenTL", json.json()["TLModelName"]);
}

TEST(FeaturesOfTheSystem, CannotBeSet)
{
    for (const auto& words : std::vector<std::vector<std::string>>{
             {"set", "--port", "system", "TLModelName=x"},
             {"set", "--port", "system", "TLModelName", "x"},
             {"get", "--port", "system", "--set", "TLModelName=x", "TLModelName"}}) {
        const Ended ended = Program(words).run();
        EXPECT_EQ(1, ended.code);
        EXPECT_EQ("", ended.output);
        EXPECT_TRUE(contains(ended.errors, "TLModelName cannot be written: it is read only")) << ended.errors;
    }
}

TEST(FeaturesOfTheSystem, AreSuggestedWhenANameIsWrong)
{
    const Ended ended = Program({"get", "--port", "system", "TLModleName"}).run();
    EXPECT_EQ(1, ended.code);
    EXPECT_EQ("zvgentl get: there is no feature TLModleName; did you mean TLModelName?\n", ended.errors);
    const Ended command = Program({"exec", "--port", "system", "TLVersion"}).run();
    EXPECT_EQ(1, command.code);
    EXPECT_TRUE(contains(command.errors, "TLVersion is not a command")) << command.errors;
}

TEST(FeaturesOfABuffer, AreThoseOfItsPackedDescription)
{
    const Ended ended = Program({"features", "--port", "buffer", "--json"}).run();
    ASSERT_EQ(0, ended.code) << ended.errors;
    EXPECT_EQ("Stream000 (buffer)", ended.json()["port"]);
}

TEST(PortSelection, SaysWhatThereIsWhenTheInterfaceIsNot)
{
    for (const char* const port : {"interface", "device", "stream", "buffer", "remote"}) {
        const Ended ended = Program({"features", "--port", port, "--interface", "FG7"}).run();
        EXPECT_EQ(1, ended.code);
        EXPECT_TRUE(contains(ended.errors, "no interface FG7; there are FG0, FG1")) << ended.errors;
    }
}

TEST(PortSelection, SaysWhatThereIsWhenTheDeviceIsNot)
{
    const Ended ended = Program({"get", "--device", "Device99", "Width"}).run();
    EXPECT_EQ(1, ended.code);
    EXPECT_TRUE(contains(ended.errors, "FG0/Device00, FG0/Device01, FG1/Device10")) << ended.errors;
}

} // namespace zvgentl::test
