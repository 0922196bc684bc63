#include <atomic>
#include <thread>

#include "modules/EventList.h"
#include "unit/modules/Module_fixtures.h"

namespace zvtest {

namespace {

using namespace GenTL;
using zvgentl::EventList;
using zvgentl::EventRef;
using Registration = EventList::Registration;

class EventListTest : public LooseStream {
protected:
    void TearDown() override
    {
        list.clear();
        LooseStream::TearDown();
    }

    EventList list;
};

TEST_F(EventListTest, FindsByTypeAndByHandle)
{
    EXPECT_EQ(Registration::made, list.add(*stream, EVENT_NEW_BUFFER));
    EXPECT_EQ(Registration::made, list.add(*stream, EVENT_REMOTE_DEVICE));
    const EventRef event = list.find(EVENT_REMOTE_DEVICE);
    ASSERT_TRUE(event);
    EXPECT_EQ(EVENT_REMOTE_DEVICE, event->get_Type());
    EXPECT_EQ(stream.get(), &event->get_Source());
    EXPECT_EQ(event.get(), list.find(event.get()).get());
    EXPECT_NE(event.get(), list.find(EVENT_NEW_BUFFER).get());
    EXPECT_FALSE(list.find(this));
    EXPECT_FALSE(list.find(nullptr));
}

TEST_F(EventListTest, HasOneEventOfAType)
{
    list.add(*stream, EVENT_NEW_BUFFER);
    const void* const first = list.find(EVENT_NEW_BUFFER).get();
    settings.clear_reads();
    EXPECT_EQ(Registration::existed, list.add(*stream, EVENT_NEW_BUFFER));
    EXPECT_EQ(first, list.find(EVENT_NEW_BUFFER).get());
    EXPECT_TRUE(settings.reads().empty()); // none was made
}

TEST_F(EventListTest, ClosesWhatItRemoves)
{
    list.add(*stream, EVENT_NEW_BUFFER);
    list.add(*stream, EVENT_REMOTE_DEVICE);
    const EventRef event = list.find(EVENT_NEW_BUFFER);
    EXPECT_TRUE(list.remove(EVENT_NEW_BUFFER));
    EXPECT_EQ(GC_ERR_ABORT, event->get_event_data(nullptr, GENTL_INFINITE));
    EXPECT_FALSE(list.find(EVENT_NEW_BUFFER));
    EXPECT_FALSE(list.find(event.get()));
    EXPECT_TRUE(list.find(EVENT_REMOTE_DEVICE));
    EXPECT_FALSE(list.remove(EVENT_NEW_BUFFER));
}

TEST_F(EventListTest, ClosesEverythingWhenCleared)
{
    list.add(*stream, EVENT_NEW_BUFFER);
    list.add(*stream, EVENT_REMOTE_DEVICE);
    const EventRef events[] = {list.find(EVENT_NEW_BUFFER), list.find(EVENT_REMOTE_DEVICE)};
    list.clear();
    for (const EventRef& event : events) {
        EXPECT_EQ(GC_ERR_ABORT, event->get_event_data(nullptr, GENTL_INFINITE));
        EXPECT_FALSE(list.find(event.get()));
        EXPECT_FALSE(list.find(event->get_Type()));
    }
}

TEST_F(EventListTest, DoesNotGiveAnAddressTwiceInARow)
{
    const void* last = nullptr;
    for (int i = 0; i < 100; ++i) {
        list.add(*stream, EVENT_NEW_BUFFER);
        const void* const now = list.find(EVENT_NEW_BUFFER).get();
        EXPECT_NE(last, now);
        last = now;
        list.remove(EVENT_NEW_BUFFER);
    }
}

TEST_F(EventListTest, EitherMakesAnEventOrListsNothingWhicheverAllocationFails)
{
    for (long n = 1;; ++n) {
        SCOPED_TRACE(n);
        Registration registration = Registration::failed;
        bool struck = false;
        {
            const auto faults = FailingAllocations::nth(n);
            registration = list.add(*stream, EVENT_NEW_BUFFER);
            struck = faults.struck();
        }
        EXPECT_NE(Registration::existed, registration);
        EXPECT_EQ(registration == Registration::made, static_cast<bool>(list.find(EVENT_NEW_BUFFER)));
        if (n == 1) {
            EXPECT_EQ(Registration::failed, registration);
        }
        list.clear();
        if (!struck)
            break;
    }
}

TEST_F(EventListTest, MakesOneEventOfATypeForSeveralThreads)
{
    for (int round = 0; round < 50; ++round) {
        std::atomic<int> made{0};
        std::atomic<int> failed{0};
        on_threads([&](int) {
            const Registration registration = list.add(*stream, EVENT_NEW_BUFFER);
            made += registration == Registration::made ? 1 : 0;
            failed += registration == Registration::failed ? 1 : 0;
        });
        EXPECT_EQ(1, made);
        EXPECT_EQ(0, failed);
        list.clear();
    }
}

TEST_F(EventListTest, FindsEventsThatOtherThreadsRemove)
{
    constexpr int rounds = 500;
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
        EXPECT_EQ(Registration::made, list.add(*stream, EVENT_NEW_BUFFER));
        EXPECT_TRUE(list.remove(EVENT_NEW_BUFFER));
    }
    done = true;
    finder.join();
}

} // namespace

} // namespace zvtest
