#include <array>
#include <limits>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "api/DS_modes.h"
#include "api/lines.h"

using namespace zvtest;

namespace {

constexpr ACQ_QUEUE_TYPE flush_all_events = 1000;
constexpr ACQ_QUEUE_TYPE flushes_of_events[] = {ACQ_QUEUE_OUTPUT_DISCARD, ACQ_QUEUE_ALL_TO_INPUT,
                                                ACQ_QUEUE_ALL_DISCARD, flush_all_events};

enum Queue : size_t { general, input, output };

constexpr const char* queue_names[] = {"GENERAL", "INPUT", "OUTPUT"};

constexpr int not_called = -1;

/// Where an operation moves buffers, by the queue that they are in.
struct Operation {
    ACQ_QUEUE_TYPE number;
    const char* name;
    std::array<Queue, 3> destinations;
    std::array<int, 3> library_queues; // in queued mode
};

const Operation operations[] = {
    {0, "ACQ_QUEUE_INPUT_TO_OUTPUT", {general, output, output}, {not_called, zv_queue_output, not_called}},
    {1, "ACQ_QUEUE_OUTPUT_DISCARD", {general, input, general}, {not_called, not_called, not_called}},
    {2, "ACQ_QUEUE_ALL_TO_INPUT", {input, input, input}, {zv_queue_input, not_called, zv_queue_input}},
    {3, "ACQ_QUEUE_UNQUEUED_TO_INPUT", {input, input, output}, {zv_queue_input, not_called, not_called}},
    {4, "ACQ_QUEUE_ALL_DISCARD", {general, general, general}, {not_called, not_called, not_called}},
    {1000, "FLUSH ALL EVENTS", {general, input, output}, {not_called, not_called, not_called}},
};

std::ostream& operator<<(std::ostream& out, const Operation& operation) { return out << operation.name; }

/// A stream that finds out the queue of a buffer, and brings one into it.
class FlushedStream : public CountedStream {
protected:
    Announced& announce_in(Queue wanted)
    {
        Announced& buffer = announce();
        if (wanted == general)
            return buffer;
        queue(buffer);
        if (wanted == output) {
            start();
            deliver(buffer);
            stop();
        }
        return buffer;
    }

    Queue queue_of_only_buffer()
    {
        if (num_queued() == 1)
            return input;
        return num_await_delivery() == 1 ? output : general;
    }

    void flush(ACQ_QUEUE_TYPE operation) { EXPECT_EQ(GC_ERR_SUCCESS, DSFlushQueue(ds, operation)); }

    std::vector<ExpectedLine> enter_and_request(ACQ_QUEUE_TYPE operation, const std::string& name,
                                                const Announced& buffer, Queue queue) const
    {
        return {
            {Priority::debug,
             "Enter DSFlushQueue, stream handle=0x" + hex16(ds) + ", operation=" + std::to_string(operation),
             "DSFlushQueue", "ZVGRLibGenTL"},
            {Priority::debug,
             "Request operation '" + name + "' for buffer 0x" + hex16(buffer.handle) + " with handle=0x" +
                 hex(buffer.library) + ", currently in queue=BUFFER_QUEUE_TYPE::" + queue_names[queue],
             "StreamModule::buffer_operation", "StreamModule"}};
    }
};

using Move = std::tuple<Mode, Operation, Queue>;

class FlushMove : public FlushedStream, public testing::WithParamInterface<Move> {
protected:
    bool is_queued() const override { return std::get<Mode>(GetParam()) == Mode::queued; }
};

TEST_P(FlushMove, MovesTheBufferAndCallsTheLibraryOnlyInQueuedMode)
{
    const auto& operation = std::get<Operation>(GetParam());
    const Queue from = std::get<Queue>(GetParam());
    const Announced& buffer = announce_in(from);
    ASSERT_EQ(from, queue_of_only_buffer());
    forget();
    flush(operation.number);
    Calls expected;
    if (is_queued() && operation.library_queues[from] != not_called)
        expected.push_back(call("ZVGR_BufferToQueue", buffer.library, operation.library_queues[from]));
    EXPECT_EQ(expected, fake.calls());
    std::vector<ExpectedLine> lines = enter_and_request(operation.number, operation.name, buffer, from);
    lines.push_back({Priority::debug, "Exit DSFlushQueue", "DSFlushQueue", "ZVGRLibGenTL"});
    EXPECT_TRUE(logged_exactly(lines));
    EXPECT_EQ(operation.destinations[from], queue_of_only_buffer());
}

std::string name_of_move(const testing::TestParamInfo<Move>& info)
{
    const auto& [mode, operation, from] = info.param;
    return testing::PrintToString(mode) + "_" + std::to_string(operation.number) + "_from_" +
           queue_names[from];
}

INSTANTIATE_TEST_SUITE_P(Operations, FlushMove,
                         testing::Combine(testing::Values(Mode::queued, Mode::cyclic),
                                          testing::ValuesIn(operations),
                                          testing::Values(general, input, output)),
                         name_of_move);

class FlushQueue : public FlushedStream, public testing::WithParamInterface<Mode> {
protected:
    bool is_queued() const override { return GetParam() == Mode::queued; }

