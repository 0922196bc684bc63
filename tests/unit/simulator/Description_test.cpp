#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <regex>
#include <set>
#include <tuple>

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include "simulator/features/CameraRegisters.h"
#include "simulator/features/Description.h"
#include "simulator/features/GrabberRegisters.h"

// The register descriptions: by the rules of GenApi 1.1, register by register against the tables, and limit
// by limit against what the registers take.

namespace {

using zvsim::RegisterKind;

/// The description, a node of it, an element of a node, or an element of an enumeration's entry.
struct Element {
    /// "Integer", "pFeature".
    std::string kind;
    /// Its attribute "Name", if it has one.
    std::string name;
    /// Without elements in it.
    std::string value;
    std::map<std::string, std::string> attributes;
    std::vector<Element> children;

    bool is_reference() const
    {
        return kind.size() > 1 && kind[0] == 'p' && kind[1] >= 'A' && kind[1] <= 'Z';
    }
    /// The first element of a kind; null when there is none.
    const Element* find(const std::string& wanted, std::string Element::*by = &Element::kind) const
    {
        const auto found = std::find_if(children.begin(), children.end(),
                                        [&](const Element& child) { return child.*by == wanted; });
        return found != children.end() ? &*found : nullptr;
    }
    const Element* find_node(const std::string& of_name) const { return find(of_name, &Element::name); }
    /// The value of the first element of a kind, or nothing.
    std::string value_of(const std::string& of_kind) const
    {
        const Element* const found = find(of_kind);
        return found != nullptr ? found->value : "";
    }
};

std::string text_of(const xmlChar* text)
{
    return text != nullptr ? reinterpret_cast<const char*>(text) : "";
}

Element element_of(const xmlNode& xml)
{
    Element element{text_of(xml.name), "", "", {}, {}};
    for (const xmlAttr* at = xml.properties; at != nullptr; at = at->next)
        element.attributes[text_of(at->name)] = at->children != nullptr ? text_of(at->children->content) : "";
    element.name = element.attributes["Name"];
    for (const xmlNode* child = xml.children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE)
            element.children.push_back(element_of(*child));
    }
    if (element.children.empty() && xml.children != nullptr)
        element.value = text_of(xml.children->content);
    return element;
}

/// The elements of each kind of node, in the order in which the schema wants them.
const std::map<std::string, std::string>& orders()
{
    static const std::string common{
        " Extension ToolTip Description DisplayName Visibility DocuURL IsDeprecated EventID pIsImplemented "
        "pIsAvailable pIsLocked pBlockPolling ImposedAccessMode pError pAlias pCastAlias "};
    static const std::string in_register =
        common + "Address pAddress pIndex Length AccessMode pPort Cachable PollingTime pInvalidator ";
    static const std::string limits{"pInvalidator Streamable Value pValue Min pMin Max pMax Inc "};
    static const std::map<std::string, std::string> table{
        {"Category", common + "pFeature "},
        {"Integer", common + limits + "pInc Unit Representation pSelected "},
        {"IntReg", in_register + "Sign Endianess Unit Representation pSelected "},
        {"FloatReg", in_register + "Endianess Unit Representation DisplayNotation DisplayPrecision "},
        {"StringReg", in_register},
        {"Float", common + limits + "Unit Representation DisplayNotation DisplayPrecision "},
        {"Enumeration", common + "pInvalidator Streamable EnumEntry Value pValue pSelected PollingTime "},
        {"EnumEntry", common + "Value NumericValue Symbolic IsSelfClearing "},
        {"Command", common + "pInvalidator Value pValue CommandValue pCommandValue PollingTime "},
        {"Boolean", common + "pInvalidator Streamable Value pValue OnValue OffValue "},
        {"IntSwissKnife",
         common + "pInvalidator Streamable pVariable Constant Expression Formula Unit Representation "},
        {"Port", common + "ChunkID pChunkID SwapEndianess "},
    };
    return table;
}

