#include <algorithm>
#include <limits>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "api/DS_modes.h"

using namespace zvtest;

namespace {

constexpr ACQ_QUEUE_TYPE flush_all_events = 1000;

enum class Queue { general, input, output };

const char* name_of(Queue queue)
{
    switch (queue) {
    case Queue::general:
        return "BUFFER_QUEUE_TYPE::GENERAL";
    case Queue::input:
        return "BUFFER_QUEUE_TYPE::INPUT";
    default:
        return "BUFFER_QUEUE_TYPE::OUTPUT";
    }
}

/// What an operation does with a buffer of one queue.
struct Move {
    ACQ_QUEUE_TYPE operation;
    const char* name;
    Queue from;
    Queue to;
    int library_queue; // where it goes in the library in queued mode; -1: the library is not called
};

std::ostream& operator<<(std::ostream& out, const Move& move)
{
    return out << move.name << " from " << name_of(move.from);
}

const Move moves[] = {
    {ACQ_QUEUE_INPUT_TO_OUTPUT, "ACQ_QUEUE_INPUT_TO_OUTPUT", Queue::general, Queue::general, -1},
    {ACQ_QUEUE_INPUT_TO_OUTPUT, "ACQ_QUEUE_INPUT_TO_OUTPUT", Queue::input, Queue::output, 1},
    {ACQ_QUEUE_INPUT_TO_OUTPUT, "ACQ_QUEUE_INPUT_TO_OUTPUT", Queue::output, Queue::output, -1},
    {ACQ_QUEUE_OUTPUT_DISCARD, "ACQ_QUEUE_OUTPUT_DISCARD", Queue::general, Queue::general, -1},
    {ACQ_QUEUE_OUTPUT_DISCARD, "ACQ_QUEUE_OUTPUT_DISCARD", Queue::input, Queue::input, -1},
    {ACQ_QUEUE_OUTPUT_DISCARD, "ACQ_QUEUE_OUTPUT_DISCARD", Queue::output, Queue::general, -1},
    {ACQ_QUEUE_ALL_TO_INPUT, "ACQ_QUEUE_ALL_TO_INPUT", Queue::general, Queue::input, 0},
    {ACQ_QUEUE_ALL_TO_INPUT, "ACQ_QUEUE_ALL_TO_INPUT", Queue::input, Queue::input, -1},
    {ACQ_QUEUE_ALL_TO_INPUT, "ACQ_QUEUE_ALL_TO_INPUT", Queue::output, Queue::input, 0},
    {ACQ_QUEUE_UNQUEUED_TO_INPUT, "ACQ_QUEUE_UNQUEUED_TO_INPUT", Queue::general, Queue::input, 0},
    {ACQ_QUEUE_UNQUEUED_TO_INPUT, "ACQ_QUEUE_UNQUEUED_TO_INPUT", Queue::input, Queue::input, -1},
    {ACQ_QUEUE_UNQUEUED_TO_INPUT, "ACQ_QUEUE_UNQUEUED_TO_INPUT", Queue::output, Queue::output, -1},
    {ACQ_QUEUE_ALL_DISCARD, "ACQ_QUEUE_ALL_DISCARD", Queue::general, Queue::general, -1},
    {ACQ_QUEUE_ALL_DISCARD, "ACQ_QUEUE_ALL_DISCARD", Queue::input, Queue::general, -1},
    {ACQ_QUEUE_ALL_DISCARD, "ACQ_QUEUE_ALL_DISCARD", Queue::output, Queue::general, -1},
    {flush_all_events, "FLUSH ALL EVENTS", Queue::general, Queue::general, -1},
    {flush_all_events, "FLUSH ALL EVENTS", Queue::input, Queue::input, -1},
    {flush_all_events, "FLUSH ALL EVENTS", Queue::output, Queue::output, -1},
};

/// A stream that finds out the queue of a buffer, and brings one into it.
class FlushedStream : public OpenStream {
protected:
    void SetUp() override
    {
        OpenStream::SetUp();
        fake.allow_handle("ZVGR_BufferToQueue", 0);
        fake.allow_handle("ZVGR_BufferRevoke", 0);
    }

