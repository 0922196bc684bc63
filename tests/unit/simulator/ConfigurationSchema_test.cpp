#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "simulator/Limits.h"
#include "simulator/config/ConfigurationFile.h"
#include "simulator/config/GrabberReader.h"
#include "simulator/faults/FaultKind.h"
#include "unit/simulator/configuration_texts.h"

// The schema and the examples, next to what the library reads.

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::ContainerEq;
using testing::IsEmpty;
using zvsim_test::configured_by;

const fs::path project{ZV_PROJECT_FOLDER};

std::string text_of(const fs::path& file)
{
    std::ifstream stream{file};
    EXPECT_TRUE(stream) << file;
    return {std::istreambuf_iterator<char>{stream}, {}};
}

/// The schema of one section, by the name that messages give it.
json section_schema(const json& schema, const std::string& section)
{
    if (section == "configuration file")
        return schema;
    return schema.at("definitions").at(section == "fault's 'when'" ? "trigger" : section);
}

class Schema : public testing::Test {
protected:
    const json schema = json::parse(text_of(project / "docs/zv-grabber.schema.json")); // braces make a list
    json property(const char* section, const char* key) const
    {
        return section_schema(schema, section).at("properties").at(key);
    }
};

TEST_F(Schema, HasExactlyTheKeysThatAreRead)
{
    std::set<std::string> sections;
    for (const auto& section : zvsim::configuration_sections()) {
        const std::set<std::string> read{section.keys.begin(), section.keys.end()};
        const json described = section_schema(schema, section.section);
        std::set<std::string> keys;
        for (const auto& property : described.at("properties").items())
            keys.insert(property.key());
        EXPECT_THAT(keys, ContainerEq(read)) << section.section;
        EXPECT_EQ(json(false), described.at("additionalProperties")) << section.section;
        sections.insert(section.section);
    }
    EXPECT_EQ(6U, sections.size());
}

TEST_F(Schema, DescribesEveryKey)
{
    for (const auto& section : zvsim::configuration_sections()) {
        const json described = section_schema(schema, section.section); // must outlive its items
        for (const auto& property : described.at("properties").items())
            EXPECT_FALSE(property.value().value("description", "").empty()) << property.key();
    }
}

TEST_F(Schema, HasTheLimitsOfTheLibrary)
{
    EXPECT_EQ(zvsim::most_grabbers, property("configuration file", "grabbers").at("maxItems"));
    EXPECT_EQ(zvsim::most_grabbers, property("grabber", "count").at("maximum"));
    EXPECT_EQ(zvsim::most_segments, property("grabber", "segments_per_buffer").at("maximum"));
    EXPECT_EQ(zvsim::most_cameras, property("grabber", "cameras").at("maxItems"));
    EXPECT_EQ(zvsim::most_cameras, property("camera", "count").at("maximum"));
    for (const char* const key : {"sensor_width", "sensor_height", "width", "height"})
        EXPECT_EQ(zvsim::largest_side, property("camera", key).at("maximum"));
    for (const char* const key : {"vendor", "model", "serial", "version", "user_id"})
        EXPECT_EQ(zvsim::longest_identity, property("camera", key).at("maxLength"));
    EXPECT_EQ(zvsim::lowest_rate, property("camera", "rate").at("oneOf").at(1).at("minimum"));
    EXPECT_EQ(zvsim::highest_rate, property("camera", "rate").at("oneOf").at(1).at("maximum"));
    EXPECT_EQ(zvsim::lowest_gain_db, property("camera", "gain").at("minimum"));
    EXPECT_EQ(zvsim::highest_gain_db, property("camera", "gain").at("maximum"));
    EXPECT_EQ(zvsim::most_frames, property("camera", "frame_count").at("maximum"));
}

/// The words that a message names for a wrong value of that key.
std::vector<std::string> words_for(const std::string& text)
{
    const auto errors = configured_by(text)->errors;
    if (errors.size() != 1)
        return {};
    std::string words = errors[0].substr(errors[0].rfind("allowed: ") + 9);
    std::vector<std::string> list;
    for (size_t comma = words.find(", "); comma != std::string::npos; comma = words.find(", ")) {
        list.push_back(words.substr(0, comma));
        words.erase(0, comma + 2);
    }
    list.push_back(words);
    return list;
}