/// Of no kind when the text is not well-formed.
Element read_description(const std::string& text)
{
    const std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> document{
        xmlReadMemory(text.data(), static_cast<int>(text.size()), "description.xml", nullptr,
                      XML_PARSE_NONET),
        [](xmlDoc* read) { xmlFreeDoc(read); }};
    const xmlNode* const root = document != nullptr ? xmlDocGetRootElement(document.get()) : nullptr;
    return root != nullptr ? element_of(*root) : Element{};
}

/// Expects that a node has only elements that its kind knows, in the order of the GenApi 1.1 schema.
void expect_order(const Element& node)
{
    ASSERT_EQ(1U, orders().count(node.kind)) << node.kind << " " << node.name;
    const std::string& order = orders().at(node.kind);
    static const std::set<std::string> several{"pFeature", "pSelected", "EnumEntry", "pVariable",
                                               "pIndex",   "Address",   "pAddress",  "pInvalidator"};
    size_t place = 0;
    std::string last;
    for (const Element& element : node.children) {
        place = order.find(" " + element.kind + " ", place);
        ASSERT_NE(std::string::npos, place)
            << element.kind << " of " << node.name << " is unknown or misplaced";
        EXPECT_TRUE(element.kind != last || several.count(last) != 0)
            << element.kind << " twice in " << node.name;
        last = element.kind;
        if (element.kind == "EnumEntry")
            expect_order(element);
    }
}

zvsim::CameraModel camera_model()
{
    zvsim::CameraModel model;
    model.vendor = "Test Maker";
    model.model = "Test Camera";
    model.sensor_width = model.start.width = 64;
    model.sensor_height = model.start.height = 48;
    model.formats = {&zvsim::pixel_format("Mono8"), &zvsim::pixel_format("BayerRG12"),
                     &zvsim::pixel_format("RGB8")};
    model.start.format = model.formats.front();
    return model;
}

zvsim::GrabberModel grabber_model()
{
    zvsim::GrabberModel model;
    model.display_name = "Test Grabber";
    model.cameras = {camera_model(), camera_model(), camera_model()};
    return model;
}

/// A register as either side knows it: address, length, whether it is writable, kind of node.
using Place = std::tuple<uint64_t, uint64_t, bool, std::string>;

template <class Row>
Place place_of(const Row& row, uint64_t offset = 0)
{
    const char* const node = row.kind == RegisterKind::text       ? "StringReg"
                             : row.kind == RegisterKind::floating ? "FloatReg"
                                                                  : "IntReg";
    return {row.address + offset, row.length, row.write != nullptr, node};
}

std::vector<Place> camera_places()
{
    std::vector<Place> places;
    for (const zvsim::CameraRow& row : zvsim::camera_rows())
        places.push_back(place_of(row));
    return places;
}

