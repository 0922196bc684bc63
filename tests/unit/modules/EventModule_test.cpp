#include <array>
#include <atomic>
#include <chrono>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "unit/modules/Module_fixtures.h"

#if defined(ZV_ADDRESS_SANITIZER)
#include <sanitizer/asan_interface.h>
#endif

namespace zvtest {

namespace {

using namespace GenTL;
using zvgentl::BufferModule;
using zvgentl::EventList;
using zvgentl::EventModule;
using zvgentl::EventRef;

class EventModuleTest : public LooseStream {
protected:
    void SetUp() override
    {
        LooseStream::SetUp();
        event.emplace(*stream, EVENT_NEW_BUFFER);
        first = add_buffer(&m_users[0]);
        second = add_buffer(&m_users[1]);
    }
    void TearDown() override
    {
        event.reset();
        LooseStream::TearDown();
    }

    GC_ERROR get(uint64_t timeout = 0) { return event->get_event_data(&data, timeout); }
    void make_event(EVENT_TYPE type) { event.emplace(*stream, type); }

    /// No signal is pending.
    void expect_full_wait()
    {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(GC_ERR_TIMEOUT, get(30));
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
    }

    std::optional<EventModule> event;
    BufferModule* first{nullptr};
    BufferModule* second{nullptr};
    EVENT_NEW_BUFFER_DATA data{untouched<EVENT_NEW_BUFFER_DATA>()};

private:
    std::array<int, 2> m_users{};
};

TEST_F(EventModuleTest, HasDataOnlyForNewBuffers)
{
    EXPECT_EQ(16U, event->get_DataSize());
    for (const EVENT_TYPE type : {0, 2, 3, 4, 5, 1000}) {
        make_event(type);
        EXPECT_EQ(stream.get(), &event->get_Source());
        EXPECT_EQ(type, event->get_Type());
        EXPECT_EQ(0U, event->get_DataSize()) << type;
    }
}

TEST_F(EventModuleTest, ReadsItsSettingOnceWhenMade)
{
    settings.clear_reads();
    make_event(EVENT_NEW_BUFFER);
    event->append(first);
    event->try_take(&data);
    EXPECT_EQ((std::vector<SettingsRead>{plain_read("GenTL.Event.SerializeStreamEvent", 1)}),
              settings.reads());
}

TEST_F(EventModuleTest, CountsWhatIsAppended)
{
    event->append(first);
    event->append(second);
    event->append(first);
    EXPECT_TRUE(event->has_entries());
    EXPECT_EQ(3U, event->get_QueueLength());
    EXPECT_EQ(3U, event->get_FiredCount());
    event->try_take(&data);
    EXPECT_EQ(2U, event->get_QueueLength());
    event->flush();
    EXPECT_FALSE(event->has_entries());
    EXPECT_EQ(0U, event->get_QueueLength());
    event->append(first);
    EXPECT_EQ(4U, event->get_FiredCount());
}

TEST_F(EventModuleTest, TakesRecordsInOrderWithOrWithoutADestination)
{
    for (BufferModule* const buffer : {first, first, second})
        event->append(buffer);
    EXPECT_TRUE(event->try_take(&data));
    EXPECT_EQ(first, data.BufferHandle);
    EXPECT_EQ(first->get_Private(), data.pUserPointer);
    EXPECT_TRUE(event->try_take(nullptr));
    EXPECT_TRUE(event->try_take(&data));
    EXPECT_EQ(second, data.BufferHandle);
    EXPECT_EQ(second->get_Private(), data.pUserPointer);
    data = untouched<EVENT_NEW_BUFFER_DATA>();
    EXPECT_FALSE(event->try_take(&data));
    EXPECT_FALSE(event->try_take(nullptr));
    EXPECT_TRUE(is_untouched(data));
}

TEST_F(EventModuleTest, GivesThePrivatePointerThatABufferOfThePoolHasWhenItIsTaken)
{
    event->append(first);
    event->append(second);
    int later = 0;
    first->set_Private(&later);
    ASSERT_TRUE(stream->get_Buffers().remove(second));
    EXPECT_TRUE(event->try_take(&data));
    EXPECT_EQ(&later, data.pUserPointer);
    EXPECT_TRUE(event->try_take(&data));
    EXPECT_EQ(second, data.BufferHandle);
    EXPECT_EQ(nullptr, data.pUserPointer);
}

TEST_F(EventModuleTest, CopiesNothingForARemoteDeviceEvent)
{
    make_event(EVENT_REMOTE_DEVICE);
    event->append(first);
    event->append(second);
    EXPECT_TRUE(event->try_take(&data));
    EXPECT_TRUE(event->try_take(nullptr));
    EXPECT_TRUE(is_untouched(data));
    EXPECT_EQ(0U, event->get_QueueLength());
}

TEST_F(EventModuleTest, KeepsEntriesOfOtherTypesUnlessTheyAreDropped)
{
    for (const EVENT_TYPE type : {0, 2, 3, 5}) {
        make_event(type);
        event->append(first);
        EXPECT_FALSE(event->try_take(&data)) << type;
        EXPECT_EQ(1U, event->get_QueueLength()) << type;
        EXPECT_TRUE(event->try_take(nullptr)) << type;
        EXPECT_EQ(0U, event->get_QueueLength()) << type;
    }
    EXPECT_TRUE(is_untouched(data));
}

TEST_F(EventModuleTest, DoesNotSignalWhatItAppends)
{
    event->append(first);
    event->flush();
    expect_full_wait();
}

TEST_F(EventModuleTest, KeepsTheSignalOfAnEntryThatIsFlushedForOneWait)
{
    append_and_signal(*event, first);
    event->flush();
    EXPECT_EQ(GC_ERR_TIMEOUT, get(GENTL_INFINITE));
    expect_full_wait();
}

TEST_F(EventModuleTest, TakesAnEntryWithItsSignalOrWithout)
{
    append_and_signal(*event, first);
    EXPECT_EQ(GC_ERR_SUCCESS, get());
    expect_full_wait();
    append_and_signal(*event, first);
    EXPECT_TRUE(event->try_take(&data));
    EXPECT_EQ(GC_ERR_TIMEOUT, get(GENTL_INFINITE));
}

TEST_F(EventModuleTest, KeepsEveryEntryOfCollapsedSignals)
{
    append_and_signal(*event, first);
    append_and_signal(*event, second);
    EXPECT_EQ(GC_ERR_SUCCESS, get(GENTL_INFINITE));
    EXPECT_EQ(first, data.BufferHandle);
    EXPECT_EQ(GC_ERR_SUCCESS, get(GENTL_INFINITE));
    EXPECT_EQ(second, data.BufferHandle);
    expect_full_wait();
}

TEST_F(EventModuleTest, AbortsForAKillOfAnEmptyQueueAndForgetsItsSignal)
{
    event->kill();
    EXPECT_EQ(GC_ERR_ABORT, get(GENTL_INFINITE));
    expect_full_wait();
}

TEST_F(EventModuleTest, HandsTheAbortOverOnce)
{
    EXPECT_FALSE(event->take_abort());
    event->kill();
    event->kill();
    EXPECT_TRUE(event->take_abort());
    EXPECT_FALSE(event->take_abort());
}

TEST_F(EventModuleTest, AbortsEveryCallOnceClosedButKeepsItsEntries)
{
    event->append(first);
    event->kill(); // which drops nothing then
    event->close();
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(GC_ERR_ABORT, get(GENTL_INFINITE));
    EXPECT_TRUE(is_untouched(data));
    EXPECT_TRUE(event->try_take(&data));
    EXPECT_EQ(first, data.BufferHandle);
}

// The operating-system event is the first thing that an event's constructor asks memory for.
class EventModuleThreads : public LooseStream {
protected:
    void SetUp() override
    {
        LooseStream::SetUp();
        event = make();
    }
    void TearDown() override
    {
        event = EventRef();
        LooseStream::TearDown();
    }

