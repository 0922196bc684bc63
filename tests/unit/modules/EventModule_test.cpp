#include <chrono>
#include <optional>
#include <vector>

#include "unit/modules/Module_fixtures.h"

namespace zvtest {

namespace {

using namespace GenTL;
using zvgentl::BufferModule;
using zvgentl::EventModule;

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

    int64_t milliseconds_of_a_wait(uint64_t timeout)
    {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(GC_ERR_TIMEOUT, get(timeout));
        const auto taken = std::chrono::steady_clock::now() - start;
        return std::chrono::duration_cast<std::chrono::milliseconds>(taken).count();
    }

    std::optional<EventModule> event;
    BufferModule* first{nullptr};
    BufferModule* second{nullptr};
    EVENT_NEW_BUFFER_DATA data{untouched<EVENT_NEW_BUFFER_DATA>()};

private:
    std::array<int, 2> m_users{};
};

TEST_F(EventModuleTest, IsNamedAfterItsAddress)
{
    EXPECT_EQ("Event0x" + hex(reinterpret_cast<uintptr_t>(&*event)), event->getId());
}

TEST_F(EventModuleTest, HasDataForNewBuffersAlone)
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

TEST_F(EventModuleTest, WorksTheSameWayWithEverySetting)
{
    for (const uint32_t value : {0U, 1U, 2U, 0xFFFFFFFFU}) {
        settings.set("GenTL.Event.SerializeStreamEvent", value);
        make_event(EVENT_NEW_BUFFER);
        event->append(first);
        event->append(second);
        EXPECT_TRUE(event->try_take(&data)) << value;
        EXPECT_EQ(first, data.BufferHandle) << value;
        event->flush();
        EXPECT_FALSE(event->try_take(&data)) << value;
    }
}

TEST_F(EventModuleTest, CountsWhatIsAppended)
{
    event->append(first);
    event->append(second);
    event->append(first);
    EXPECT_EQ(3U, event->get_QueueLength());
    EXPECT_EQ(3U, event->get_FiredCount());
    event->try_take(&data);
    EXPECT_EQ(2U, event->get_QueueLength());
    event->flush();
    EXPECT_EQ(0U, event->get_QueueLength());
    EXPECT_EQ(3U, event->get_FiredCount());
}

TEST_F(EventModuleTest, AppendsWithoutAllocating)
{
    const CountedAllocations counted;
    for (int i = 0; i < 200; ++i)
        event->append(first);
    EXPECT_EQ(0, counted.count());
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

TEST_F(EventModuleTest, TakesABufferThatLeftThePoolWithoutItsPrivatePointer)
{
    event->append(first);
    ASSERT_TRUE(stream->get_Buffers().remove(first));
    EXPECT_TRUE(event->try_take(&data));
    EXPECT_EQ(first, data.BufferHandle);
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
    EXPECT_GE(milliseconds_of_a_wait(30), 30);
}

TEST_F(EventModuleTest, EndsItsWaitWithASignalWithoutAnEntry)
{
    event->signal();
    EXPECT_EQ(GC_ERR_TIMEOUT, get(GENTL_INFINITE));
    EXPECT_GE(milliseconds_of_a_wait(30), 30);
}

TEST_F(EventModuleTest, CollapsesSignals)
{
    event->append(first);
    event->signal();
    event->append(second);
    event->signal();
    EXPECT_EQ(GC_ERR_SUCCESS, get(GENTL_INFINITE));
    EXPECT_EQ(first, data.BufferHandle);
    EXPECT_EQ(GC_ERR_SUCCESS, get(GENTL_INFINITE));
    EXPECT_EQ(second, data.BufferHandle);
    EXPECT_GE(milliseconds_of_a_wait(30), 30);
}

TEST_F(EventModuleTest, AbortsOnceForAKillAndDropsAnEntry)
{
    event->append(first);
    event->append(second);
    event->kill();
    EXPECT_EQ(GC_ERR_ABORT, get(GENTL_INFINITE));
    EXPECT_TRUE(is_untouched(data));
    EXPECT_EQ(GC_ERR_SUCCESS, get());
    EXPECT_EQ(second, data.BufferHandle);
    EXPECT_EQ(2U, event->get_FiredCount());
}

TEST_F(EventModuleTest, AbortsForAKillOfAnEmptyQueueAndForgetsItsSignal)
{
    event->kill();
    EXPECT_EQ(GC_ERR_ABORT, get(GENTL_INFINITE));
    EXPECT_GE(milliseconds_of_a_wait(30), 30);
}

TEST_F(EventModuleTest, HandsTheAbortOverOnce)
{
    EXPECT_FALSE(event->take_abort());
    event->kill();
    event->kill();
    EXPECT_TRUE(event->take_abort());
    EXPECT_FALSE(event->take_abort());
}

TEST_F(EventModuleTest, AbortsEveryCallOnceClosed)
{
    event->append(first);
    event->kill(); // which drops nothing then
    event->close();
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(GC_ERR_ABORT, get(GENTL_INFINITE));
    EXPECT_EQ(1U, event->get_QueueLength());
    EXPECT_TRUE(is_untouched(data));
}

TEST_F(EventModuleTest, CanStillBeTakenFromOnceClosed)
{
    event->append(first);
    event->close();
    EXPECT_TRUE(event->try_take(&data));
    EXPECT_EQ(first, data.BufferHandle);
}

// The operating-system event is the first thing that an event's constructor asks memory for.
TEST_F(EventModuleTest, TimesOutWithoutAnOperatingSystemEvent)
{
    event.reset();
    {
        const auto faults = FailingAllocations::nth(1);
        event.emplace(*stream, EVENT_NEW_BUFFER);
        EXPECT_TRUE(faults.struck());
    }
    EXPECT_EQ(GC_ERR_TIMEOUT, get(GENTL_INFINITE));
    event->append(first);
    event->signal();
    EXPECT_EQ(GC_ERR_SUCCESS, get(GENTL_INFINITE));
    event->close();
    EXPECT_EQ(GC_ERR_ABORT, get(GENTL_INFINITE));
}

/// Runs in its own process.
class EventModuleOncePerProcess : public EventModuleTest {};

TEST_F(EventModuleOncePerProcess, LogsTheFirstTimeout)
{
    EXPECT_EQ(GC_ERR_TIMEOUT, get(5));
    EXPECT_LOG_LINES({Priority::error, "Event wait timeout with error=0x102 for timeout=5",
                      "EventModule::get_event_data", "EventModule"});
    EXPECT_EQ(GC_ERR_TIMEOUT, get(6));
    EXPECT_EQ(1U, log.lines().size());
}

} // namespace

} // namespace zvtest
