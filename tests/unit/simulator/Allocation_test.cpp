#include <optional>

#include "support/FailingAllocations.h"
#include "unit/simulator/fixtures.h"

// Memory: none is asked for while frames run, and a call that gets none fails cleanly.

namespace {

using namespace zvsim_test;
using zvtest::CountedAllocations;
using zvtest::FailingAllocations;

constexpr size_t first_counted = 20;
constexpr size_t last_counted = 120;

TEST_P(EitherMode, AllocatesNothingForAFrame)
{
    std::optional<CountedAllocations> counted;
    long allocations = -1;
    keep_supplied();
    receiver.on_call = [&](uint64_t reported) {
        if (receiver.reported.size() == first_counted)
            counted.emplace();
        if (receiver.reported.size() == last_counted)
            allocations = counted->count();
        frame_memory(reported);
        if (mode == Mode::queued)
            requeue(reported);
    };
    acquire(last_counted);
    EXPECT_EQ(0, allocations);
}

/// Makes a call fail at each of its allocations in turn, until it gets them all; `call` answers whether it
/// succeeded. Fails the test when the call succeeds without an allocation that it asked for.
template <class Call>
void expect_clean_failures(const Call& call)
{
    for (long nth = 1;; ++nth) {
        bool struck = false;
        bool succeeded = false;
        {
            const auto fault = FailingAllocations::nth(nth);
            succeeded = call();
            struck = fault.struck();
        }
        EXPECT_NE(struck, succeeded) << "allocation " << nth;
        if (!struck)
            break;
    }
}

TEST_F(Scanned, GrabbersAndStreamsFailWithoutMemory)
{
    uint32_t grabber = ZV_NO_HANDLE;
    expect_clean_failures([&] { return (grabber = ZVGR_Open(coaxpress)) != ZV_NO_HANDLE; });
    const uint32_t camera = cameras_of(grabber).at(0);
    EXPECT_EQ(success, ZVGR_CameraOpen2(camera, nullptr));
    uint32_t queued = 0;
    uint32_t cyclic = 0;
    expect_clean_failures([&] { return ZVGR_StreamCreate(camera, &queued, 0) == success; });
    expect_clean_failures([&] { return ZVGR_StreamCreateAndAlloc(camera, &cyclic, 4, 0) == success; });
    EXPECT_EQ(success, ZVGR_StreamDelete(queued));
    EXPECT_EQ(success, ZVGR_StreamDelete(cyclic));
    EXPECT_EQ(success, ZVGR_Close(grabber));
}

TEST_F(QueuedStream, AnnounceAndStartFailWithoutMemory)
{
    unsigned char memory[100];
    uint64_t announced_buffer = 0;
    uint64_t allocated_buffer = 0;
    expect_clean_failures([&] {
        return ZVGR_BufferAnnounce(stream, memory, sizeof memory, nullptr, &announced_buffer) == success;
    });
    expect_clean_failures(
        [&] { return ZVGR_BufferAllocAndAnnounce(stream, 100, nullptr, &allocated_buffer) == success; });
    expect_clean_failures([&] { return start() == success; });
    ASSERT_EQ(success, ZVGR_BufferToQueue(announced_buffer, zv_queue_input));
    ASSERT_EQ(success, ZVGR_BufferToQueue(allocated_buffer, zv_queue_input));
    EXPECT_TRUE(receiver.wait_for(2));
    ASSERT_EQ(success, stop());
}

TEST_F(Scanned, AScanFailsWithoutMemoryAndTheNextOneWorks)
{
    const Variable other_size{"ZV_GRABBER_SIZE", "12x12"};
    uint32_t count = 0;
    expect_clean_failures([&] { return ZV_DeviceScan(&count) == success; });
    EXPECT_EQ(3U, count);
}

TEST_F(QueuedStream, EndsNeedNoMemory)
{
    const uint64_t buffer = queued();
    ASSERT_EQ(success, start());
    const auto fault = FailingAllocations::of_at_least(1);
    EXPECT_EQ(success, stop());
    EXPECT_EQ(success, ZVGR_BufferRevoke(stream, buffer));
    EXPECT_EQ(success, ZVGR_StreamDelete(stream));
    EXPECT_EQ(success, ZVGR_CameraClose(camera));
    EXPECT_EQ(success, ZVGR_Close(grabber));
    EXPECT_FALSE(fault.struck());
}

} // namespace
