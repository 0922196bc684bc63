#include <string>
#include <utility>
#include <vector>

#include "unit/genapi/support.h"

namespace zvgenapi::test {

namespace {

std::vector<std::string> names_of(const std::vector<Node>& nodes)
{
    std::vector<std::string> names;
    for (const Node& node : nodes)
        names.push_back(node.name());
    return names;
}

} // namespace

TEST(Maps, FindNodesByNameAndPlace)
{
    const Device device(integer("Width", "<Value>1</Value>") + integer("Height", "<Value>1</Value>") +
                        node("Category", "Root",
                             "<pFeature>Width</pFeature><pFeature>Gone</pFeature>"
                             "<pFeature>Height</pFeature>"));
    const NodeMap& map = device.map;
    EXPECT_EQ(4U, map.size());
    EXPECT_EQ(map.get("Height"), map.at(1));
    EXPECT_EQ(1U, map.get("Height").index());
    EXPECT_NE(map.at(0), map.at(1));
    EXPECT_FALSE(map.find("Depth"));
    EXPECT_EQ("Root", map.root().name());
    EXPECT_THAT(names_of(map.root().as<Category>().features()), ElementsAre("Width", "Height"));
    EXPECT_EQ("unknown_node", kind_of_error([&] { map.at(4); }));
    EXPECT_FALSE(Device(integer("Root", "<Value>1</Value>")).map.root());
}

TEST(Maps, SuggestNamesForOneThatIsNotThere)
{
    const Device device(integer("Width", "<Value>1</Value>") + integer("WidthMax", "<Value>1</Value>"));
    const std::pair<const char*, const char*> cases[] = {
        {"Wdith", "there is no node Wdith; did you mean Width?"},
        {"width", "did you mean Width?"},
        {"Zoom", "there is no node Zoom"},
        {"", "there is no node "}};
    for (const auto& [name, text] : cases)
        EXPECT_THAT(error_of([&, name = name] { device.map.get(name); }),
                    testing::Pair("unknown_node", HasSubstr(text)));
    EXPECT_EQ("unknown_node", kind_of_error([&] { device.map.get(std::string(100000, 'x')); }));
}

TEST(Maps, CanBeMovedWithTheirHandles)
{
    Memory memory;
    memory.put(0, {9});
    NodeMap first = NodeMap::load(description_of(reg("A", "0") + "<Port Name=\"Device\"/>"));
    first.connect("Device", memory);
    const auto a = first.get("A").as<Integer>();
    NodeMap second = std::move(first);
    EXPECT_EQ(9, a.value());
    NodeMap third = NodeMap::load(description_of(""));
    third = std::move(second);
    EXPECT_EQ(9, third.get("A").as<Integer>().value());
}

TEST(Maps, MayBeUsedByTheirPorts)
{
    Device device(node("IntReg", "A", place("0", 4)) + integer("B", "<Value>3</Value>"));
    std::int64_t seen = 0;
    device.memory.on_write = [&] { seen = device.number("B"); };
    device.integer("A").set(1);
    EXPECT_EQ(3, seen);
}

TEST(Nodes, TellWhatTheDescriptionSays)
{
    const Device device(
        "<Integer Name=\"A\" NameSpace=\"Standard\"><ToolTip>tip</ToolTip><Description>long</Description>"
        "<DisplayName>The A</DisplayName><Visibility>Expert</Visibility><DocuURL>http://a</DocuURL>"
        "<IsDeprecated>Yes</IsDeprecated><EventID>9A</EventID><Streamable>Yes</Streamable>"
        "<ImposedVisibility>Guru</ImposedVisibility><pError>C</pError><pAlias>B</pAlias><pCastAlias>C</"
        "pCastAlias>"
        "<pValue>B</pValue><pSelected>C</pSelected><Unit>mm</Unit><Representation>HexNumber</"
        "Representation></Integer>" +
        integer("B", "<Value>1</Value><Unit>km</Unit>") + integer("C", "<pValue>B</pValue><pMin>B</pMin>") +
        node("Category", "Root", "<pFeature>A</pFeature>"));
    const Node a = device.map.get("A");
    EXPECT_EQ("tip", a.tool_tip());
    EXPECT_EQ("long", a.description());
    EXPECT_EQ("The A", a.display_name());
    EXPECT_EQ(Visibility::guru, a.visibility());
    EXPECT_EQ("http://a", a.docu_url());
    EXPECT_TRUE(a.is_deprecated());
    EXPECT_EQ("9A", a.event_id());
    EXPECT_TRUE(a.is_streamable());
    EXPECT_TRUE(a.is_feature());
    EXPECT_EQ("C", a.error_node().name());
    EXPECT_EQ("B", a.alias().name());
    EXPECT_EQ("C", a.cast_alias().name());
    EXPECT_THAT(names_of(a.selected()), ElementsAre("C"));
    EXPECT_THAT(names_of(device.map.get("C").selecting()), ElementsAre("A"));
    EXPECT_THAT(names_of(a.children()), ElementsAre("C", "B"));
    EXPECT_EQ("Std::A", a.full_name());
    EXPECT_EQ(NameSpace::standard, a.name_space());
    EXPECT_EQ(NodeType::integer, a.type());
    EXPECT_EQ(InterfaceType::integer, a.interface_type());
    EXPECT_EQ(3, a.line());
    EXPECT_EQ("mm", a.as<Integer>().unit());
    EXPECT_EQ(Representation::hex_number, a.as<Integer>().representation());
    EXPECT_EQ("HexNumber", a.property("Representation"));
    EXPECT_EQ(std::nullopt, a.property("Min"));
    EXPECT_EQ(std::nullopt, a.property("Nonsense"));
    EXPECT_THAT(a.properties("pSelected"), ElementsAre("C"));
    EXPECT_EQ("km", device.integer("C").unit()) << "that of the node below";
}

TEST(Nodes, AreFeaturesIfTheyAreReachedFromTheRoot)
{
    const NodeMap map = NodeMap::load(description_of(
        node("Category", "Root", "<pFeature>Inner</pFeature><pFeature>Gone</pFeature>") +
        node("Category", "Inner",
             "<pFeature>A</pFeature><pFeature>Root</pFeature><pFeature>Inner</pFeature>") +
        node("Category", "Apart", "<pFeature>B</pFeature>") +
        integer("A", "<Value>1</Value><pSelected>B</pSelected>") + integer("B", "<Value>1</Value>")));
    for (const char* const name : {"Inner", "A", "Root"})
        EXPECT_TRUE(map.get(name).is_feature()) << name;
    for (const char* const name : {"Apart", "B"})
        EXPECT_FALSE(map.get(name).is_feature()) << name;
}

TEST(Nodes, HaveDefaults)
{
    const Device device(integer("A", "<Value>1</Value>") + node("Float", "F", "<Value>1</Value>"));
    const Node a = device.map.get("A");
    EXPECT_EQ("A", a.display_name());
    EXPECT_EQ(Visibility::beginner, a.visibility());
    EXPECT_EQ(Representation::pure_number, a.as<Integer>().representation());
    EXPECT_EQ(DisplayNotation::automatic, device.floating("F").display_notation());
    EXPECT_EQ(6, device.floating("F").display_precision());
    EXPECT_EQ(Representation::pure_number, device.floating("F").representation());
    EXPECT_EQ("", device.floating("F").unit());
    EXPECT_FALSE(a.is_deprecated() || a.is_streamable() || a.is_feature());
    EXPECT_FALSE(a.alias() || a.cast_alias() || a.error_node());
    EXPECT_EQ("", a.tool_tip() + a.description() + a.docu_url() + a.event_id());
    EXPECT_THAT(a.extensions(), IsEmpty());
}

TEST(Nodes, AreOneOfTheHandlesOrAnother)
{
    const Device device(integer("A", "<Value>1</Value>") + node("SmartFeature", "S", ""));
    const Node a = device.map.get("A");
    EXPECT_TRUE(a.is<Integer>());
    EXPECT_FALSE(a.is<Float>() || a.is<Boolean>() || a.is<Command>() || a.is<Enumeration>() ||
                 a.is<EnumEntry>() || a.is<String>() || a.is<Register>() || a.is<Category>() ||
                 a.is<PortNode>());
    EXPECT_FALSE(a.try_as<Float>());
    EXPECT_TRUE(a.try_as<Integer>());
    EXPECT_THAT(error_of([&] { a.as<Float>(); }),
                testing::Pair("wrong_type", "A (line 3): the node has the interface IInteger, not IFloat"));
    EXPECT_EQ("wrong_type", kind_of_error([] { Node().as<Float>(); }));
    EXPECT_EQ(InterfaceType::value, device.map.get("S").interface_type());
    EXPECT_STREQ("IValue", name_of(InterfaceType::value));
}

TEST(Errors, NameNodeAndLine)
{
    const Error whole(ErrorKind::limit, "too much");
    EXPECT_STREQ("too much", whole.what());
    const Error line(ErrorKind::description, "odd", {}, 7);
    EXPECT_STREQ("line 7: odd", line.what());
    const Error node(ErrorKind::value, "odd", "A", 7);
    EXPECT_STREQ("A (line 7): odd", node.what());
    EXPECT_EQ("A", node.node());
    EXPECT_EQ(7, node.line());
    EXPECT_EQ("odd", node.message());
    const char* const kinds[] = {"description", "limit",   "unknown_node", "wrong_type", "access",  "range",
                                 "value",       "formula", "cycle",        "port",       "time_out"};
    for (int i = 0; i < static_cast<int>(std::size(kinds)); ++i)
        EXPECT_STREQ(kinds[i], error_kind_name(static_cast<ErrorKind>(i)));
}

} // namespace zvgenapi::test
