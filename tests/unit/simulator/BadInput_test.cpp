#include <optional>

#include "support/FailingAllocations.h"
#include "unit/simulator/interface_calls.h"

// Calls that cannot be carried out: bad handles and other input, and no memory. None is asked for while
// frames run.

namespace {

using namespace zvsim_test;
using zvtest::CountedAllocations;
using zvtest::FailingAllocations;

/// What takes a handle of any kind.
std::vector<InterfaceCall> calls_with_handles()
{
    std::vector<InterfaceCall> calls;
    for (const InterfaceCall& call : interface_calls()) {
        if (!call.handles.empty() || call.has(takes_buffer))
            calls.push_back(call);
    }
    return calls;
}

class EveryCallOfHandles : public CallSituation, public testing::WithParamInterface<InterfaceCall> {
protected:
    EveryCallOfHandles() { plan(""); }

    void expect_refused(const Situation& bad) const
    {
        Outputs outputs;
        EXPECT_TRUE(row.is_failure(row.call(bad, outputs)));
        EXPECT_TRUE(outputs.are_untouched(row.has(clears_size) ? 0 : 4));
    }
    void expect_works(const Situation& good) const
    {
        Outputs outputs;
        EXPECT_FALSE(row.is_failure(row.call(good, outputs)));
    }

    const InterfaceCall& row{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(BadInput, EveryCallOfHandles, testing::ValuesIn(calls_with_handles()), name_of_call);

TEST_P(EveryCallOfHandles, RefusesHandlesOfNothingAndOfAnotherKindAndChangesNothing)
{
    const Situation now = situation();
    for (const Handles& accepted : row.handles) {
        std::vector<uint32_t> refused{0U, 1U, ZV_NO_HANDLE, now.ring + 1000};
        for (const auto kind :
             {&Situation::grabber, &Situation::camera, &Situation::stream, &Situation::ring}) {
            if (std::find(accepted.begin(), accepted.end(), kind) == accepted.end())
                refused.push_back(now.*kind);
        }
        for (const uint32_t handle : refused) {
            SCOPED_TRACE(handle);
            Situation bad = now;
            bad.*accepted.front() = handle;
            expect_refused(bad);
        }
    }
    std::vector<uint64_t> bad_buffers;
    if (row.has(takes_buffer))
        bad_buffers = {0, 1, now.buffer + 1, now.stream, UINT64_MAX};
    for (const uint64_t buffer : bad_buffers) {
        SCOPED_TRACE(buffer);
        Situation bad = now;
        bad.buffer = buffer;
        expect_refused(bad);
    }
    expect_works(now);
}

TEST_P(EveryCallOfHandles, TakesEveryHandleThatDoes)
{
    const Situation now = situation();
    for (const Handles& accepted : row.handles) {
        for (const auto handle : accepted) {
            Situation good = now;
            good.*accepted.front() = now.*handle;
            expect_works(good);
            ZVGR_CameraStopAcquire_GenTL(now.camera);
        }
    }
}

TEST_P(EveryCallOfHandles, RefusesHandlesOfAClosedGrabber)
{
    const Situation now = situation();
    ASSERT_EQ(success, ZVGR_Close(now.grabber));
    expect_refused(now);
}

TEST_F(QueuedStream, NullPointersFail)
{
    uint32_t word = 7;
    uint64_t long_word = 7;
    const uint64_t buffer = announce(stream);
    EXPECT_NE(success, ZV_DeviceScan(nullptr));
    EXPECT_NE(success, ZV_DeviceInfo(0, nullptr));
    EXPECT_NE(success, ZVGR_UpdateCameraList(grabber, nullptr, &word));
    EXPECT_NE(success, ZVGR_UpdateCameraList(grabber, &word, nullptr));
    EXPECT_NE(success, ZVGR_CameraInfo2(camera, nullptr));
    EXPECT_NE(success, ZVGR_StreamCreate(camera, nullptr, 0));
    EXPECT_NE(success, ZVGR_StreamCreateAndAlloc(camera, nullptr, 4, 0));
    EXPECT_NE(success, ZVGR_StreamGetInfo(stream, zv_stream_payload_now, nullptr));
    EXPECT_NE(success, ZVGR_StreamGetAux(create_stream(camera, Mode::cyclic), 0, nullptr));
    EXPECT_NE(success, ZVGR_BufferAnnounce(stream, nullptr, 100, nullptr, &long_word));
    EXPECT_NE(success, ZVGR_BufferAnnounce(stream, &word, sizeof word, nullptr, nullptr));
    EXPECT_NE(success, ZVGR_BufferAllocAndAnnounce(stream, 100, nullptr, nullptr));
    EXPECT_NE(success, ZVGR_BufferGetInfo(buffer, zv_buffer_address, nullptr));
    EXPECT_NE(success, ZVGR_CameraCallbackRegister(camera, nullptr, &word));
    EXPECT_NE(success, ZVGR_StreamBufferCallbackRegister(stream, nullptr, &word));
    EXPECT_NE(success, ZVGR_GetXmlUrl(camera, nullptr, nullptr));
    EXPECT_EQ(7U, word);
    EXPECT_EQ(7U, long_word);
}

TEST_F(QueuedStream, ABufferIsRevokedOnceAndByItsOwnStreamOnly)
{
    const uint64_t buffer = queued();
    EXPECT_NE(success, ZVGR_BufferRevoke(create_stream(camera), buffer));
    EXPECT_EQ(success, ZVGR_BufferRevoke(stream, buffer));
    EXPECT_NE(success, ZVGR_BufferRevoke(stream, buffer)) << "revoked twice";
    EXPECT_NE(success, ZVGR_BufferToQueue(buffer, zv_queue_input)) << "after its revoke";
}

TEST_F(QueuedStream, UnknownCommandsAndQueuesFail)
{
    const uint64_t buffer = announce(stream);
    uint64_t value = 7;
    for (const uint32_t command : {2U, 8U, 1002U, ZV_NO_HANDLE}) {
        EXPECT_NE(success, ZVGR_StreamGetInfo(stream, command, &value));
        EXPECT_NE(success, ZVGR_BufferGetInfo(buffer, command, &value));
        EXPECT_NE(success, ZVGR_BufferToQueue(buffer, command));
    }
    EXPECT_EQ(7U, value);
}

TEST_F(QueuedStream, StreamsAndBuffersThatCannotExistAreNotMade)
{
    uint32_t made = 7;
    EXPECT_NE(success, ZVGR_StreamCreate(camera, &made, 1)) << "a camera has one stream number";
    EXPECT_NE(success, ZVGR_StreamCreateAndAlloc(camera, &made, 4, 1));
    EXPECT_NE(success, ZVGR_StreamCreateAndAlloc(camera, &made, 0, 0));
    EXPECT_NE(success, ZVGR_StreamCreateAndAlloc(camera, &made, UINT32_MAX, 0));
    EXPECT_EQ(7U, made);
    uint64_t buffer = 7;
    EXPECT_NE(success, ZVGR_BufferAllocAndAnnounce(stream, UINT64_MAX, nullptr, &buffer));
    EXPECT_NE(success, ZVGR_BufferAllocAndAnnounce(stream, UINT64_MAX / 4, nullptr, &buffer));
    EXPECT_EQ(7U, buffer);
}

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
