#include <tuple>

#include "api/Event_fixtures.h"

// EventGetData while calls are not logged. Then the usual call is answered without going through the checks
// one by one, and must answer the same.

namespace zvtest {

namespace {

/// What an event has for the next call.
enum class Waiting { nothing, entries, entries_and_a_kill };

class QuietEventGetData : public EventStream {
protected:
    /// Everything that a call changes: its answer and outputs, and the entries that are left.
    auto call(Priority level, Waiting waiting, const void* handle, void* buffer, size_t room)
    {
        EXPECT_EQ(GC_ERR_SUCCESS, flush());
        take(); // and its signal
        for (const auto& announced : buffers)
            queue(*announced);
        if (waiting != Waiting::nothing)
            deliver_buffers(2);
        if (waiting == Waiting::entries_and_a_kill)
            kill();
        m_data = {};
        log.set_level(level);
        const GC_ERROR code = GenTL::EventGetData(const_cast<void*>(handle), buffer, &room, 0);
        log.set_level(Priority::trace);
        void* const handle_out = m_data.BufferHandle; // copies, because its members are not aligned
        void* const user_out = m_data.pUserPointer;
        return std::tuple{code, room, handle_out, user_out, in_queue()};
    }

    EVENT_NEW_BUFFER_DATA m_data{};
};

TEST_F(QuietEventGetData, AnswersTheSame)
{
    for (const Waiting waiting : {Waiting::nothing, Waiting::entries, Waiting::entries_and_a_kill}) {
        for (const void* const handle : {event, ds, all_ones<void*>(), static_cast<void*>(nullptr)}) {
            for (void* const buffer : {static_cast<void*>(&m_data), static_cast<void*>(nullptr)}) {
                for (const size_t room : {size_t{0}, size_t{15}, size_t{16}, size_t{40}}) {
                    SCOPED_TRACE(room);
                    const auto logged = call(Priority::trace, waiting, handle, buffer, room);
                    EXPECT_EQ(logged, call(Priority::information, waiting, handle, buffer, room));
                }
            }
        }
    }
}

TEST_F(QuietEventGetData, ChecksItsSize)
{
    deliver(*buffers[0]);
    log.set_level(Priority::information);
    for (size_t* const missing : {static_cast<size_t*>(nullptr), all_ones<size_t*>()})
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, get_data(&m_data, missing));
    EXPECT_EQ(1U, in_queue());
}

TEST_F(QuietEventGetData, TakesEntriesInOrder)
{
    deliver_buffers(2);
    log.set_level(Priority::information);
    forget();
    for (const size_t i : {size_t{0}, size_t{1}}) {
        const Taken taken = take();
        EXPECT_EQ(GC_ERR_SUCCESS, taken.code);
        EXPECT_EQ(buffers[i]->handle, taken.data.BufferHandle);
        EXPECT_EQ(buffers[i]->user, taken.data.pUserPointer);
        EXPECT_EQ(16U, taken.size);
    }
    EXPECT_LOG_LINES();
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(QuietEventGetData, UsesUpTheLineOfItsAcquisition)
{
    const auto take_quietly = [this] {
        deliver(*buffers[0]);
        log.set_level(Priority::information);
        EXPECT_EQ(GC_ERR_SUCCESS, take().code);
        log.set_level(Priority::trace);
        queue(*buffers[0]);
    };
    const auto expect_lines = [this](Priority priority) {
        deliver(*buffers[0]);
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, take().code);
        EXPECT_LOG_LINES(enter_line(0, priority), exit_line(*buffers[0], priority));
        queue(*buffers[0]);
    };
    take_quietly();
    expect_lines(Priority::trace);
    deliver(*buffers[0]);
    stop();
    log.set_level(Priority::information);
    EXPECT_EQ(GC_ERR_SUCCESS, take().code); // between two acquisitions, so the next has a line again
    log.set_level(Priority::trace);
    start();
    expect_lines(Priority::debug);
}

TEST_F(QuietEventGetData, TakesOnlyFromTheEventOfNewBuffers)
{
    EVENT_HANDLE other = nullptr;
    ASSERT_EQ(GC_ERR_SUCCESS, GCRegisterEvent(ds, EVENT_REMOTE_DEVICE, &other));
    deliver(*buffers[0]);
    log.set_level(Priority::information);
    size_t size = sizeof m_data;
    EXPECT_EQ(GC_ERR_TIMEOUT, GenTL::EventGetData(other, &m_data, &size, 0));
    EXPECT_EQ(1U, in_queue());
}

class QuietPolling : public PollingEventStream {};

TEST_F(QuietPolling, LosesALateEntryToo)
{
    deliver(*buffers[0]);
    log.set_level(Priority::information);
    const Taken taken = take();
    EXPECT_EQ(GC_ERR_TIMEOUT, taken.code);
    EXPECT_EQ(buffers[0]->handle, taken.data.BufferHandle);
    EXPECT_EQ(0U, in_queue());
}

} // namespace

} // namespace zvtest