TEST_F(Schema, HasTheWordsThatAreRead)
{
    EXPECT_EQ(words_for("grabbers: [{protocol: x}]"), property("grabber", "protocol").at("enum"));
    for (const std::string key :
         {"test_pattern", "pixel_format_codes", "acquisition_mode", "trigger_source", "trigger_activation"}) {
        EXPECT_EQ(words_for(zvsim_test::camera_text(key + ": x")),
                  property("camera", key.c_str()).at("enum"));
    }
    EXPECT_EQ(words_for(zvsim_test::camera_text("pixel_format: x")),
              schema.at("definitions").at("pixel_format").at("enum"));
    std::vector<std::string> kinds;
    for (size_t kind = 0; kind < zvsim::fault_kind_count; ++kind)
        kinds.emplace_back(zvsim::row_of(static_cast<zvsim::FaultKind>(kind)).name);
    EXPECT_EQ(kinds, property("fault", "kind").at("enum"));
    std::vector<std::string> functions;
    for (size_t function = 0; function < zvsim::function_count; ++function)
        functions.emplace_back(zvsim::row_of(static_cast<zvsim::Function>(function)).name);
    EXPECT_EQ(functions, property("fault", "function").at("enum"));
}

/// The names of the entries of an enumeration of the camera's description.
std::vector<std::string> entries_of(const std::string& enumeration)
{
    const std::string description = text_of(project / "simulator/features/camera.xml");
    const size_t start = description.find("<Enumeration Name=\"" + enumeration + "\"");
    const std::string element = description.substr(start, description.find("</Enumeration>", start) - start);
    const std::regex entry{"<EnumEntry Name=\"(\\w+)\""};
    std::vector<std::string> names;
    for (std::sregex_iterator found{element.begin(), element.end(), entry}; found != std::sregex_iterator{};
         ++found)
        names.push_back((*found)[1]);
    return names;
}

TEST_F(Schema, HasTheWordsOfTheFeatures)
{
    EXPECT_EQ(entries_of("TestPattern"), property("camera", "test_pattern").at("enum"));
    EXPECT_EQ(entries_of("AcquisitionMode"), property("camera", "acquisition_mode").at("enum"));
    EXPECT_EQ(entries_of("TriggerSource"), property("camera", "trigger_source").at("enum"));
    EXPECT_EQ(entries_of("TriggerActivation"), property("camera", "trigger_activation").at("enum"));
}

class Example : public testing::TestWithParam<fs::path> {};

std::vector<fs::path> examples()
{
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator{project / "examples/grabbers"})
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

TEST_P(Example, IsReadWithoutErrors)
{
    const auto configuration = configured_by(text_of(GetParam()));
    EXPECT_THAT(configuration->errors, IsEmpty());
    EXPECT_FALSE(configuration->grabbers.empty());
}

INSTANTIATE_TEST_SUITE_P(Every, Example, testing::ValuesIn(examples()), [](const auto& test) {
    std::string name = test.param.stem().string();
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

TEST(Examples, ShowAsMuchAsThereCanBe)
{
    const auto configuration = configured_by(text_of(project / "examples/grabbers/many.yaml"));
    ASSERT_EQ(zvsim::most_grabbers + 1, configuration->grabbers.size());
    for (size_t index = 0; index < zvsim::most_grabbers; ++index)
        EXPECT_EQ(zvsim::most_cameras, configuration->grabbers[index].cameras.size());
}

/// What stands between lines "```yaml" and "```" of a page.
std::vector<std::string> yaml_blocks(const std::string& page)
{
    const std::regex fence{"```yaml\n([^`]*)```"};
    std::vector<std::string> blocks;
    for (std::sregex_iterator found{page.begin(), page.end(), fence}; found != std::sregex_iterator{};
         ++found)
        blocks.push_back((*found)[1]);
    return blocks;
}

TEST(Documentation, ShowsFilesThatAreReadWithoutErrors)
{
    const auto blocks = yaml_blocks(text_of(project / "docs/software-grabber.md"));
    EXPECT_FALSE(blocks.empty());
    for (const std::string& block : blocks)
        EXPECT_THAT(configured_by(block)->errors, IsEmpty()) << block;
}

TEST(Documentation, NamesEveryKeyOfGrabbersAndCameras)
{
    const std::string page = text_of(project / "docs/software-grabber.md");
    for (const auto& section : zvsim::configuration_sections()) {
        const std::string name{section.section};
        if (name != "grabber" && name != "camera")
            continue;
        for (const auto key : section.keys)
            EXPECT_THAT(page, testing::HasSubstr("\n| `" + std::string{key} + "` |")) << name;
    }
}

} // namespace
