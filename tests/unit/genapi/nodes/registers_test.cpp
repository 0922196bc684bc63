#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "unit/genapi/support.h"

namespace zvgenapi::test {

namespace {

constexpr const char* big = "<Endianess>BigEndian</Endianess>";
constexpr const char* little = "<Endianess>LittleEndian</Endianess>";
constexpr const char* with_sign = "<Sign>Signed</Sign>";

/// A register of some bytes, the number in it, and what is written back for another number.
struct Row {
    const char* element;
    std::string content;
    std::vector<unsigned> bytes;
    std::int64_t number;
    std::int64_t written;
    std::vector<unsigned> after;
};

const Row rows[] = {
    {"IntReg", place("0x10", 1), {0xFE}, 254, 3, {3}},
    {"IntReg", place("0x10", 1) + with_sign, {0xFE}, -2, -128, {0x80}},
    {"IntReg", place("0x10", 2), {0x34, 0x12}, 0x1234, 1, {1, 0}}, // little-endian unless told
    {"IntReg", place("0x10", 2) + big, {0x12, 0x34}, 0x1234, 1, {0, 1}},
    {"IntReg", place("16", 3) + big + with_sign, {0xFF, 0xFF, 0xFE}, -2, 0x10203, {1, 2, 3}},
    {"IntReg", place("0x10", 4) + little, {0xFF, 0xFF, 0xFF, 0xFF}, 0xFFFFFFFF, 7, {7, 0, 0, 0}},
    {"IntReg", place("0x10", 4) + big + with_sign, {0x80, 0, 0, 0}, -2147483648LL, -1, {255, 255, 255, 255}},
    {"IntReg", place("0x10", 8) + big, {0, 0, 0, 0, 0, 0, 1, 0}, 256, 1, {0, 0, 0, 0, 0, 0, 0, 1}},
    {"IntReg",
     place("0x10", 8) + little + with_sign,
     {0, 0, 0, 0, 0, 0, 0, 0x80},
     std::numeric_limits<std::int64_t>::min(),
     -2,
     {0xFE, 255, 255, 255, 255, 255, 255, 255}},
    {"MaskedIntReg", place("0x10", 4) + little + "<Bit>3</Bit>", {0xF7, 1, 2, 3}, 0, 1, {0xFF, 1, 2, 3}},
    {"MaskedIntReg", place("0x10", 4) + big + "<Bit>3</Bit>", {0x10, 1, 2, 3}, 1, 0, {0, 1, 2, 3}},
    {"MaskedIntReg",
     place("0x10", 2) + little + "<LSB>4</LSB><MSB>11</MSB>",
     {0x5A, 0xC3},
     0x35,
     0xFF,
     {0xFA, 0xCF}},
    {"MaskedIntReg",
     place("0x10", 2) + big + "<LSB>11</LSB><MSB>4</MSB>", // bit 0 is the most significant one
     {0xC3, 0x5A},
     0x35,
     0xFF,
     {0xCF, 0xFA}},
    {"MaskedIntReg", place("0x10", 2) + big + "<LSB>15</LSB><MSB>12</MSB>", {0, 0x5A}, 10, 3, {0, 0x53}},
    {"MaskedIntReg", place("0x10", 1) + with_sign + "<LSB>4</LSB><MSB>7</MSB>", {0x8F}, -8, -1, {0xFF}},
    {"MaskedIntReg", place("0x10", 1) + "<LSB>0</LSB><MSB>7</MSB>", {0x8F}, 0x8F, 1, {1}},
    {"MaskedIntReg",
     place("0x10", 8) + big + "<LSB>63</LSB><MSB>0</MSB>",
     {0, 0, 0, 0, 0, 0, 0, 9},
     9,
     8,
     {0, 0, 0, 0, 0, 0, 0, 8}},
    {"MaskedIntReg",
     place("0x10", 8) + little + "<LSB>60</LSB><MSB>63</MSB>",
     {1, 0, 0, 0, 0, 0, 0, 0xA0},
     10,
     5,
     {1, 0, 0, 0, 0, 0, 0, 0x50}},
};

class NumberRegister : public testing::TestWithParam<Row> {};

std::string structure(const std::string& shared, const std::string& entries)
{
    return "<StructReg>" + shared + entries + "</StructReg>";
}

/// What reading A fails with.
std::pair<std::string, std::string> refusal_of(const std::string& nodes, const Limits& limits = {})
{
    const Device device(nodes, limits);
    return error_of([&] { device.map.get("A").to_string(); });
}

} // namespace

TEST_P(NumberRegister, IsReadAndWritten)
{
    const Row& row = GetParam();
    Device device(node(row.element, "A", row.content));
    device.memory.put(0x10, row.bytes);
    EXPECT_EQ(row.number, device.number("A"));
    device.integer("A").set(row.written);
    EXPECT_EQ(row.after, device.memory.at(0x10, row.after.size()));
    EXPECT_EQ(row.written, device.integer("A").value(UseCache::no));
    EXPECT_EQ(row.written, device.number("A"));
}

INSTANTIATE_TEST_SUITE_P(Rows, NumberRegister, testing::ValuesIn(rows));

TEST(Registers, HoldFloatingNumbers)
{
    Device device(node("FloatReg", "A", place("0x10", 4) + big) + node("FloatReg", "B", place("0x20", 8)));
    device.memory.put(0x10, {0x3F, 0xC0, 0, 0});
    EXPECT_EQ(1.5, device.floating("A").value());
    device.floating("A").set(-2.5);
    EXPECT_THAT(device.memory.at(0x10, 4), ElementsAre(0xC0, 0x20, 0, 0));
    device.floating("B").set(1.5);
    EXPECT_THAT(device.memory.at(0x20, 8), ElementsAre(0, 0, 0, 0, 0, 0, 0xF8, 0x3F));
    EXPECT_EQ(1.5, device.floating("B").value(UseCache::no));
    EXPECT_EQ("range", kind_of_error([&] { device.floating("A").set(1e39); }));
    EXPECT_EQ("range",
              kind_of_error([&] { device.floating("A").set(std::numeric_limits<double>::quiet_NaN()); }));
    EXPECT_EQ("description", refusal_of(node("FloatReg", "A", place("0", 2))).first);
}

TEST(Registers, HoldTextsAndBytes)
{
    Device device(node("StringReg", "A", place("0x10", 8)) + node("Register", "B", place("0x10", 4)));
    device.memory.put(0x10, {'l', 'e', 'f', 't', 0, 'x'});
    auto text = device.map.get("A").as<String>();
    EXPECT_EQ("left", text.value());
    EXPECT_EQ(8, text.max_length());
    text.set("12345678");
    EXPECT_EQ("12345678", text.value());
    text.set("up");
    EXPECT_THAT(device.memory.at(0x10, 8), ElementsAre('u', 'p', 0, 0, 0, 0, 0, 0));
    EXPECT_EQ("range", kind_of_error([&] { text.set("123456789"); }));

    auto bytes = device.map.get("B").as<Register>();
    EXPECT_THAT(bytes.read(), ElementsAre('u', 'p', 0, 0));
    EXPECT_EQ(4, bytes.length());
    EXPECT_EQ(0x10U, bytes.address());
    EXPECT_EQ("Device", bytes.port().name());
    bytes.write({1, 2, 3, 4});
    EXPECT_THAT(device.memory.at(0x10, 5), ElementsAre(1, 2, 3, 4, 0));
    EXPECT_EQ("value", kind_of_error([&] { bytes.write({1, 2, 3}); }));
    EXPECT_EQ("\1\2\3\4", text.value()) << "what is known of the same address is forgotten";
}

TEST(Registers, CanBeReadAsBytesWhateverTheyHold)
{
    Device device(node("IntReg", "A", place("0x10", 2)) + node("FloatReg", "B", place("0x10", 4)) +
                  node("StringReg", "C", place("0x10", 3)) + integer("D", "<Value>1</Value>"));
    EXPECT_EQ(2U, device.map.get("A").as<Register>().read().size());
    EXPECT_EQ(4U, device.map.get("B").as<Register>().read().size());
    EXPECT_EQ(3U, device.map.get("C").as<Register>().read().size());
    EXPECT_FALSE(device.map.get("D").is<Register>());
    device.map.get("A").as<Register>().write({7, 0});
    EXPECT_EQ(7, device.number("A"));
}

TEST(Registers, AddUpAllTheirAddresses)
{
    const std::string rest = "<Length>2</Length><AccessMode>RO</AccessMode><pPort>Device</pPort>";
    Device device(
        integer("Base", "<Value>0x100</Value>") + integer("Step", "<Value>6</Value>") +
        integer("Index", "<Value>3</Value>") + integer("Minus", "<Value>-2</Value>") +
        node("IntReg", "Two", "<Address>1</Address><Address>0x20</Address>" + rest) +
        node("IntReg", "Referred", "<pAddress>Base</pAddress><pAddress>Minus</pAddress>" + rest) +
        node("IntReg", "Indexed", "<pIndex Offset=\"0x10\">Index</pIndex><Address>1</Address>" + rest) +
        node("IntReg", "Stepped", "<pIndex pOffset=\"Step\">Index</pIndex>" + rest) +
        node("IntReg", "Plain", "<pIndex>Index</pIndex><pIndex>Step</pIndex>" + rest) +
        node("IntReg", "Computed",
             "<IntSwissKnife Name=\"Inner\">" + variable("I", "Index") +
                 "<Formula>I * 100</Formula></IntSwissKnife>"
                 "<pAddress>Base</pAddress><Address>4</Address>" +
                 rest));
    const std::pair<const char*, std::uint64_t> addresses[] = {{"Two", 0x21},     {"Referred", 0xFE},
                                                               {"Indexed", 0x31}, {"Stepped", 18},
                                                               {"Plain", 6 + 12}, {"Computed", 300 + 0x104}};
    for (const auto& [name, address] : addresses)
        EXPECT_EQ(address, device.map.get(name).as<Register>().address()) << name;
    EXPECT_EQ(300, device.number("Inner")) << "a formula within a register is a node, too";
    device.integer("Index").set(1);
    EXPECT_EQ(100U + 0x104, device.map.get("Computed").as<Register>().address());
}

TEST(Registers, FollowAnAddressThatChangesEvenWhenTheyAreKept)
{
    Device device(reg("Selector", "0") +
                  node("IntReg", "A", place("0x10", 1) + "<pIndex Offset=\"1\">Selector</pIndex>"));
    device.memory.put(0x10, {5, 6});
    EXPECT_EQ(5, device.number("A"));
    device.memory.put(0, {1});
    EXPECT_EQ(6, device.number("A"));
}

TEST(Registers, MayHaveALengthThatTheDeviceNames)
{
    Device device(reg("Size", "0") + node("StringReg", "A",
                                          "<Address>0x10</Address><pLength>Size</pLength>"
                                          "<AccessMode>RO</AccessMode><pPort>Device</pPort>"));
    device.memory.put(0, {2});
    device.memory.put(0x10, {'a', 'b', 'c', 'd'});
    EXPECT_EQ("ab", device.text("A"));
    device.memory.put(0, {4});
    EXPECT_EQ("abcd", device.text("A"));
    for (const unsigned high : {0x7FU, 0xFFU}) {
        device.memory.put(0, {0xF0, 0xFF, 0xFF, high});
        EXPECT_THAT(error_of([&] { device.text("A"); }),
                    testing::Pair("limit", HasSubstr("the device says that it is")));
    }
    device.memory.put(0, {0, 0, 0, 0});
    EXPECT_EQ("value", kind_of_error([&] { device.text("A"); }));
}

TEST(Registers, CannotHaveEveryLength)
{
    for (const char* const length : {"0", "-4", "9", "40000000000", "0xFFFFFFFFFFFFFFFF", "four", ""}) {
        const std::string rest =
            "</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Address>0</Address>";
        EXPECT_EQ("description",
                  refusal_of(node("IntReg", "A", "<Length>" + std::string(length) + rest)).first)
            << length;
    }
    EXPECT_EQ("limit", refusal_of(node("StringReg", "A", place("0", 2000000000))).first);
    Limits limits;
    limits.register_bytes = 16;
    EXPECT_EQ("limit", refusal_of(node("StringReg", "A", place("0", 17)), limits).first);
}

TEST(Registers, AreRefusedWithoutWhatTheyNeed)
{
    const std::string port = "<pPort>Device</pPort>";
    const std::string length = "<Length>4</Length>";
    const std::string address = "<Address>0</Address>";
    const std::pair<std::string, const char*> cases[] = {
        {node("IntReg", "A", port + length), "no address"},
        {node("IntReg", "A", port + address), "no length"},
        {node("IntReg", "A", length + address), "no pPort"},
        {node("IntReg", "A", length + address + "<pPort>Nowhere</pPort>"), "refers to Nowhere"},
        {node("IntReg", "A", length + address + "<pPort>B</pPort>") + integer("B", "<Value>1</Value>"),
         "not a port"},
        {node("IntReg", "A", port + length + "<Address>x</Address>"), "Address \"x\" is not a number"},
        {node("IntReg", "A", port + length + "<Address>0xFFFFFFFFFFFFFFFD</Address>"),
         "beyond the last address"},
        {node("MaskedIntReg", "A", port + length + address), "neither a Bit nor"},
        {node("MaskedIntReg", "A", port + length + address + "<LSB>1</LSB>"), "neither a Bit nor"},
        {node("MaskedIntReg", "A", port + length + address + "<Bit>32</Bit>"),
         "there is no bit 32 in 4 bytes"},
        {node("MaskedIntReg", "A", port + length + address + "<LSB>-1</LSB><MSB>4</MSB>"),
         "there is no bit -1"},
    };
    for (const auto& [nodes, reason] : cases)
        EXPECT_THAT(refusal_of(nodes).second, HasSubstr(reason));
}

TEST(Registers, RefuseNumbersThatDoNotFit)
{
    Device device(node("IntReg", "A", place("0", 1)) +
                  node("MaskedIntReg", "B", place("0", 1) + "<LSB>0</LSB><MSB>2</MSB>") +
                  integer("C", "<pValue>B</pValue><Max>100</Max>"));
    EXPECT_EQ("range", kind_of_error([&] { device.integer("A").set(256); }));
    EXPECT_EQ("range", kind_of_error([&] { device.integer("A").set(-1, Verify::no); }));
    EXPECT_EQ("range", kind_of_error([&] { device.integer("B").set(8, Verify::no); }));
    EXPECT_EQ("range", kind_of_error([&] { device.integer("C").set(8); }));
    EXPECT_EQ("range", kind_of_error([&] { device.integer("C").set(8, Verify::no); }));
    EXPECT_EQ(0, device.memory.writes);
}

TEST(Registers, OfAStructureShareOne)
{
    Device device(
        structure(place("0x10", 4) + big,
                  "<StructEntry Name=\"High\"><LSB>7</LSB><MSB>0</MSB></StructEntry>"
                  "<StructEntry Name=\"Flag\"><Bit>31</Bit></StructEntry>"
                  "<StructEntry Name=\"Fixed\"><Bit>30</Bit><AccessMode>RO</AccessMode></StructEntry>"));
    device.memory.put(0x10, {0xAB, 0, 0, 3});
    EXPECT_EQ(0xAB, device.number("High"));
    EXPECT_EQ(1, device.number("Flag"));
    device.integer("High").set(1);
    device.integer("Flag").set(0);
    EXPECT_THAT(device.memory.at(0x10, 4), ElementsAre(1, 0, 0, 2));
    EXPECT_EQ(1, device.number("Fixed"));
    EXPECT_EQ("access", kind_of_error([&] { device.integer("Fixed").set(0); }));
}

TEST(Registers, AreWrittenInPartsWithWhatTheDeviceHasNow)
{
    Device device(node("MaskedIntReg", "Low", place("0x10", 1) + "<LSB>0</LSB><MSB>3</MSB>") +
                  node("MaskedIntReg", "Blind", place("0x20", 1, "WO") + "<LSB>4</LSB><MSB>7</MSB>"));
    device.memory.put(0x10, {0x12});
    EXPECT_EQ(2, device.number("Low"));
    device.memory.put(0x10, {0x72}); // behind the cache
    device.integer("Low").set(5);
    EXPECT_THAT(device.memory.at(0x10, 1), ElementsAre(0x75));
    device.integer("Blind").set(5);
    EXPECT_THAT(device.memory.at(0x20, 1), ElementsAre(0x50)) << "what cannot be read is written as 0";
}

TEST(Registers, FollowAPortThatSwapsBytes)
{
    Device device("<Port Name=\"Swapped\"><SwapEndianess>Yes</SwapEndianess></Port>" +
                  node("IntReg", "A",
                       "<Address>0</Address><Length>2</Length><AccessMode>RW</AccessMode>"
                       "<pPort>Swapped</pPort><Endianess>BigEndian</Endianess>"));
    device.map.connect("Swapped", device.memory);
    device.memory.put(0, {1, 2});
    EXPECT_EQ(0x201, device.number("A"));
}

TEST(Ports, PassOnWhatTheyThrow)
{
    Device device(reg("A", "0") + reg("Far", "0x10000"));
    EXPECT_THROW(device.number("Far"), std::out_of_range);
    device.memory.refusal = "the cable is out";
    EXPECT_THROW(device.number("A"), std::runtime_error);
    device.memory.refusal.clear();
    EXPECT_EQ(0, device.number("A"));
}

TEST(Ports, MustBeConnected)
{
    NodeMap map =
        NodeMap::load(description_of(reg("A", "0") + "<Port Name=\"Device\"><ChunkID>1F</ChunkID></Port>"));
    const auto a = map.get("A").as<Integer>();
    const auto port = map.get("Device").as<PortNode>();
    EXPECT_EQ(AccessMode::NI, a.access());
    EXPECT_FALSE(port.is_connected());
    EXPECT_EQ("1F", port.chunk_id());
    EXPECT_EQ("access", kind_of_error([&] { a.value(); }));
    Memory memory;
    map.connect("Device", memory);
    EXPECT_TRUE(port.is_connected());
    EXPECT_EQ(0, a.value());
    map.disconnect("Device");
    EXPECT_EQ(AccessMode::NA, a.access());
    EXPECT_EQ("unknown_node", kind_of_error([&] { map.connect("Devise", memory); }));
    EXPECT_EQ("wrong_type", kind_of_error([&] { map.connect("A", memory); }));
}

TEST(Ports, CanBeReadAndWrittenThemselves)
{
    Device device(node("IntReg", "A", place("0", 1)));
    EXPECT_EQ(0, device.number("A"));
    auto port = device.map.get("Device").as<PortNode>();
    const unsigned char written = 9;
    port.write(0, &written, 1);
    EXPECT_EQ(9, device.number("A")) << "the map knows of it";
    unsigned char read = 0;
    port.read(0, &read, 1);
    const int accesses = device.memory.reads + device.memory.writes;
    port.read(0, nullptr, 0);
    port.write(0, nullptr, 0);
    EXPECT_EQ(accesses, device.memory.reads + device.memory.writes) << "nothing is asked of a port";
    EXPECT_EQ(9, read);
}

TEST(Ports, AreChosenByTheirName)
{
    Device device("<Port Name=\"Other\"/>" + node("IntReg", "A", place("0", 1)) +
                  node("IntReg", "B", "<Address>0</Address><Length>1</Length><pPort>Other</pPort>"));
    Memory other;
    device.map.connect("Other", other);
    device.memory.put(0, {1});
    other.put(0, {2});
    EXPECT_EQ(1, device.number("A"));
    EXPECT_EQ(2, device.number("B"));
}

} // namespace zvgenapi::test