    EventRef make() { return EventRef(new EventModule(*stream, EVENT_NEW_BUFFER)); }

    EventRef event;
};

TEST_F(EventModuleThreads, HandOverEveryEntryOnce)
{
    constexpr int appenders = 2;       // of the four threads
    constexpr uint64_t entries = 4000; // of each appender: the queue grows and wraps around meanwhile
    std::atomic<uint64_t> taken{0};
    on_threads([&](int number) {
        if (number < appenders) {
            for (uint64_t i = 0; i < entries; ++i)
                event->append(nullptr);
            return;
        }
        EVENT_NEW_BUFFER_DATA data;
        while (taken < appenders * entries) {
            if (event->try_take(&data))
                ++taken;
        }
    });
    EXPECT_EQ(appenders * entries, taken);
    EXPECT_EQ(appenders * entries, event->get_FiredCount());
    EXPECT_EQ(0U, event->get_QueueLength());
}

TEST_F(EventModuleThreads, FlushAndCountWhileOthersAppend)
{
    constexpr uint64_t entries = 4000;
    std::atomic<bool> done{false};
    std::thread flusher([&] {
        uint64_t last = 0;
        while (!done) {
            event->flush();
            EXPECT_LE(event->get_QueueLength(), entries);
            const uint64_t now = event->get_FiredCount();
            EXPECT_GE(now, last);
            last = now;
        }
    });
    for (uint64_t i = 0; i < entries; ++i)
        event->append(nullptr);
    done = true;
    flusher.join();
    EXPECT_EQ(entries, event->get_FiredCount());
}

TEST_F(EventModuleThreads, WakeEveryWaiterOnceClosed)
{
    for (int round = 0; round < 100; ++round) {
        const bool is_killed_first = round % 2 != 0;
        std::atomic<int> aborted{0};
        std::atomic<int> started{0};
        std::vector<std::thread> waiters;
        waiters.reserve(4);
        for (int i = 0; i < 4; ++i) {
            waiters.emplace_back([&, reference = event] {
                ++started;
                GC_ERROR code = reference->get_event_data(nullptr, GENTL_INFINITE);
                while (is_killed_first && code == GC_ERR_TIMEOUT) // woken for a kill that another one saw
                    code = reference->get_event_data(nullptr, GENTL_INFINITE);
                aborted += code == GC_ERR_ABORT ? 1 : 0;
            });
        }
        while (started < 4)
            std::this_thread::yield();
        if (is_killed_first)
            event->kill(); // whoever sees it may have taken the signal of the close as well
        event->close();
        event = EventRef(); // the last waiter destroys it
        for (std::thread& waiter : waiters)
            waiter.join();
        EXPECT_EQ(4, aborted);
        event = make();
    }
}

class EventRefTest : public LooseStream {
protected:
    EventModule* make() { return new EventModule(*stream, EVENT_NEW_BUFFER); }
};

TEST_F(EventRefTest, IsEmptyOrLeadsToItsEvent)
{
    EXPECT_FALSE(EventRef());
    EXPECT_FALSE(EventRef(nullptr));
    EventModule* const event = make();
    const EventRef first(event);
    EventRef copy(first);
    const EventRef moved(std::move(copy));
    EXPECT_FALSE(copy); // NOLINT(bugprone-use-after-move): empty is promised
    for (const EventRef* reference : {&first, &moved}) {
        EXPECT_TRUE(*reference);
        EXPECT_EQ(event, reference->get());
        EXPECT_EQ(event, &**reference);
        EXPECT_EQ(EVENT_NEW_BUFFER, (*reference)->get_Type());
    }
}

#if defined(ZV_ADDRESS_SANITIZER)
// AddressSanitizer poisons destroyed events. No other build can tell them from live ones.
bool is_destroyed(const EventModule* event) { return __asan_address_is_poisoned(event) != 0; }

TEST_F(EventRefTest, KeepsItsEventUntilTheLastReferenceGoes)
{
    EventRef first(make());
    const EventModule* const event = first.get();
    EventRef second(first);
    first = EventRef(make()); // instead of the event
    EXPECT_FALSE(is_destroyed(event));
    EventRef third(std::move(second));
    second = EventRef();
    EXPECT_FALSE(is_destroyed(event));
    const EventRef& itself = third;
    third = itself;
    EXPECT_FALSE(is_destroyed(event));
    third = first;
    EXPECT_TRUE(is_destroyed(event));
    EXPECT_FALSE(is_destroyed(first.get()));
}

TEST_F(EventRefTest, KeepsAnEventThatLeftItsList)
{
    EventList& events = stream->get_Events();
    events.add(*stream, EVENT_NEW_BUFFER);
    EventRef reference = events.find(EVENT_NEW_BUFFER);
    const EventModule* event = reference.get();
    events.remove(EVENT_NEW_BUFFER);
    EXPECT_FALSE(is_destroyed(event));
    reference = EventRef();
    EXPECT_TRUE(is_destroyed(event));

    events.add(*stream, EVENT_NEW_BUFFER);
    event = events.find(EVENT_NEW_BUFFER).get();
    EXPECT_FALSE(is_destroyed(event));
    events.close();
    EXPECT_TRUE(is_destroyed(event));
}
#endif

} // namespace

} // namespace zvtest
