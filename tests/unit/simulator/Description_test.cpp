#include <algorithm>
#include <regex>
#include <set>

#include <gtest/gtest.h>

#include "simulator/features/CameraRegisters.h"
#include "simulator/features/Description.h"
#include "simulator/features/GrabberRegisters.h"
#include "unit/simulator/described_models.h"
#include "unit/simulator/description_xml.h"
#include "unit/simulator/schema_order.h"

// The register descriptions: by the rules of GenApi 1.1, and register by register against the tables.

namespace {

using namespace zvsim_test;
using zvsim::RegisterKind;

/// A register as either side knows it.
struct Place {
    uint64_t address;
    uint64_t length;
    bool is_writable;
    /// Of the node.
    std::string kind;

    bool operator==(const Place& other) const
    {
        return address == other.address && length == other.length && is_writable == other.is_writable &&
               kind == other.kind;
    }
    bool operator<(const Place& other) const { return address < other.address; }
};

std::ostream& operator<<(std::ostream& stream, const Place& place)
{
    return stream << place.kind << " 0x" << std::hex << place.address << std::dec << " + " << place.length
                  << (place.is_writable ? " RW" : " RO");
}

std::string node_of(RegisterKind kind)
{
    if (kind == RegisterKind::text)
        return "StringReg";
    return kind == RegisterKind::floating ? "FloatReg" : "IntReg";
}

std::vector<Place> camera_places()
{
    std::vector<Place> places;
    for (const zvsim::CameraRow& row : zvsim::camera_rows())
        places.push_back({row.address, row.length, row.write != nullptr, node_of(row.kind)});
    return places;
}

std::vector<Place> grabber_places(size_t cameras)
{
    std::vector<Place> places;
    for (const zvsim::GrabberRow& row : zvsim::grabber_rows()) {
        const bool is_repeated = row.address >= zvsim::camera_block_address;
        for (size_t camera = 0; camera < (is_repeated ? cameras : 1); ++camera)
            places.push_back({row.address + camera * zvsim::camera_block_stride, row.length,
                              row.write != nullptr, node_of(row.kind)});
    }
    std::sort(places.begin(), places.end());
    return places;
}

struct Case {
    const char* name;
    std::shared_ptr<const zvsim::Description> description;
    /// By address.
    std::vector<Place> places;
};

class ADescription : public testing::TestWithParam<Case> {
protected:
    const DescriptionXml xml{GetParam().description->text};

