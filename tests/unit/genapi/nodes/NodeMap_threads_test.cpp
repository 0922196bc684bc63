#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "unit/genapi/support.h"

namespace zvgenapi::test {

TEST(MapsInThreads, AreUsedOneCallAtATime)
{
    Device device(node("IntReg", "A", place("0", 4)) +
                  node("MaskedIntReg", "B", place("4", 4) + "<Bit>0</Bit>") +
                  formula("C", variable("X", "A") + variable("Y", "B"), "X + Y"));
    int calls = 0; // under the map's lock, as the port is
    device.memory.on_write = [&] { ++calls; };
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&device, t] {
            for (int i = 0; i < 200; ++i) {
                device.integer("A").set(i);
                device.integer("B").set(i & 1);
                const std::int64_t sum = device.number("C");
                EXPECT_TRUE(sum >= 0 && sum <= 200) << t;
                const Subscription subscription =
                    device.map.on_change(device.map.get("C"), [](const Node&) {});
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(4 * 200 * 2, calls);
}

TEST(MapsInThreads, AreLoadedAtTheSameTime)
{
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            for (int i = 0; i < 20; ++i) {
                const Device device(integer("A", "<Value>" + std::to_string(t) + "</Value>"));
                EXPECT_EQ(t, device.number("A"));
            }
        });
    for (std::thread& thread : threads)
        thread.join();
}

TEST(MapsInThreads, EndCallBacksThatAnotherThreadCauses)
{
    Device device(node("IntReg", "A", place("0", 4)));
    std::thread writer([&device] {
        for (int i = 0; i < 500; ++i)
            device.integer("A").set(i);
    });
    for (int i = 0; i < 500; ++i) {
        const Subscription subscription = device.map.on_change(
            device.map.get("A"), [](const Node& node) { EXPECT_LE(0, node.as<Integer>().value()); });
    }
    writer.join();
}

} // namespace zvgenapi::test