    Announced& announce_in(Queue queue_wanted)
    {
        Announced& buffer = announce();
        if (queue_wanted == Queue::general)
            return buffer;
        queue(buffer);
        if (queue_wanted == Queue::output) {
            start();
            deliver(buffer);
            stop();
        }
        return buffer;
    }

    Queue queue_of_only_buffer()
    {
        if (stream_info<size_t>(STREAM_INFO_NUM_QUEUED).value == 1)
            return Queue::input;
        return stream_info<size_t>(STREAM_INFO_NUM_AWAIT_DELIVERY).value == 1 ? Queue::output
                                                                              : Queue::general;
    }

    size_t num_in_event() { return event_info<size_t>(EVENT_NUM_IN_QUEUE).value; }
    void flush(ACQ_QUEUE_TYPE operation) { EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, operation)); }
};

class FlushMove : public FlushedStream, public testing::WithParamInterface<std::tuple<Mode, Move>> {
protected:
    bool is_queued() const override { return std::get<0>(GetParam()) == Mode::queued; }
    const Move& move() const { return std::get<1>(GetParam()); }
};

TEST_P(FlushMove, MovesTheBufferAndTellsTheLibraryInQueuedModeOnly)
{
    const Announced& buffer = announce_in(move().from);
    ASSERT_EQ(move().from, queue_of_only_buffer());
    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, move().operation));
    Calls expected;
    if (is_queued() && move().library_queue >= 0)
        expected.push_back(call("ZVGR_BufferToQueue", buffer.library, move().library_queue));
    EXPECT_EQ(expected, fake.calls());
    EXPECT_LOG_LINES({Priority::debug,
                      "Enter DSFlushQueue, stream handle=0x" + hex16(ds) +
                          ", operation=" + std::to_string(move().operation),
                      "DSFlushQueue", "ZVGRLibGenTL"},
                     {Priority::debug,
                      std::string("Request operation '") + move().name + "' for buffer 0x" +
                          hex16(buffer.handle) + " with handle=0x" + hex(buffer.library) +
                          ", currently in queue=" + name_of(move().from),
                      "StreamModule::buffer_operation", "StreamModule"},
                     {Priority::debug, "Exit DSFlushQueue", "DSFlushQueue", "ZVGRLibGenTL"});
    EXPECT_EQ(move().to, queue_of_only_buffer());
}

std::string name_of_move(const testing::TestParamInfo<std::tuple<Mode, Move>>& info)
{
    const auto& [mode, move] = info.param;
    const char* const from[] = {"general", "input", "output"};
    return testing::PrintToString(mode) + "_" + std::to_string(move.operation) + "_from_" +
           from[static_cast<size_t>(move.from)];
}

INSTANTIATE_TEST_SUITE_P(Operations, FlushMove,
                         testing::Combine(testing::Values(Mode::queued, Mode::cyclic),
                                          testing::ValuesIn(moves)),
                         name_of_move);

class FlushQueue : public FlushedStream, public testing::WithParamInterface<Mode> {
protected:
    bool is_queued() const override { return GetParam() == Mode::queued; }

    /// Two delivered buffers, both in the event.
    void deliver_two()
    {
        register_event();
        announce_in(Queue::output);
        announce_in(Queue::output);
        ASSERT_EQ(2U, num_in_event());
    }
};

TEST_P(FlushQueue, ActsOnEveryBufferInPoolOrder)
{
    const Announced& first = announce_in(Queue::output);
    const Announced& second = announce_in(Queue::input);
    const Announced& third = announce_in(Queue::general);
    forget();
    flush(ACQ_QUEUE_ALL_TO_INPUT);
    const Calls queued = {call("ZVGR_BufferToQueue", first.library, zv_queue_input),
                          call("ZVGR_BufferToQueue", third.library, zv_queue_input)};
    EXPECT_EQ(is_queued() ? queued : Calls{}, fake.calls());
    EXPECT_EQ(5U, log.lines().size()) << "enter, a line per buffer, exit";
    EXPECT_EQ(3U, stream_info<size_t>(STREAM_INFO_NUM_QUEUED).value);
    EXPECT_TRUE(buffer_info<bool8_t>(second.handle, BUFFER_INFO_IS_QUEUED).value);
}

