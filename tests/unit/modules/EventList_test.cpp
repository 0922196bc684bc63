#include <atomic>
#include <thread>

#include "modules/EventList.h"
#include "unit/modules/Module_fixtures.h"

namespace zvtest {

namespace {

using namespace GenTL;
using zvgentl::EventList;
using zvgentl::EventRef;
using Outcome = EventList::Outcome;

class EventListTest : public LooseStream {
protected:
    EventList& list() { return stream->get_Events(); }
};

TEST_F(EventListTest, FindsByTypeAndByHandle)
{
    EXPECT_EQ(Outcome::made, list().add(*stream, EVENT_NEW_BUFFER).outcome);
    EXPECT_EQ(Outcome::made, list().add(*stream, EVENT_REMOTE_DEVICE).outcome);
    const EventRef event = list().find(EVENT_REMOTE_DEVICE);
    ASSERT_TRUE(event);
    EXPECT_EQ(EVENT_REMOTE_DEVICE, event->get_Type());
    EXPECT_EQ(stream.get(), &event->get_Source());
    EXPECT_EQ(event.get(), list().find(event.get()).get());
    EXPECT_NE(event.get(), list().find(EVENT_NEW_BUFFER).get());
    EXPECT_FALSE(list().find(this));
    EXPECT_FALSE(list().find(nullptr));
}

TEST_F(EventListTest, HasOneEventOfAType)
{
    const EventRef first = list().add(*stream, EVENT_NEW_BUFFER).event;
    EXPECT_EQ(first.get(), list().find(EVENT_NEW_BUFFER).get());
    settings.clear_reads();
    const EventList::Registration second = list().add(*stream, EVENT_NEW_BUFFER);
    EXPECT_EQ(Outcome::existed, second.outcome);
    EXPECT_EQ(first.get(), second.event.get());
    EXPECT_TRUE(settings.reads().empty()); // none was made
}

TEST_F(EventListTest, ClosesWhatItRemoves)
{
    list().add(*stream, EVENT_NEW_BUFFER);
    list().add(*stream, EVENT_REMOTE_DEVICE);
    const EventRef event = list().find(EVENT_NEW_BUFFER);
    EXPECT_TRUE(list().remove(EVENT_NEW_BUFFER));
    EXPECT_EQ(GC_ERR_ABORT, event->get_event_data(nullptr, GENTL_INFINITE));
    EXPECT_FALSE(list().find(EVENT_NEW_BUFFER));
    EXPECT_FALSE(list().find(event.get()));
    EXPECT_TRUE(list().find(EVENT_REMOTE_DEVICE));
    EXPECT_FALSE(list().remove(EVENT_NEW_BUFFER));
    EXPECT_TRUE(list().remove(EVENT_REMOTE_DEVICE));
    EXPECT_FALSE(list().find(EVENT_REMOTE_DEVICE));
}

TEST_F(EventListTest, TellsTheTypeOfItsOwnEventsOnly)
{
    EXPECT_EQ(std::nullopt, list().type_of(nullptr)) << "also while none has an address";
    const EventRef frames = list().add(*stream, EVENT_NEW_BUFFER).event;
    const EventRef device = list().add(*stream, EVENT_REMOTE_DEVICE).event;
    EXPECT_EQ(EVENT_NEW_BUFFER, list().type_of(frames.get()));
    EXPECT_EQ(EVENT_REMOTE_DEVICE, list().type_of(device.get()));
    EXPECT_EQ(std::nullopt, list().type_of(this));
    list().remove(EVENT_REMOTE_DEVICE);
    EXPECT_EQ(EVENT_NEW_BUFFER, list().type_of(frames.get())) << "it is still found without the list";
    EXPECT_EQ(std::nullopt, list().type_of(device.get()));
}

TEST_F(EventListTest, TakesAtOnceOnlyFromTheEventOfNewBuffersAndOnlyWithoutAnAbort)
{
    EVENT_NEW_BUFFER_DATA data{};
    EXPECT_FALSE(list().take_at_once(nullptr, &data));
    const EventRef frames = list().add(*stream, EVENT_NEW_BUFFER).event;
    const EventRef device = list().add(*stream, EVENT_REMOTE_DEVICE).event;
    EXPECT_FALSE(list().take_at_once(frames.get(), &data));
    for (int i = 0; i < 3; ++i) {
        append_and_signal(*frames, nullptr);
        append_and_signal(*device, nullptr);
    }
    EXPECT_FALSE(list().take_at_once(device.get(), &data));
    EXPECT_TRUE(list().take_at_once(frames.get(), &data));
    frames->kill();
    EXPECT_FALSE(list().take_at_once(frames.get(), &data));
    EXPECT_TRUE(frames->take_abort());
    frames->close();
    EXPECT_FALSE(list().take_at_once(frames.get(), &data));
    EXPECT_EQ(2U, frames->get_QueueLength());
}

TEST_F(EventListTest, ClosesEverythingAndRefusesNewEventsUntilItOpensAgain)
{
    list().add(*stream, EVENT_NEW_BUFFER);
    list().add(*stream, EVENT_REMOTE_DEVICE);
    const EventRef events[] = {list().find(EVENT_NEW_BUFFER), list().find(EVENT_REMOTE_DEVICE)};
    list().close();
    for (const EventRef& event : events) {
        EXPECT_EQ(GC_ERR_ABORT, event->get_event_data(nullptr, GENTL_INFINITE));
        EXPECT_FALSE(list().find(event.get()));
        EXPECT_FALSE(list().find(event->get_Type()));
    }
    const EventList::Registration refused = list().add(*stream, EVENT_NEW_BUFFER);
    EXPECT_EQ(Outcome::failed, refused.outcome);
    EXPECT_FALSE(refused.event);
    EXPECT_FALSE(list().find(EVENT_NEW_BUFFER));
    list().open();
    EXPECT_EQ(Outcome::made, list().add(*stream, EVENT_NEW_BUFFER).outcome);
}

TEST_F(EventListTest, KeepsItsEventsWhenItEndsTheWaits)
{
    list().add(*stream, EVENT_NEW_BUFFER);
    list().add(*stream, EVENT_REMOTE_DEVICE);
    list().end_waits();
    for (const EVENT_TYPE type : {EVENT_NEW_BUFFER, EVENT_REMOTE_DEVICE}) {
        const EventRef event = list().find(type);
        ASSERT_TRUE(event);
        EXPECT_EQ(GC_ERR_ABORT, event->get_event_data(nullptr, GENTL_INFINITE));
    }
}

TEST_F(EventListTest, DoesNotGiveAnAddressTwiceInARow)
{
    const void* last = nullptr;
    for (int i = 0; i < 100; ++i) {
        list().add(*stream, EVENT_NEW_BUFFER);
        const void* const now = list().find(EVENT_NEW_BUFFER).get();
        EXPECT_NE(last, now);
        last = now;
        list().remove(EVENT_NEW_BUFFER);
    }
}

TEST_F(EventListTest, EitherMakesAnEventOrListsNothingWhicheverAllocationFails)
{
    for (long n = 1;; ++n) {
        SCOPED_TRACE(n);
        EventList::Registration registration{Outcome::failed, {}};
        bool struck = false;
        {
            const auto faults = FailingAllocations::nth(n);
            registration = list().add(*stream, EVENT_NEW_BUFFER);
            struck = faults.struck();
        }
        EXPECT_EQ(struck ? Outcome::failed : Outcome::made, registration.outcome);
        EXPECT_EQ(!struck, static_cast<bool>(registration.event));
        EXPECT_EQ(!struck, static_cast<bool>(list().find(EVENT_NEW_BUFFER)));
        if (!struck) {
            EXPECT_LT(2, n) << "the event, its queue and its place in the list";
            break;
        }
    }
}

TEST_F(EventListTest, MakesOneEventOfATypeForSeveralThreads)
{
    for (int round = 0; round < 50; ++round) {
        std::atomic<int> made{0};
        std::atomic<int> failed{0};
        on_threads([&](int) {
            const Outcome outcome = list().add(*stream, EVENT_NEW_BUFFER).outcome;
            made += outcome == Outcome::made ? 1 : 0;
            failed += outcome == Outcome::failed ? 1 : 0;
        });
        EXPECT_EQ(1, made);
        EXPECT_EQ(0, failed);
        list().close();
        list().open();
    }
}

TEST_F(EventListTest, FindsEventsThatOtherThreadsRemove)
{
    constexpr int rounds = 500;
    std::atomic<bool> done{false};
    std::thread finder([&] {
        while (!done) {
            const EventRef event = list().find(EVENT_NEW_BUFFER);
            if (!event)
                continue;
            append_and_signal(*event, nullptr);
            EXPECT_EQ(1U, event->get_FiredCount());
            while (list().find(event.get()) && !done)
                std::this_thread::yield();
        }
    });
    for (int i = 0; i < rounds; ++i) {
        EXPECT_EQ(Outcome::made, list().add(*stream, EVENT_NEW_BUFFER).outcome);
        EXPECT_TRUE(list().remove(EVENT_NEW_BUFFER));
    }
    done = true;
    finder.join();
}

} // namespace

} // namespace zvtest