std::vector<Place> grabber_places(size_t cameras)
{
    std::vector<Place> places;
    for (const zvsim::GrabberRow& row : zvsim::grabber_rows()) {
        const bool is_repeated = row.address >= zvsim::camera_block_address;
        for (size_t camera = 0; camera < (is_repeated ? cameras : 1); ++camera)
            places.push_back(place_of(row, camera * zvsim::camera_block_stride));
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
    const std::string& text() const { return GetParam().description->text; }

    std::vector<const Element*> registers() const
    {
        std::vector<const Element*> found;
        for (const Element& node : xml.children) {
            if (node.find("Address") != nullptr)
                found.push_back(&node);
        }
        return found;
    }
    /// For every value of the selector, when its address depends on one.
    std::vector<Place> places_of(const Element& node) const
    {
        const Element* const index = node.find("pIndex");
        const uint64_t last =
            index != nullptr ? std::stoull(xml.find_node(index->value)->value_of("Max")) : 0;
        const uint64_t step = index != nullptr ? std::stoull(index->attributes.at("Offset"), nullptr, 0) : 0;
        std::vector<Place> places;
        for (uint64_t value = 0; value <= last; ++value)
            places.emplace_back(std::stoull(node.value_of("Address"), nullptr, 0) + value * step,
                                std::stoull(node.value_of("Length")), node.value_of("AccessMode") == "RW",
                                node.kind);
        return places;
    }

    const Element xml{read_description(GetParam().description->text)};
};

TEST_P(ADescription, IsWellFormedAndSaysWhichSchemaItFollows)
{
    ASSERT_TRUE(!xml.kind.empty());
    EXPECT_EQ("RegisterDescription", xml.kind);
    EXPECT_EQ(std::string::npos, text().find('@')) << "something was not filled in";
    EXPECT_EQ(std::string::npos, text().find("ChunkModeActive"));
    EXPECT_EQ(0U, text().size() % 4);
    const std::string identifier{"[A-Za-z][A-Za-z0-9_]*"};
    const std::string guid{"[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}"};
    const std::map<std::string, std::string> attributes{
        {"ModelName", identifier},
        {"VendorName", identifier},
        {"StandardNameSpace", "None"},
        {"SchemaMajorVersion", "1"},
        {"SchemaMinorVersion", "1"},
        {"SchemaSubMinorVersion", "0"},
        {"ProductGuid", guid},
        {"VersionGuid", guid},
        {"schemaLocation", "http://www\\.genicam\\.org/GenApi/Version_1_1 "
                           "http://www\\.genicam\\.org/GenApi/GenApiSchema_Version_1_1\\.xsd"}};
    for (const auto& [name, expected] : attributes) {
        ASSERT_EQ(1U, xml.attributes.count(name)) << name;
        EXPECT_TRUE(std::regex_match(xml.attributes.at(name), std::regex{expected})) << name;
    }
}

TEST_P(ADescription, HasItsElementsInTheOrderOfTheSchema)
{
    for (const Element& node : xml.children)
        expect_order(node);
}

TEST_P(ADescription, HasUniqueNames)
{
    std::set<std::string> names;
    const std::regex identifier{"[A-Za-z][A-Za-z0-9_]*"};
    const auto expect_new = [&](const std::string& name) {
        EXPECT_TRUE(std::regex_match(name, identifier)) << name;
        EXPECT_TRUE(names.insert(name).second) << name << " is used twice";
    };
    for (const Element& node : xml.children) {
        expect_new(node.name);
        for (const Element& property : node.children) {
            if (property.kind == "EnumEntry")
                expect_new("EnumEntry_" + node.name + "_" + property.name);
        }
    }
}

TEST_P(ADescription, ReachesEveryNodeFromTheRootAndNoneThatIsMissing)
{
    std::set<std::string> reached{"Root"};
    std::vector<std::string> pending{"Root"};
    while (!pending.empty()) {
        const std::string name = pending.back();
        pending.pop_back();
        const Element* const node = xml.find_node(name);
        ASSERT_NE(nullptr, node) << name;
        for (const Element& property : node->children) {
            if (property.is_reference() && reached.insert(property.value).second)
                pending.push_back(property.value);
        }
    }
    for (const Element& node : xml.children)
        EXPECT_EQ(1U, reached.count(node.name)) << node.name;
}

TEST_P(ADescription, ExplainsItsFeatures)
{
    for (const Element& category : xml.children) {
        for (const Element& feature : category.children) {
            if (feature.kind != "pFeature")
                continue;
            const Element& node = *xml.find_node(feature.value);
            for (const char* const element : {"ToolTip", "DisplayName", "Visibility"})
                EXPECT_NE(nullptr, node.find(element)) << element << " of " << node.name;
        }
    }
}

TEST_P(ADescription, HasBigEndianRegistersOfWholeWordsBehindThePort)
{
    const Element* const port = xml.find_node("Device");
    ASSERT_NE(nullptr, port);
    EXPECT_EQ("Port", port->kind);
    for (const Element* const node : registers()) {
        EXPECT_EQ("Device", node->value_of("pPort")) << node->name;
        EXPECT_EQ(node->kind == "StringReg" ? "" : "BigEndian", node->value_of("Endianess")) << node->name;
        for (const auto& [address, length, is_writable, kind] : places_of(*node)) {
            EXPECT_EQ(0U, address % 4 + length % 4) << node->name;
            EXPECT_LE(4U, length) << node->name;
            EXPECT_LT(address + length, zvsim::description_address) << node->name;
        }
    }
}

TEST_P(ADescription, HasExactlyTheRegistersOfTheTableByTheirNames)
{
    std::vector<Place> described;
    for (const Element* const node : registers()) {
        const auto places = places_of(*node);
        described.insert(described.end(), places.begin(), places.end());
        const std::string name = std::regex_replace(node->name, std::regex{"Register$"}, "");
        const uint64_t address = std::get<0>(places.front());
        const auto* const camera_row = zvsim::find_camera_row(name);
        const auto* const grabber_row = zvsim::find_grabber_row(name);
        EXPECT_TRUE((camera_row != nullptr && camera_row->address == address) ||
                    (grabber_row != nullptr && grabber_row->address == address))
            << node->name;
    }
    std::sort(described.begin(), described.end());
    EXPECT_EQ(GetParam().places, described);
    uint64_t end = 0;
    for (const auto& [address, length, is_writable, kind] : GetParam().places) {
        EXPECT_LE(end, address) << "registers overlap";
        end = address + length;
    }
}

TEST_P(ADescription, HasAUrlThatFits)
{
    const std::string url = GetParam().description->url();
    char expected[64];
    std::snprintf(expected, sizeof expected, ".xml;10000000;%zx", text().size());
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
    return {{"Camera", zvsim::describe_camera(camera_model()), camera_places()},
            {"StrangeCamera", zvsim::describe_camera(strange), camera_places()},
            {"Grabber", zvsim::describe_grabber(grabber_model()), grabber_places(3)},
            {"GrabberOfNone", zvsim::describe_grabber(empty), grabber_places(1)}};
}

INSTANTIATE_TEST_SUITE_P(All, ADescription, testing::ValuesIn(cases()),
                         [](const auto& instance) { return instance.param.name; });

using Entries = std::map<std::string, std::string>;

Entries entries_of(const Element& enumeration)
{
    Entries entries;
    for (const Element& property : enumeration.children) {
        if (property.kind == "EnumEntry")
            entries[property.name] = property.children.back().value;
    }
    return entries;
}

TEST(CameraDescription, OffersTheFormatsOfTheModel)
{
    zvsim::CameraModel model = camera_model();
    const Element pfnc = read_description(describe_camera(model)->text);
    EXPECT_EQ((Entries{{"Mono8", "17301505"}, {"BayerRG12", "17825809"}, {"RGB8", "35127316"}}),
              entries_of(*pfnc.find_node("PixelFormat")));
    EXPECT_EQ((Entries{{"Bpp8", "8"}, {"Bpp16", "16"}, {"Bpp24", "24"}}),
              entries_of(*pfnc.find_node("PixelSize")));
    model.format_codes = zvsim::FormatCodes::coaxpress;
    const Element coaxpress = read_description(describe_camera(model)->text);
    EXPECT_EQ((Entries{{"Mono8", "257"}, {"BayerRG12", "803"}, {"RGB8", "1025"}}),
              entries_of(*coaxpress.find_node("PixelFormat")));
}

TEST(CameraDescription, HasAnotherVersionWhenItSaysSomethingElse)
{
    zvsim::CameraModel model = camera_model();
    const auto version = [](const zvsim::CameraModel& of) {
        return read_description(describe_camera(of)->text).attributes.at("VersionGuid");
    };
    const std::string first = version(model);
    EXPECT_EQ(first, version(camera_model()));
    model.formats.pop_back();
    EXPECT_NE(first, version(model));
}

TEST(CameraDescription, IsKeptOnceForCamerasOfAKind)
{
    const zvsim::GrabberModel model = grabber_model();
    const zvsim::GrabberDevice device{model};
    EXPECT_EQ(&device.cameras()[0]->description(), &device.cameras()[2]->description());
}

TEST(CameraDescription, IsThatOfAnotherCameraOnlyIfItsTextIsTheSame)
{
    const zvsim::CameraModel first = camera_model();
    const std::vector<void (*)(zvsim::CameraModel&)> changes{
        [](zvsim::CameraModel& model) { model.vendor = "Another"; },
        [](zvsim::CameraModel& model) { model.model = "Another"; },
        [](zvsim::CameraModel& model) { model.serial_number = "Another"; },
        [](zvsim::CameraModel& model) { model.sensor_width *= 2; },
        [](zvsim::CameraModel& model) { model.formats.pop_back(); },
        [](zvsim::CameraModel& model) { model.format_codes = zvsim::FormatCodes::coaxpress; },
    };
    for (const auto change : changes) {
        zvsim::CameraModel other = camera_model();
        change(other);
        EXPECT_EQ(describe_camera(first)->text == describe_camera(other)->text,
                  are_described_alike(first, other));
    }
}

/// A camera whose registers take what its description promises.
class DescribedLimits : public testing::Test {
protected:
    bool takes(const std::string& feature, const zvsim::RegisterValue& value)
    {
        const zvsim::CameraRow& row = *zvsim::find_camera_row(feature);
        unsigned char bytes[8];
        encode(value, row.kind, bytes, row.length);
        zvsim::CameraSpace space{camera};
        return space.write(row.address, bytes, row.length) == row.length;
    }

    const zvsim::GrabberModel grabber{grabber_model()};
    zvsim::CameraDevice camera{grabber.cameras.front(), grabber};
    const Element xml{read_description(camera.description().text)};
};

TEST_F(DescribedLimits, OfNumbersAreThoseOfTheCamera)
{
    size_t checked = 0;
    for (const Element& node : xml.children) {
        if (node.kind != "Float" || node.find("Min") == nullptr)
            continue;
        const double lowest = std::stod(node.value_of("Min"));
        const double highest = std::stod(node.value_of("Max"));
        EXPECT_TRUE(takes(node.name, lowest) && takes(node.name, highest)) << node.name;
        EXPECT_FALSE(takes(node.name, std::nextafter(lowest, -INFINITY))) << node.name;
        EXPECT_FALSE(takes(node.name, std::nextafter(highest, INFINITY))) << node.name;
        ++checked;
    }
    EXPECT_EQ(3U, checked);
    for (const char* const name : {"AcquisitionFrameCount", "TLParamsLocked"}) {
        const int64_t lowest = std::stoll(xml.find_node(name)->value_of("Min"));
        const int64_t highest = std::stoll(xml.find_node(name)->value_of("Max"));
        EXPECT_TRUE(takes(name, lowest) && takes(name, highest)) << name;
        EXPECT_FALSE(takes(name, lowest - 1) || takes(name, highest + 1)) << name;
    }
}

TEST_F(DescribedLimits, OfEnumerationsAreThoseOfTheCamera)
{
    size_t checked = 0;
    for (const Element& node : xml.children) {
        if (node.kind != "Enumeration" || zvsim::find_camera_row(node.name)->write == nullptr)
            continue;
        int64_t highest = 0;
        for (const auto& [name, value] : entries_of(node)) {
            EXPECT_TRUE(takes(node.name, int64_t{std::stoll(value)})) << node.name << " " << name;
            highest = std::max<int64_t>(highest, std::stoll(value));
        }
        EXPECT_FALSE(takes(node.name, highest + 1)) << node.name;
        ++checked;
    }
    EXPECT_EQ(7U, checked);
}

} // namespace