TEST_P(FlushQueue, PutsInputBuffersIntoTheEventInPoolOrder)
{
    register_event();
    const BUFFER_HANDLE first = announce_in(Queue::input).handle;
    announce_in(Queue::general);
    const BUFFER_HANDLE third = announce_in(Queue::input).handle;
    flush(ACQ_QUEUE_INPUT_TO_OUTPUT);
    EXPECT_EQ(2U, num_in_event());
    EXPECT_EQ(first, take().data.BufferHandle);
    EXPECT_EQ(third, take().data.BufferHandle);
}

TEST_P(FlushQueue, CountsMovedBuffersAsFiredButNotAsDelivered)
{
    register_event();
    announce_in(Queue::input);
    flush(ACQ_QUEUE_INPUT_TO_OUTPUT);
    EXPECT_EQ(1U, event_info<uint64_t>(EVENT_NUM_FIRED).value);
    EXPECT_EQ(0U, stream_info<uint64_t>(STREAM_INFO_NUM_DELIVERED).value);
    EXPECT_FALSE(buffer_info<bool8_t>(buffers[0]->handle, BUFFER_INFO_NEW_DATA).value);
}

TEST_P(FlushQueue, EmptiesTheEventWhenOutputBuffersLeaveTheirQueue)
{
    const ACQ_QUEUE_TYPE operations[] = {ACQ_QUEUE_OUTPUT_DISCARD, ACQ_QUEUE_ALL_TO_INPUT,
                                         ACQ_QUEUE_ALL_DISCARD, flush_all_events};
    for (const ACQ_QUEUE_TYPE operation : operations) {
        SCOPED_TRACE(operation);
        deliver_two();
        flush(operation);
        EXPECT_EQ(0U, num_in_event());
        EXPECT_EQ(GC_ERR_SUCCESS, GCUnregisterEvent(ds, EVENT_NEW_BUFFER));
        flush(ACQ_QUEUE_ALL_DISCARD);
    }
}

TEST_P(FlushQueue, LeavesTheEventAloneOtherwise)
{
    deliver_two();
    flush(ACQ_QUEUE_INPUT_TO_OUTPUT);
    flush(ACQ_QUEUE_UNQUEUED_TO_INPUT);
    EXPECT_EQ(2U, num_in_event());
}

TEST_P(FlushQueue, EmptiesTheEventOfAnEmptyPoolToo)
{
    for (const ACQ_QUEUE_TYPE operation :
         {ACQ_QUEUE_OUTPUT_DISCARD, ACQ_QUEUE_ALL_TO_INPUT, ACQ_QUEUE_ALL_DISCARD}) {
        SCOPED_TRACE(operation);
        register_event();
        const Announced& buffer = announce_in(Queue::output);
        ASSERT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, buffer.handle, nullptr, nullptr));
        ASSERT_EQ(1U, num_in_event());
        flush(operation);
        EXPECT_EQ(0U, num_in_event());
    }
}

TEST_P(FlushQueue, FlushesEventsBufferByBuffer)
{
    register_event();
    const Announced& buffer = announce_in(Queue::output);
    ASSERT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, buffer.handle, nullptr, nullptr));
    flush(flush_all_events);
    EXPECT_EQ(1U, num_in_event()) << "an empty pool has no buffer to do it for";
    announce();
    flush(flush_all_events);
    EXPECT_EQ(0U, num_in_event());
}

TEST_P(FlushQueue, IgnoresWhatTheLibrarySays)
{
    announce_in(Queue::general);
    fake.always("ZVGR_BufferToQueue").answers(any_failure);
    flush(ACQ_QUEUE_ALL_TO_INPUT);
    EXPECT_EQ(Queue::input, queue_of_only_buffer());
    flush(ACQ_QUEUE_INPUT_TO_OUTPUT);
    EXPECT_EQ(Queue::output, queue_of_only_buffer());
}

