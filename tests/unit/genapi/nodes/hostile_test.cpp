#include <cstring>
#include <string>

#include "unit/genapi/support.h"

namespace zvgenapi::test {

namespace {

/// Memory that has a byte wherever one is asked for.
class EndlessMemory : public Port {
public:
    void read(std::uint64_t /*address*/, void* data, std::size_t size) override
    {
        std::memset(data, 'x', size);
        bytes_read += size;
    }
    void write(std::uint64_t /*address*/, const void* /*data*/, std::size_t /*size*/) override {}

    std::uint64_t bytes_read{0};
};

std::string name(const char* prefix, int number) { return prefix + std::to_string(number); }

/// N0, and nodes above it, each of which asks for the one below twice.
std::string doubling(int count, const std::string& element, const std::string& lowest)
{
    std::string nodes = lowest;
    for (int i = 1; i <= count; ++i)
        nodes += node(element, name("N", i),
                      variable("X", name("N", i - 1)) + variable("Y", name("N", i - 1)) +
                          "<Formula>X + Y</Formula>");
    return nodes;
}

} // namespace

TEST(Hostile, ChainsEndAtALimit)
{
    std::string nodes = integer("N0", "<Value>7</Value>");
    for (int i = 1; i <= 20000; ++i)
        nodes += integer(name("N", i), "<pValue>" + name("N", i - 1) + "</pValue>");
    const Device device(nodes);
    EXPECT_EQ(7, device.number("N150"));
    for (const auto& query : std::vector<std::function<void(Integer)>>{
             [](const Integer& n) { n.value(); }, [](Integer n) { n.set(1); },
             [](const Integer& n) { n.maximum(); }, [](const Integer& n) { n.access(); },
             [](const Integer& n) { n.is_locked(); }, [](const Integer& n) { n.valid_values(); },
             [](const Integer& n) { n.unit(); }, [](const Integer& n) { n.to_string(); }})
        EXPECT_EQ("limit", kind_of_error([&] { query(device.integer("N20000")); }));
    EXPECT_EQ(Caching::write_through, device.map.get("N20000").caching());
    device.map.get("N20000").invalidate();
}

TEST(Hostile, ValuesThatAreAskedForAgainAreKnown)
{
    const Device device(doubling(60, "IntSwissKnife", integer("N0", "<Value>1</Value>")));
    EXPECT_EQ(std::int64_t{1} << 60U, device.number("N60"));
}

TEST(Hostile, QuestionsEndAtALimitOfSteps)
{
    Limits limits;
    limits.evaluation_steps = 100;
    const Device device(doubling(60, "IntSwissKnife", integer("N0", "<Value>1</Value>")), limits);
    EXPECT_EQ("limit", kind_of_error([&] { device.number("N60"); }));
    EXPECT_EQ(2, device.number("N1")) << "each question has its own";
    // Limits are not kept, so that they double with every level.
    std::string nodes = integer("N0", "<Value>1</Value><Max>1</Max>");
    for (int i = 1; i <= 60; ++i) {
        nodes += integer(name("N", i), "<Value>1</Value><pMax>" + name("K", i) + "</pMax>");
        nodes +=
            formula(name("K", i), variable("X.Max", name("N", i - 1)) + variable("Y.Max", name("N", i - 1)),
                    "X.Max + Y.Max");
    }
    EXPECT_EQ("limit", kind_of_error([&] { Device(nodes, limits).integer("N60").maximum(); }));
}

TEST(Hostile, ChainsOfFormulasEndAtALimit)
{
    const Device device(doubling(5000, "SwissKnife", integer("N0", "<Value>1</Value>")));
    EXPECT_EQ("limit", kind_of_error([&] { device.floating("N5000").value(); }));
    EXPECT_EQ("limit", kind_of_error([&] { device.access("N5000"); }));
    EXPECT_EQ(8.0, device.floating("N3").value());
}

TEST(Hostile, LargeNodesCountAsManySteps)
{
    std::string entries;
    for (int i = 0; i < 1000; ++i)
        entries += node("EnumEntry", name("X", i), "<Value>" + std::to_string(i) + "</Value>");
    std::string values = "1";
    for (int i = 0; i < 1000; ++i)
        values += ";1";
    Limits limits;
    limits.evaluation_steps = 60;
    const Device device(node("Enumeration", "E", entries + "<Value>1</Value>") +
                            formula("A", variable("X.Entry.X999", "E"), "X.Entry.X999") +
                            integer("V", "<Value>1</Value><ValidValueSet>" + values + "</ValidValueSet>"),
                        limits);
    EXPECT_EQ("limit", kind_of_error([&] { device.text("E"); }));
    EXPECT_EQ("limit", kind_of_error([&] { device.number("A"); }));
    EXPECT_EQ("limit", kind_of_error([&] { device.integer("V").set(1); }));
}

TEST(Hostile, WritesEndAtALimitAndLeaveNothingThatIsNoLongerTrue)
{
    std::string nodes = node("IntReg", "Mode", place("0", 4));
    for (int i = 0; i < 300; ++i)
        nodes += node("IntReg", name("R", i),
                      place(std::to_string(4 * i + 4), 4) + "<pInvalidator>Mode</pInvalidator>");
    Limits limits;
    limits.evaluation_steps = 200;
    Device device(nodes, limits);
    for (int i = 0; i < 300; ++i)
        EXPECT_EQ(0, device.number(name("R", i)));
    for (int i = 0; i < 300; ++i)
        device.memory.put(static_cast<std::size_t>(4 * i + 4), {1});
    EXPECT_EQ("limit", kind_of_error([&] { device.integer("Mode").set(1); }));
    for (int i = 0; i < 300; ++i)
        EXPECT_EQ(1, device.number(name("R", i)));
}

TEST(Hostile, RegistersTakeNoMoreMemoryThanAQueryMayRead)
{
    std::string nodes;
    for (int i = 0; i < 40; ++i)
        nodes += node("StringReg", name("S", i), place("0", 60'000'000, "RO"));
    NodeMap map = NodeMap::load(description_of(nodes + "<Port Name=\"Device\"/>"), [] {
        Limits limits;
        limits.query_bytes = 50'000'000;
        return limits;
    }());
    EndlessMemory memory;
    map.connect("Device", memory);
    for (int i = 0; i < 40; ++i)
        EXPECT_EQ("limit", kind_of_error([&] { map.get(name("S", i)).to_string(); }));
    EXPECT_EQ(0U, memory.bytes_read);
}

TEST(Hostile, BytesAreCountedOverAWholeQuestion)
{
    Limits limits;
    limits.query_bytes = 7;
    const Device device(reg("A", "0") + reg("B", "4") +
                            formula("C", variable("X", "A") + variable("Y", "B"), "X + Y"),
                        limits);
    EXPECT_EQ("limit", kind_of_error([&] { device.number("C"); }));
    EXPECT_EQ(0, device.number("A"));
    EXPECT_EQ(0, device.number("B"));
}

TEST(Hostile, LargeRegistersAreNotKept)
{
    NodeMap map = NodeMap::load(
        description_of(node("StringReg", "S", place("0", 20'000'000, "RO")) + "<Port Name=\"Device\"/>"));
    EndlessMemory memory;
    map.connect("Device", memory);
    EXPECT_EQ(20'000'000U, map.get("S").to_string().size());
    EXPECT_EQ(20'000'000U, map.get("S").to_string().size());
    EXPECT_EQ(40'000'000U, memory.bytes_read);
}

TEST(Hostile, CategoriesMayListOneAnother)
{
    std::string nodes;
    for (int i = 0; i < 2000; ++i)
        nodes += node("Category", name("C", i),
                      "<pFeature>" + name("C", (i + 1) % 2000) + "</pFeature><pFeature>C0</pFeature>");
    const Device device(nodes);
    EXPECT_THAT(device.map.problems(), IsEmpty());
    EXPECT_EQ(2U, device.map.get("C7").as<Category>().features().size());
}

TEST(Hostile, ReferencesMayLeadToNodesOfTheWrongKind)
{
    const Device device(
        integer("A", "<pValue>Text</pValue>") + integer("B", "<Value>1</Value><pIsLocked>Text</pIsLocked>") +
        integer("C", "<pValue>Root</pValue>") + node("Boolean", "D", "<pValue>Device</pValue>") +
        node("Enumeration", "E", "<pValue>Text</pValue>") +
        node("Command", "F", "<pValue>Text</pValue><CommandValue>1</CommandValue>") +
        node("String", "Text", "<Value>hello</Value>") + node("Category", "Root", "") +
        node("String", "G", "<pValue>A</pValue>") +
        node("IntReg", "H", "<pAddress>Text</pAddress><Length>4</Length>") +
        node("Converter", "I",
             "<FormulaFrom>TO</FormulaFrom><FormulaTo>FROM</FormulaTo><pValue>Text</pValue>") +
        formula("J", variable("X", "Root"), "X") + node("SmartFeature", "K", "<pValue>A</pValue>") +
        node("Enumeration", "L", "<EnumEntry/><EnumEntry Name=\"X\"/><pValue>L</pValue>"));
    for (std::size_t i = 0; i < device.map.size(); ++i) {
        Node node = device.map.at(i);
        if (node.name() == "Text")
            continue;
        EXPECT_NE("no error", kind_of_error([&] { node.to_string(); })) << node.name();
        EXPECT_NE("no error", kind_of_error([&] { node.from_string("1", Verify::no); })) << node.name();
        kind_of_error([&] { node.access(); });
        kind_of_error([&] { node.is_locked(); });
        kind_of_error([&] { node.caching(); });
    }
}

TEST(Hostile, DivisionsThatHaveNoResultAreErrors)
{
    Device device(node("IntReg", "Smallest", place("0", 8) + "<Sign>Signed</Sign>") +
                  formula("A", variable("X", "Smallest"), "X / (0 - 1)") +
                  formula("B", variable("X", "Smallest"), "X % (0 - 1)"));
    device.memory.put(7, {0x80});
    EXPECT_EQ("formula", kind_of_error([&] { device.number("A"); }));
    EXPECT_NE("", kind_of_error([&] { device.number("B"); }));
}

} // namespace zvgenapi::test
