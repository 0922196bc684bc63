#include <algorithm>
#include <filesystem>
#include <regex>
#include <set>

#include <nlohmann/json.hpp>

#include "simulator/config/GrabberReader.h"
#include "simulator/faults/FaultKind.h"
#include "unit/simulator/configuration_texts.h"
#include "unit/simulator/picture_files.h"

// The schema, the examples and the pages, next to what the library reads.

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::ContainerEq;
using testing::HasSubstr;
using testing::IsEmpty;
using zvsim_test::configured_by;
using Words = std::vector<std::string>;

const fs::path project{ZV_PROJECT_FOLDER};

std::string text_of(const char* file) { return zvsim_test::text_of(project / file); }

/// What the first group of an expression finds in a text.
Words found_in(const std::string& text, const std::string& expression)
{
    const std::regex regex{expression};
    Words words;
    for (std::sregex_iterator found{text.begin(), text.end(), regex}; found != std::sregex_iterator{};
         ++found)
        words.push_back((*found)[1]);
    return words;
}

Words fault_kinds()
{
    Words names;
    for (size_t kind = 0; kind < zvsim::fault_kind_count; ++kind)
        names.emplace_back(row_of(static_cast<zvsim::FaultKind>(kind)).name);
    return names;
}

/// Without order, and with repetitions.
std::multiset<std::string> collected(const Words& words) { return {words.begin(), words.end()}; }

class Schema : public testing::Test {
protected:
    const json schema = json::parse(text_of("docs/zv-grabber.schema.json")); // braces make a list
    /// By the name that messages give it.
    json section(const std::string& name) const
    {
        if (name == "configuration file")
            return schema;
        return schema.at("definitions").at(name == "'when'" ? "trigger" : name);
    }
    json property(const char* of, const char* key) const { return section(of).at("properties").at(key); }
};

