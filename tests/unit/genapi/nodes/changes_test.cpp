#include <chrono>
#include <string>
#include <vector>

#include "unit/genapi/support.h"

namespace zvgenapi::test {

namespace {

using std::chrono::milliseconds;

std::string cached(const std::string& name, const std::string& address, const std::string& rest = "")
{
    return node("IntReg", name, place(address, 1) + rest);
}

constexpr const char* no_cache = "<Cachable>NoCache</Cachable>";
constexpr const char* around = "<Cachable>WriteAround</Cachable>";

} // namespace

TEST(Cache, KeepsWhatWasReadAsTheRegisterAllows)
{
    Device device(cached("Through", "0") + cached("Around", "1", around) + cached("Never", "2", no_cache));
    const auto reads_of = [&](const char* name) {
        const int before = device.memory.reads;
        device.number(name);
        device.number(name);
        return device.memory.reads - before;
    };
    EXPECT_EQ(1, reads_of("Through"));
    EXPECT_EQ(1, reads_of("Around"));
    EXPECT_EQ(2, reads_of("Never"));
    for (const char* const name : {"Through", "Around", "Never"})
        device.integer(name).set(7);
    device.memory.put(0, {9, 9, 9});
    EXPECT_EQ(7, device.number("Through"));
    EXPECT_EQ(9, device.number("Around"));
    EXPECT_EQ(9, device.number("Never"));
    EXPECT_EQ(9, device.integer("Through").value(UseCache::no));
    EXPECT_EQ(9, device.number("Through")) << "and it is known from then on";
}

TEST(Cache, ReadsARegisterOnceForAQuestion)
{
    Device device(cached("R", "0", no_cache) +
                  formula("A", variable("X", "R") + variable("Y", "B"), "X + Y") +
                  integer("B", "<pValue>R</pValue>"));
    device.memory.put(0, {4});
    EXPECT_EQ(8, device.number("A"));
    EXPECT_EQ(1, device.memory.reads);
}

TEST(Cache, ForgetsWhatOverlapsWithAWrite)
{
    Device device(node("IntReg", "Whole", place("0", 4)) + cached("Part", "3") + cached("Beside", "4"));
    for (const char* const name : {"Whole", "Part", "Beside"})
        device.number(name);
    device.memory.put(4, {1});
    device.integer("Whole").set(0x05000000);
    EXPECT_EQ(5, device.number("Part"));
    EXPECT_EQ(0, device.number("Beside"));
    device.integer("Part").set(6);
    EXPECT_EQ(0x06000000, device.number("Whole"));
}

TEST(Cache, ForgetsWhatAWriteInvalidates)
{
    Device device(cached("Mode", "0") + cached("A", "1", "<pInvalidator>Mode</pInvalidator>") +
                  integer("B", "<pValue>R</pValue><pInvalidator>Feature</pInvalidator>") + cached("R", "2") +
                  integer("Feature", "<pValue>Mode</pValue>") + cached("Other", "3"));
    for (const char* const name : {"A", "B", "Other"})
        device.number(name);
    device.memory.put(1, {5, 6, 7});
    device.integer("Mode").set(1);
    EXPECT_EQ(5, device.number("A"));
    EXPECT_EQ(0, device.number("B")) << "its invalidator was not written";
    device.integer("Feature").set(2);
    EXPECT_EQ(6, device.number("B"));
    EXPECT_EQ(0, device.number("Other"));
    EXPECT_EQ("Mode", device.map.get("A").invalidators().at(0).name());
}

TEST(Cache, ForgetsWhatASelectorChoosesTheMeaningOf)
{
    Device device(integer("Selector", "<pValue>S</pValue><pSelected>A</pSelected>") + cached("S", "0") +
                  integer("A", "<pValue>R</pValue>") + cached("R", "1"));
    EXPECT_EQ(0, device.number("A"));
    device.memory.put(1, {5});
    device.integer("Selector").set(1);
    EXPECT_EQ(5, device.number("A"));
}

TEST(Cache, ForgetsOnRequest)
{
    Device device(cached("A", "0") + cached("B", "1") + integer("C", "<pValue>A</pValue>"));
    device.number("A");
    device.number("B");
    device.memory.put(0, {1, 1});
    device.map.get("C").invalidate();
    EXPECT_EQ(1, device.number("A"));
    EXPECT_EQ(0, device.number("B"));
    device.map.invalidate();
    EXPECT_EQ(1, device.number("B"));
    device.memory.put(0, {2});
    Memory other;
    device.map.connect("Device", other);
    EXPECT_EQ(0, device.number("A")) << "another device";
}

TEST(Cache, DoesNotTrustAWriteThatFailed)
{
    Device device(cached("A", "0"));
    device.integer("A").set(3);
    device.memory.put(0, {4});
    device.memory.on_write = [] { throw std::runtime_error("the cable is out"); };
    EXPECT_THROW(device.integer("A").set(5), std::runtime_error);
    device.memory.put(0, {4});
    EXPECT_EQ(4, device.number("A"));
}

TEST(Cache, HasALimit)
{
    Limits limits;
    limits.cache_bytes = 1;
    Device device(cached("A", "0") + cached("B", "1"), limits);
    device.number("A");
    device.number("B");
    device.memory.put(0, {1, 1});
    EXPECT_EQ(0, device.number("A"));
    EXPECT_EQ(1, device.number("B"));
}

TEST(Cache, TellsHowMuchOfAFeatureIsKept)
{
    const Device device(cached("Through", "0") + cached("Around", "1", around) +
                        cached("Never", "2", no_cache) + integer("A", "<pValue>Around</pValue>") +
                        formula("B", variable("X", "Through") + variable("Y", "Never"), "X + Y"));
    const std::pair<const char*, Caching> cases[] = {{"Through", Caching::write_through},
                                                     {"A", Caching::write_around},
                                                     {"B", Caching::no_cache},
                                                     {"Device", Caching::write_through}};
    for (const auto& [name, caching] : cases)
        EXPECT_EQ(caching, device.map.get(name).caching()) << name;
}

TEST(Polling, ReadsAgainWhatHasATime)
{
    Device device(
        cached("A", "0", "<PollingTime>100</PollingTime>") +
        integer("B", "<pValue>R</pValue><PollingTime>300</PollingTime><pBlockPolling>Block</pBlockPolling>") +
        cached("R", "1") + integer("Block", "<Value>0</Value>"));
    EXPECT_EQ(100, device.map.get("A").polling_time());
    EXPECT_EQ(-1, device.map.get("R").polling_time());
    const auto values = [&] { return std::vector<std::int64_t>{device.number("A"), device.number("B")}; };
    EXPECT_THAT(values(), ElementsAre(0, 0));
    device.memory.put(0, {1, 1});
    device.map.poll(milliseconds(99));
    EXPECT_THAT(values(), ElementsAre(0, 0));
    device.map.poll(milliseconds(1));
    EXPECT_THAT(values(), ElementsAre(1, 0));
    device.integer("Block").set(1);
    device.map.poll(milliseconds(1000));
    EXPECT_THAT(values(), ElementsAre(1, 0));
    device.integer("Block").set(0);
    device.map.poll(milliseconds::max());
    device.map.poll(milliseconds::min());
    EXPECT_THAT(values(), ElementsAre(1, 1));
}

TEST(CallBacks, TellOfEveryChangeThatANodeMayShow)
{
    Device device(cached("R", "0") + integer("Width", "<pValue>R</pValue>") +
                  integer("Offset", "<Value>0</Value><pMax>Most</pMax>") +
                  formula("Most", variable("W", "Width"), "100 - W") +
                  integer("Locked", "<Value>0</Value><pIsLocked>R</pIsLocked>") +
                  integer("Other", "<Value>0</Value>") +
                  cached("Kept", "1", "<pInvalidator>Width</pInvalidator>") +
                  node("Category", "Root", "<pFeature>Width</pFeature>"));
    std::vector<std::string> told;
    std::vector<Subscription> subscriptions;
    for (const char* const name : {"R", "Width", "Offset", "Most", "Locked", "Other", "Kept", "Root"})
        subscriptions.push_back(device.map.on_change(device.map.get(name),
                                                     [&](const Node& node) { told.push_back(node.name()); }));
    device.integer("Width").set(5);
    EXPECT_THAT(told, ElementsAre("R", "Width", "Offset", "Most", "Locked", "Kept"));
    told.clear();
    device.number("Width");
    EXPECT_THAT(told, IsEmpty());
    device.map.get("Offset").invalidate();
    EXPECT_THAT(told, ElementsAre("Offset"));
    told.clear();
    subscriptions.erase(subscriptions.begin(), subscriptions.begin() + 4);
    device.map.invalidate();
    EXPECT_THAT(told, ElementsAre("Locked", "Kept"));
    told.clear();
    device.integer("Other").impose_maximum(4);
    EXPECT_THAT(told, ElementsAre("Other"));
}

TEST(CallBacks, MayUseTheMapAndEndThemselves)
{
    Device device(cached("A", "0") + cached("B", "1"));
    std::vector<std::int64_t> seen;
    Subscription second;
    const Subscription first = device.map.on_change(device.map.get("A"), [&](const Node& node) {
        seen.push_back(node.as<Integer>().value());
        second = Subscription();
        if (seen.size() < 3)
            node.as<Integer>().set(seen.back() + 1);
    });
    second = device.map.on_change(device.map.get("A"), [&](const Node&) { seen.push_back(-1); });
    device.integer("A").set(5);
    EXPECT_THAT(seen, ElementsAre(5, 6, 7));
}

TEST(CallBacks, PassOnWhatTheyThrow)
{
    Device device(cached("A", "0"));
    const Subscription subscription =
        device.map.on_change(device.map.get("A"), [](const Node&) { throw std::runtime_error("enough"); });
    EXPECT_THROW(device.integer("A").set(5), std::runtime_error);
    EXPECT_EQ(5, device.number("A"));
}

TEST(CallBacks, AreToldOfOverlappingRegisters)
{
    Device device(node("IntReg", "Whole", place("0", 4)) + cached("Part", "3"));
    int calls = 0;
    const Subscription subscription =
        device.map.on_change(device.map.get("Part"), [&](const Node&) { ++calls; });
    device.number("Part");
    device.integer("Whole").set(1);
    EXPECT_EQ(1, calls);
}

} // namespace zvgenapi::test