TEST_P(FlushQueue, RefusesAnUnknownOperationAtTheFirstBuffer)
{
    register_event();
    for (const ACQ_QUEUE_TYPE operation :
         {-1, 5, 7, 999, 1001, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()}) {
        const std::string number = std::to_string(operation);
        SCOPED_TRACE(number);
        const Announced& buffer = buffers.empty() ? announce_in(Queue::output) : *buffers[0];
        announce_in(Queue::input);
        const size_t in_event = num_in_event();
        forget();
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, DSFlushQueue(ds, operation));
        EXPECT_EQ(Calls{}, fake.calls());
        EXPECT_LOG_LINES(
            {Priority::debug, "Enter DSFlushQueue, stream handle=0x" + hex16(ds) + ", operation=" + number},
            {Priority::debug, "Request operation 'UNSUPPORTED BUFFER QUEUE OPERATION " + number +
                                  "' for buffer 0x" + hex16(buffer.handle) + " with handle=0x" +
                                  hex(buffer.library) + ", currently in queue=BUFFER_QUEUE_TYPE::OUTPUT"},
            {Priority::error, "Unsupported buffer queue operation " + number,
             "StreamModule::buffer_operation", "StreamModule"},
            {Priority::error, "Exit, Returning error false (0x0)", "StreamModule::buffer_operation",
             "StreamModule"},
            {Priority::error, "Unsupported buffer operation= " + number, "DSFlushQueue", "ZVGRLibGenTL"},
            {Priority::error, "Exit, Returning error GC_ERR_NOT_IMPLEMENTED (0xFFFFFC15)", "DSFlushQueue"});
        EXPECT_EQ(in_event, num_in_event());
    }
}

INSTANTIATE_IN_BOTH_MODES(FlushQueue);

class DSFlushQueue : public FlushedStream {
protected:
    bool is_queued() const override { return true; }
};

TEST_F(DSFlushQueue, AcceptsAnyOperationOnAnEmptyPool)
{
    for (const ACQ_QUEUE_TYPE operation : {-1, 0, 1, 2, 3, 4, 5, 7, 1000, 1001}) {
        SCOPED_TRACE(operation);
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, GenTL::DSFlushQueue(ds, operation));
        EXPECT_LOG_LINES({Priority::debug, "Enter DSFlushQueue, stream handle=0x" + hex16(ds) +
                                               ", operation=" + std::to_string(operation)},
                         {Priority::debug, "Exit DSFlushQueue"});
    }
}

/// In a process of its own: a wait that nothing signalled says so once per process.
TEST_F(DSFlushQueue, DoesNotSignalMovedBuffers)
{
    register_event();
    announce_in(Queue::input);
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::DSFlushQueue(ds, ACQ_QUEUE_INPUT_TO_OUTPUT));
    EXPECT_EQ(GC_ERR_SUCCESS, EventFlush(event)); // empties the queue and leaves the signal as it is
    forget();
    EXPECT_EQ(GC_ERR_TIMEOUT, take(0).code);
    const std::vector<LogLine> lines = log.lines();
    EXPECT_EQ(
        1, std::count_if(lines.begin(), lines.end(),
                         [](const LogLine& line) { return line.function == "EventModule::get_event_data"; }))
        << "the wait was signalled";
}

TEST_F(DSFlushQueue, HasMovedBuffersToTheInputPoolWhenTheLibraryIsTold)
{
    Queue seen = Queue::general;
    fake.on("ZVGR_BufferToQueue", [&](const Call&) { seen = queue_of_only_buffer(); });
    announce();
    for (const ACQ_QUEUE_TYPE operation : {ACQ_QUEUE_ALL_TO_INPUT, ACQ_QUEUE_UNQUEUED_TO_INPUT}) {
        SCOPED_TRACE(operation);
        EXPECT_EQ(GC_ERR_SUCCESS, GenTL::DSFlushQueue(ds, ACQ_QUEUE_ALL_DISCARD));
        seen = Queue::general;
        EXPECT_EQ(GC_ERR_SUCCESS, GenTL::DSFlushQueue(ds, operation));
        EXPECT_EQ(Queue::input, seen) << "a frame filled at once would be lost";
    }
}

} // namespace