TEST_F(Schema, DescribesExactlyTheKeysThatAreRead)
{
    std::set<std::string> sections;
    for (const auto& read : zvsim::configuration_sections()) {
        const json described = section(read.section); // must outlive its items
        std::set<std::string> keys;
        for (const auto& property : described.at("properties").items()) {
            keys.insert(property.key());
            EXPECT_NE("", property.value().value("description", "")) << property.key();
        }
        EXPECT_THAT(keys, ContainerEq(std::set<std::string>{read.keys.begin(), read.keys.end()}));
        EXPECT_EQ(json(false), described.at("additionalProperties")) << read.section;
        sections.insert(read.section);
    }
    EXPECT_EQ(6U, sections.size());
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

/// The words that the one message about a text says are allowed.
Words words_for(const std::string& text)
{
    const auto errors = configured_by(text)->errors;
    const std::string error = errors.size() == 1 ? errors[0] : "";
    return found_in(error.substr(error.rfind("llowed: ") + 8), "([^ ,]+)");
}

TEST_F(Schema, HasTheWordsThatAreRead)
{
    EXPECT_EQ(words_for("grabbers: [{protocol: x}]"), property("grabber", "protocol").at("enum"));
    for (const std::string key :
         {"test_pattern", "pixel_format_codes", "acquisition_mode", "trigger_source", "trigger_activation"})
        EXPECT_EQ(words_for(zvsim_test::camera_text(key + ": x")),
                  property("camera", key.c_str()).at("enum"));
    EXPECT_EQ(words_for(zvsim_test::camera_text("pixel_format: x")),
              schema.at("definitions").at("pixel_format").at("enum"));
    EXPECT_EQ(fault_kinds(), property("fault", "kind").at("enum"));
    Words functions;
    for (size_t function = 0; function < zvsim::function_count; ++function)
        functions.emplace_back(zvsim::row_of(static_cast<zvsim::Function>(function)).name);
    EXPECT_EQ(functions, property("fault", "function").at("enum"));
}

TEST_F(Schema, HasTheWordsOfTheFeatures)
{
    const std::string description = text_of("simulator/features/camera.xml");
    const std::pair<std::string, const char*> features[] = {{"TestPattern", "test_pattern"},
                                                            {"AcquisitionMode", "acquisition_mode"},
                                                            {"TriggerSource", "trigger_source"},
                                                            {"TriggerActivation", "trigger_activation"}};
    for (const auto& [feature, key] : features) {
        const size_t start = description.find("<Enumeration Name=\"" + feature + "\"");
        const std::string element =
            description.substr(start, description.find("</Enumeration>", start) - start);
        EXPECT_EQ(found_in(element, "<EnumEntry Name=\"(\\w+)\""), property("camera", key).at("enum"));
    }
}

void expect_no_errors_in(const fs::path& example)
{
    const auto configuration = configured_by(zvsim_test::text_of(example));
    EXPECT_THAT(configuration->errors, IsEmpty()) << example;
    EXPECT_FALSE(configuration->grabbers.empty()) << example;
}

const fs::path examples = project / "examples/grabbers";

TEST(Examples, AreReadWithoutErrors)
{
    for (const auto& entry : fs::directory_iterator{examples})
        if (entry.path().filename() != "pictures.yaml")
            expect_no_errors_in(entry.path());
}

TEST(Examples, NameAFolderOfPictures) { expect_no_errors_in(examples / "pictures.yaml"); }

TEST(Examples, ShowAsMuchAsThereCanBe)
{
    const auto configuration = configured_by(text_of("examples/grabbers/many.yaml"));
    ASSERT_EQ(zvsim::most_grabbers + 1, configuration->grabbers.size());
    for (size_t index = 0; index < zvsim::most_grabbers; ++index)
        EXPECT_EQ(zvsim::most_cameras, configuration->grabbers[index].cameras.size());
}

TEST(GrabberPage, ShowsFilesThatAreReadWithoutErrors)
{
    const Words blocks = found_in(text_of("docs/software-grabber.md"), "```yaml\n([^`]*)```");
    EXPECT_FALSE(blocks.empty());
    for (const std::string& block : blocks)
        EXPECT_THAT(configured_by(block)->errors, IsEmpty()) << block;
}

TEST(GrabberPage, NamesEveryKeyOfGrabbersAndCameras)
{
    const std::string page = text_of("docs/software-grabber.md");
    for (const auto& section : zvsim::configuration_sections()) {
        const std::string name{section.section};
        if (name != "grabber" && name != "camera")
            continue;
        for (const auto key : section.keys)
            EXPECT_THAT(page, HasSubstr("\n| `" + std::string{key} + "` |")) << name;
    }
}

TEST(FaultPage, NamesEveryKindOnceWithAnExampleThatIsRead)
{
    Words documented;
    for (const std::string& row :
         found_in(text_of("docs/faults.md"), "\n\\| `([^\n]*\\| `\\{kind: [^\n]*)")) {
        documented.push_back(row.substr(0, row.find('`')));
        const auto faults = found_in(row, "(\\{kind: [^`]*)");
        const auto configuration = configured_by("faults: [" + faults.at(0) + "]");
        EXPECT_THAT(configuration->errors, IsEmpty()) << row;
        ASSERT_EQ(1U, configuration->faults.faults.size()) << row;
        EXPECT_EQ(documented.back(), row_of(configuration->faults.faults.front().kind).name);
    }
    EXPECT_THAT(collected(documented), ContainerEq(collected(fault_kinds())));
}

TEST(FaultMatrix, TriesEveryKindOnTheProducer)
{
    const Words tried = found_in(text_of("tests/system/faults/matrix.cpp"), "row\\(\"([^,\"]*)");
    const Words kinds = fault_kinds();
    EXPECT_THAT((std::set<std::string>{tried.begin(), tried.end()}),
                ContainerEq(std::set<std::string>{kinds.begin(), kinds.end()}));
}

} // namespace
