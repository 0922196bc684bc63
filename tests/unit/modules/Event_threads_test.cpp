#include <atomic>
#include <thread>
#include <vector>

#include "unit/modules/Module_fixtures.h"

// Events and their list with several threads, apart from any tree.

namespace zvtest {

namespace {

using namespace GenTL;
using zvgentl::EventList;
using zvgentl::EventModule;
using zvgentl::EventRef;

class EventListThreads : public LooseStream {};

TEST_F(EventListThreads, MakeOneEventOfAType)
{
    for (int round = 0; round < 50; ++round) {
        EventList list;
        std::atomic<int> made{0};
        std::atomic<int> failed{0};
        on_threads([&](int) {
            const EventList::Registration registration = list.add(*stream, EVENT_NEW_BUFFER);
            made += registration == EventList::Registration::made ? 1 : 0;
            failed += registration == EventList::Registration::failed ? 1 : 0;
        });
        EXPECT_EQ(1, made);
        EXPECT_EQ(0, failed);
        list.clear();
    }
}

TEST_F(EventListThreads, FindEventsThatOthersRemove)
{
    constexpr int rounds = 500;
    EventList list;
    std::atomic<bool> done{false};
    std::thread finder([&] {
        while (!done) {
            const EventRef event = list.find(EVENT_NEW_BUFFER);
            if (!event)
                continue;
            event->append(nullptr);
            event->signal();
            EXPECT_EQ(1U, event->get_FiredCount());
            while (list.find(event.get()) && !done)
                std::this_thread::yield();
        }
    });
    for (int i = 0; i < rounds; ++i) {
        EXPECT_EQ(EventList::Registration::made, list.add(*stream, EVENT_NEW_BUFFER));
        EXPECT_TRUE(list.remove(EVENT_NEW_BUFFER));
    }
    done = true;
    finder.join();
}

/// Whether appends and takes exclude one another is the setting's choice; that nothing tears is not.
class EventModuleThreads : public LooseStream, public testing::WithParamInterface<uint32_t> {
protected:
    void SetUp() override
    {
        LooseStream::SetUp();
        settings.set("GenTL.Event.SerializeStreamEvent", GetParam());
        event = EventRef(new EventModule(*stream, EVENT_NEW_BUFFER));
    }
    void TearDown() override
    {
        event = EventRef();
        LooseStream::TearDown();
    }

    EventRef event;
};

INSTANTIATE_TEST_SUITE_P(SerializeStreamEvent, EventModuleThreads, testing::Values(0U, 1U));

TEST_P(EventModuleThreads, HandOverEveryEntryOnce)
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

TEST_P(EventModuleThreads, FlushWhileOthersAppend)
{
    constexpr uint64_t entries = 4000;
    std::atomic<bool> done{false};
    std::thread flusher([&] {
        while (!done) {
            event->flush();
            EXPECT_LE(event->get_QueueLength(), entries);
        }
    });
    for (uint64_t i = 0; i < entries; ++i)
        event->append(nullptr);
    done = true;
    flusher.join();
    EXPECT_EQ(entries, event->get_FiredCount());
}

TEST_P(EventModuleThreads, WakeEveryWaiterOnceClosed)
{
    for (int round = 0; round < 100; ++round) {
        std::atomic<int> aborted{0};
        std::atomic<int> started{0};
        std::vector<std::thread> waiters;
        waiters.reserve(4);
        for (int i = 0; i < 4; ++i) {
            waiters.emplace_back([&, reference = event] {
                ++started;
                aborted += reference->get_event_data(nullptr, GENTL_INFINITE) == GC_ERR_ABORT ? 1 : 0;
            });
        }
        while (started < 4)
            std::this_thread::yield();
        event->close();
        event = EventRef(); // the last waiter destroys it
        for (std::thread& waiter : waiters)
            waiter.join();
        EXPECT_EQ(4, aborted);
        event = EventRef(new EventModule(*stream, EVENT_NEW_BUFFER));
    }
}

} // namespace

} // namespace zvtest
