#include <chrono>
#include <thread>

#include <gtest/gtest.h>

#include "gentl/Stream.h"

namespace zvgentl::test {

using namespace GenTL;
using namespace tool;
using std::chrono::milliseconds;

TEST(EventOfAStream, WaitsItsTimeOutAlthoughAnOldSignalIsPending)
{
    const Producer producer{PRODUCER_FILE};
    const System system{producer};
    const Interface iface{system, system.interface_ids().at(0)};
    const Device device{iface, iface.device_ids().at(0)};
    Stream stream{device, device.stream_ids().at(0)};
    stream.add_buffers(4, static_cast<std::size_t>(stream.number(STREAM_INFO_PAYLOAD_SIZE)));
    const NewBufferEvent event{stream};
    stream.start();
    while (stream.number(STREAM_INFO_NUM_AWAIT_DELIVERY) == 0)
        std::this_thread::yield();
    stream.stop();
    producer.functions().DSFlushQueue(stream.handle(), ACQ_QUEUE_OUTPUT_DISCARD); // leaves the signal behind

    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(event.wait(milliseconds(50)));
    EXPECT_LE(milliseconds(50), std::chrono::steady_clock::now() - start);
}

} // namespace zvgentl::test
