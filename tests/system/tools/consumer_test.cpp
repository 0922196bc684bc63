#include <chrono>
#include <thread>

#include <gtest/gtest.h>

#include "gentl/Error.h"
#include "gentl/Stream.h"

namespace zvgentl::test {

using namespace GenTL;
using namespace tool;
using std::chrono::milliseconds;

namespace {

/// The first camera with its stream open and buffers queued.
class OpenStream : public testing::Test {
protected:
    OpenStream() { stream.add_buffers(4, static_cast<std::size_t>(stream.number(STREAM_INFO_PAYLOAD_SIZE))); }

    Producer producer{PRODUCER_FILE};
    System system{producer};
    Interface iface{system, system.interface_ids().at(0)};
    Device device{iface, iface.device_ids().at(0)};
    Stream stream{device, device.stream_ids().at(0)};
    NewBufferEvent event{stream};
};

} // namespace

TEST_F(OpenStream, WaitsItsTimeOutAlthoughAnOldSignalIsPending)
{
    stream.start();
    while (stream.number(STREAM_INFO_NUM_AWAIT_DELIVERY) == 0)
        std::this_thread::yield();
    stream.stop();
    producer.functions().DSFlushQueue(stream.handle(), ACQ_QUEUE_OUTPUT_DISCARD); // leaves the signal behind

    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(event.wait(milliseconds(50)));
    EXPECT_LE(milliseconds(50), std::chrono::steady_clock::now() - start);
}

TEST_F(OpenStream, ExplainsWhatTheProducerRefuses)
{
    try {
        const Device unknown(iface, "Device99");
        FAIL() << "there is no such device";
    } catch (const Error& error) {
        EXPECT_STREQ("IFOpenDevice failed with GC_ERR_INVALID_ID (-1007): "
                     "IFOpenDevice - GC_ERR_INVALID_ID: Invalid device Id Device99",
                     error.what());
    }
}

TEST_F(OpenStream, DoesNotBlameAnOldTextForANewError)
{
    EXPECT_THROW(Device(iface, "Device99"), Error);
    try {
        stream.queue(nullptr);
        FAIL() << "there is no such buffer";
    } catch (const Error& error) {
        EXPECT_STREQ("DSQueueBuffer failed with GC_ERR_INVALID_HANDLE (-1006)", error.what());
    }
}

} // namespace zvgentl::test