    std::vector<const DescribedNode*> registers() const
    {
        std::vector<const DescribedNode*> found;
        for (const DescribedNode& node : xml.nodes()) {
            if (node.find("Address") != nullptr)
                found.push_back(&node);
        }
        return found;
    }
    /// For every value of the selector, when its address depends on one.
    std::vector<Place> places_of(const DescribedNode& node) const
    {
        const Place first{std::stoull(node.value_of("Address"), nullptr, 0),
                          std::stoull(node.value_of("Length")), node.value_of("AccessMode") == "RW",
                          node.kind};
        const DescribedProperty* const index = node.find("pIndex");
        if (index == nullptr)
            return {first};
        std::vector<Place> places;
        const uint64_t last = std::stoull(xml.find(index->value)->value_of("Max"));
        for (uint64_t value = 0; value <= last; ++value) {
            places.push_back(first);
            places.back().address += value * std::stoull(index->attributes.at("Offset"), nullptr, 0);
        }
        return places;
    }
};

TEST_P(ADescription, IsWellFormed)
{
    ASSERT_TRUE(xml.is_well_formed());
    EXPECT_EQ("RegisterDescription", xml.root());
    EXPECT_EQ(std::string::npos, GetParam().description->text.find('@')) << "something was not filled in";
    EXPECT_EQ(0U, GetParam().description->text.size() % 4);
}

TEST_P(ADescription, SaysWhichSchemaItFollows)
{
    const auto& attributes = xml.attributes();
    const std::regex identifier{"[A-Za-z][A-Za-z0-9_]*"};
    const std::regex guid{"[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}"};
    const auto at = [&](const char* name) { return attributes.count(name) != 0 ? attributes.at(name) : ""; };
    EXPECT_TRUE(std::regex_match(at("ModelName"), identifier));
    EXPECT_TRUE(std::regex_match(at("VendorName"), identifier));
    EXPECT_EQ("None", at("StandardNameSpace"));
    EXPECT_EQ("1", at("SchemaMajorVersion"));
    EXPECT_EQ("1", at("SchemaMinorVersion"));
    EXPECT_EQ("0", at("SchemaSubMinorVersion"));
    EXPECT_TRUE(std::regex_match(at("ProductGuid"), guid));
    EXPECT_TRUE(std::regex_match(at("VersionGuid"), guid));
    EXPECT_EQ("http://www.genicam.org/GenApi/Version_1_1 "
              "http://www.genicam.org/GenApi/GenApiSchema_Version_1_1.xsd",
              at("schemaLocation"));
}

TEST_P(ADescription, HasItsElementsInTheOrderOfTheSchema)
{
    for (const DescribedNode& node : xml.nodes())
        expect_order(node.kind, node.name, node.properties);
}

TEST_P(ADescription, HasUniqueNames)
{
    std::set<std::string> names;
    const std::regex identifier{"[A-Za-z][A-Za-z0-9_]*"};
    const auto expect_new = [&](const std::string& name) {
        EXPECT_TRUE(std::regex_match(name, identifier)) << name;
        EXPECT_TRUE(names.insert(name).second) << name << " stands there twice";
    };
    for (const DescribedNode& node : xml.nodes()) {
        expect_new(node.name);
        for (const DescribedProperty& property : node.properties) {
            if (property.name == "EnumEntry")
                expect_new("EnumEntry_" + node.name + "_" + property.attributes.at("Name"));
        }
    }
}

TEST_P(ADescription, NamesOnlyNodesThatAreThere)
{
    for (const DescribedNode& node : xml.nodes()) {
        for (const DescribedProperty& property : node.properties) {
            EXPECT_TRUE(!property.is_reference() || xml.find(property.value) != nullptr)
                << property.value << " in " << node.name;
        }
    }
}

TEST_P(ADescription, ReachesEveryNodeFromTheRoot)
{
    std::set<std::string> reached{"Root"};
    std::vector<std::string> pending{"Root"};
    while (!pending.empty()) {
        const DescribedNode* const node = xml.find(pending.back());
        pending.pop_back();
        ASSERT_NE(nullptr, node);
        for (const DescribedProperty& property : node->properties) {
            if (property.is_reference() && reached.insert(property.value).second)
                pending.push_back(property.value);
        }
    }
    for (const DescribedNode& node : xml.nodes())
        EXPECT_EQ(1U, reached.count(node.name)) << node.name;
}

TEST_P(ADescription, ExplainsItsFeatures)
{
    for (const DescribedNode& category : xml.nodes()) {
        for (const DescribedProperty& feature : category.properties) {
            if (feature.name != "pFeature")
                continue;
            const DescribedNode& node = *xml.find(feature.value);
            for (const char* const element : {"ToolTip", "DisplayName", "Visibility"})
                EXPECT_NE(nullptr, node.find(element)) << element << " of " << node.name;
        }
    }
}

TEST_P(ADescription, GoesThroughThePortOfTheInterface)
{
    const DescribedNode* const port = xml.find("Device");
    ASSERT_NE(nullptr, port);
    EXPECT_EQ("Port", port->kind);
    for (const DescribedNode* const node : registers())
        EXPECT_EQ("Device", node->value_of("pPort")) << node->name;
}

TEST_P(ADescription, HasBigEndianRegistersOfWholeWords)
{
    for (const DescribedNode* const node : registers()) {
        EXPECT_EQ(node->kind == "StringReg" ? "" : "BigEndian", node->value_of("Endianess")) << node->name;
        for (const Place& place : places_of(*node)) {
            EXPECT_EQ(0U, place.address % 4) << node->name;
            EXPECT_EQ(0U, place.length % 4) << node->name;
            EXPECT_LE(4U, place.length) << node->name;
            EXPECT_LT(place.address + place.length, zvsim::description_address) << node->name;
        }
    }
}

TEST_P(ADescription, HasExactlyTheRegistersOfTheTable)
{
    std::vector<Place> described;
    for (const DescribedNode* const node : registers()) {
        const auto places = places_of(*node);
        described.insert(described.end(), places.begin(), places.end());
    }
    std::sort(described.begin(), described.end());
    EXPECT_EQ(GetParam().places, described);
}

TEST_P(ADescription, CallsRegistersAsTheTableDoes)
{
    for (const DescribedNode* const node : registers()) {
        const std::string name = std::regex_replace(node->name, std::regex{"Register$"}, "");
        const uint64_t address = std::stoull(node->value_of("Address"), nullptr, 0);
        const auto* const camera_row = zvsim::find_camera_row(name);
        const auto* const grabber_row = zvsim::find_grabber_row(name);
        const bool is_camera_row = camera_row != nullptr && camera_row->address == address;
        const bool is_grabber_row = grabber_row != nullptr && grabber_row->address == address;
        EXPECT_TRUE(is_camera_row || is_grabber_row) << node->name;
    }
}

TEST_P(ADescription, HasTablesWithoutOverlaps)
{
    uint64_t end = 0;
    for (const Place& place : GetParam().places) {
        EXPECT_LE(end, place.address) << place;
        end = place.address + place.length;
    }
}

TEST_P(ADescription, HasAUrlThatFits)
{
    const std::string url = GetParam().description->url();
    char expected[64];
    std::snprintf(expected, sizeof expected, ".xml;10000000;%zx", GetParam().description->text.size());
    EXPECT_EQ(0U, url.rfind("Local:", 0));
    EXPECT_EQ(url.size() - std::string{expected}.size(), url.rfind(expected));
    EXPECT_LT(url.size(), 260U);
}

std::vector<Case> cases()
{
    zvsim::CameraModel strange = camera_model();
    strange.model = "4\"<&>\xFC " + std::string(58, 'm');
    strange.vendor = "";
    strange.format_codes = zvsim::FormatCodes::coaxpress;
    for (const zvsim::PixelFormat& format : zvsim::pixel_formats())
        strange.formats.push_back(&format);
    zvsim::GrabberModel empty = grabber_model();
    empty.cameras.clear();
    return {
        {"Camera", zvsim::describe_camera(camera_model()), camera_places()},
        {"StrangeCamera", zvsim::describe_camera(strange), camera_places()},
        {"Grabber", zvsim::describe_grabber(grabber_model()), grabber_places(3)},
        {"GrabberOfNone", zvsim::describe_grabber(empty), grabber_places(1)},
    };
}

INSTANTIATE_TEST_SUITE_P(All, ADescription, testing::ValuesIn(cases()),
                         [](const auto& instance) { return instance.param.name; });

} // namespace