    /// Two delivered buffers, both in the event.
    void deliver_two()
    {
        register_event();
        announce_in(output);
        announce_in(output);
        ASSERT_EQ(2U, num_in_event());
    }
};

TEST_P(FlushQueue, ActsOnEveryBufferInPoolOrder)
{
    const Announced& first = announce_in(output);
    const Announced& second = announce_in(input);
    const Announced& third = announce_in(general);
    forget();
    flush(ACQ_QUEUE_ALL_TO_INPUT);
    const Calls queued = {call("ZVGR_BufferToQueue", first.library, zv_queue_input),
                          call("ZVGR_BufferToQueue", third.library, zv_queue_input)};
    EXPECT_EQ(is_queued() ? queued : Calls{}, fake.calls());
    EXPECT_EQ(5U, log.lines().size()) << "enter, a line per buffer, exit";
    EXPECT_EQ(3U, num_queued());
    EXPECT_TRUE(is_in_input_pool(second));
}

TEST_P(FlushQueue, FiresForInputBuffersInPoolOrderButDeliversNothing)
{
    register_event();
    const Announced& first = announce_in(input);
    announce_in(general);
    const Announced& third = announce_in(input);
    flush(ACQ_QUEUE_INPUT_TO_OUTPUT);
    EXPECT_EQ(2U, num_in_event());
    EXPECT_EQ(2U, event_info<uint64_t>(EVENT_NUM_FIRED).value);
    EXPECT_EQ(0U, num_delivered());
    EXPECT_FALSE(is_new(first));
    EXPECT_EQ(first.handle, take().data.BufferHandle);
    EXPECT_EQ(third.handle, take().data.BufferHandle);
}

TEST_P(FlushQueue, EmptiesTheEventWhenOutputBuffersLeaveTheirQueue)
{
    for (const ACQ_QUEUE_TYPE operation : flushes_of_events) {
        SCOPED_TRACE(operation);
        deliver_two();
        flush(ACQ_QUEUE_INPUT_TO_OUTPUT);
        flush(ACQ_QUEUE_UNQUEUED_TO_INPUT);
        EXPECT_EQ(2U, num_in_event()) << "which do not touch what is in it";
        flush(operation);
        EXPECT_EQ(0U, num_in_event());
        EXPECT_EQ(GC_ERR_SUCCESS, GCUnregisterEvent(ds, EVENT_NEW_BUFFER));
        flush(ACQ_QUEUE_ALL_DISCARD);
    }
}

// Flushing only the events is done buffer by buffer, so an empty pool has nothing to do it for.
TEST_P(FlushQueue, EmptiesTheEventOfAnEmptyPoolUnlessOnlyEventsAreFlushed)
{
    for (const ACQ_QUEUE_TYPE operation : flushes_of_events) {
        SCOPED_TRACE(operation);
        register_event();
        const Announced& buffer = announce_in(output);
        ASSERT_EQ(GC_ERR_SUCCESS, DSRevokeBuffer(ds, buffer.handle, nullptr, nullptr));
        ASSERT_EQ(1U, num_in_event());
        flush(operation);
        EXPECT_EQ(operation == flush_all_events ? 1U : 0U, num_in_event());
    }
}

TEST_P(FlushQueue, IgnoresTheStatusOfTheLibrary)
{
    announce_in(general);
    fake.always("ZVGR_BufferToQueue").answers(any_failure);
    flush(ACQ_QUEUE_ALL_TO_INPUT);
    EXPECT_EQ(input, queue_of_only_buffer());
    flush(ACQ_QUEUE_INPUT_TO_OUTPUT);
    EXPECT_EQ(output, queue_of_only_buffer());
}

TEST_P(FlushQueue, RefusesAnUnknownOperationAtTheFirstBuffer)
{
    register_event();
    const Announced& buffer = announce_in(output);
    announce_in(input);
    for (const ACQ_QUEUE_TYPE operation :
         {-1, 5, 7, 999, 1001, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()}) {
        const std::string number = std::to_string(operation);
        SCOPED_TRACE(number);
        forget();
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, DSFlushQueue(ds, operation));
        EXPECT_EQ(Calls{}, fake.calls());
        std::vector<ExpectedLine> lines =
            enter_and_request(operation, "UNSUPPORTED BUFFER QUEUE OPERATION " + number, buffer, output);
        lines.insert(lines.end(), {{Priority::error, "Unsupported buffer queue operation " + number,
                                    "StreamModule::buffer_operation", "StreamModule"},
                                   {Priority::error, "Exit, Returning error false (0x0)",
                                    "StreamModule::buffer_operation", "StreamModule"},
                                   {Priority::error, "Unsupported buffer operation= " + number,
                                    "DSFlushQueue", "ZVGRLibGenTL"},
                                   FAILED_WITH(GC_ERR_NOT_IMPLEMENTED)});
        EXPECT_TRUE(logged_exactly(lines));
        EXPECT_EQ(1U, num_in_event());
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

/// In a process of its own, because a wait without a signal is logged once per process.
TEST_F(DSFlushQueue, DoesNotSignalMovedBuffers)
{
    register_event();
    announce_in(input);
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::DSFlushQueue(ds, ACQ_QUEUE_INPUT_TO_OUTPUT));
    EXPECT_EQ(GC_ERR_SUCCESS, EventFlush(event)); // empties the queue and leaves the signal as it is
    forget();
    EXPECT_EQ(GC_ERR_TIMEOUT, take(0).code);
    EXPECT_LOGGED(Priority::error, "Event wait timeout with error=0x102 for timeout=0",
                  "EventModule::get_event_data");
}

TEST_F(DSFlushQueue, HasMovedBuffersToTheInputPoolWhenTheLibraryIsCalled)
{
    Queue seen = general;
    fake.on("ZVGR_BufferToQueue", [&](const Call&) { seen = queue_of_only_buffer(); });
    announce();
    for (const ACQ_QUEUE_TYPE operation : {ACQ_QUEUE_ALL_TO_INPUT, ACQ_QUEUE_UNQUEUED_TO_INPUT}) {
        SCOPED_TRACE(operation);
        EXPECT_EQ(GC_ERR_SUCCESS, GenTL::DSFlushQueue(ds, ACQ_QUEUE_ALL_DISCARD));
        seen = general;
        EXPECT_EQ(GC_ERR_SUCCESS, GenTL::DSFlushQueue(ds, operation));
        EXPECT_EQ(input, seen) << "a frame filled at once would be lost";
    }
}

} // namespace
