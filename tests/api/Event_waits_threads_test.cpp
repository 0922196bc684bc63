#include <atomic>

#include "api/Event_fixtures.h"
#include "support/process/SleepingThread.h"

// What ends the waits of consumers that are known to sleep in EventGetData.

namespace zvtest {

namespace {

/// A consumer that sleeps in EventGetData.
class Waiter {
public:
    explicit Waiter(EVENT_HANDLE event, uint64_t timeout = GENTL_INFINITE)
        : m_thread{[this, event, timeout] {
              size_t size = sizeof m_datum;
              m_code = EventGetData(event, &m_datum, &size, timeout);
          }}
    {
    }

    GC_ERROR code()
    {
        m_thread.join();
        return m_code;
    }
    BUFFER_HANDLE buffer()
    {
        m_thread.join();
        return m_datum.BufferHandle;
    }
    bool is_asleep() const { return m_thread.is_asleep(); }

private:
    EVENT_NEW_BUFFER_DATA m_datum{};
    GC_ERROR m_code{untouched<GC_ERROR>()};
    SleepingThread m_thread;
};

class EventWaits : public EventStream {
protected:
    /// Several calls wait, and `close` ends all of them.
    template <class Close>
    void expect_all_ended_by(Close close)
    {
        Waiter waiters[]{Waiter{event}, Waiter{event}, Waiter{event}, Waiter{event}};
        EXPECT_EQ(GC_ERR_SUCCESS, close());
        for (Waiter& waiter : waiters)
            EXPECT_EQ(GC_ERR_ABORT, waiter.code());
    }
};

// Cut to 32 bits, the last but one would be no wait at all.
TEST_F(EventWaits, LastForLongTimeouts)
{
    for (const uint64_t timeout :
         {uint64_t{0xFFFFFFFE}, uint64_t{0xFFFFFFFF}, uint64_t{0x100000000}, uint64_t{GENTL_INFINITE}}) {
        SCOPED_TRACE(timeout);
        Waiter waiter{event, timeout};
        EXPECT_TRUE(waiter.is_asleep());
        deliver(*buffers[0]);
        EXPECT_EQ(GC_ERR_SUCCESS, waiter.code());
        EXPECT_EQ(GC_ERR_TIMEOUT, take().code);
    }
}

// EventModuleThreads.WakeEveryWaiterOnceClosed does this many times.
TEST_F(EventWaits, EndWhenTheEventIsUnregistered)
{
    expect_all_ended_by([this] { return unregister(); });
}

TEST_F(EventWaits, EndWithTheStreamForAnyEvent)
{
    ASSERT_EQ(GC_ERR_SUCCESS, GCRegisterEvent(ds, EVENT_REMOTE_DEVICE, &event));
    expect_all_ended_by([this] { return DSClose(ds); });
}

TEST_F(EventWaits, EndWithTheDevice)
{
    expect_all_ended_by([this] { return DevClose(dev); });
}

TEST_F(EventWaits, EndWhenTheInterfaceIsClosed)
{
    expect_all_ended_by([this] { return IFClose(iface); });
}

TEST_F(EventWaits, EndWithAFrameEachWhenFramesComeAtOnce)
{
    for (int round = 0; round < 20; ++round) {
        Waiter first{event};
        Waiter second{event};
        deliver(*buffers[0]);
        deliver(*buffers[1]);
        EXPECT_EQ(GC_ERR_SUCCESS, first.code());
        EXPECT_EQ(GC_ERR_SUCCESS, second.code());
        EXPECT_NE(first.buffer(), second.buffer());
    }
}

// The second kill may find that the first has not been seen yet: then one abort answers both.
TEST_F(EventWaits, EndWithAKillEach)
{
    for (int round = 0; round < 20; ++round) {
        Waiter first{event};
        Waiter second{event};
        kill();
        kill();
        int aborted = 0;
        for (Waiter* const waiter : {&first, &second}) {
            aborted += waiter->code() == GC_ERR_ABORT ? 1 : 0;
            EXPECT_TRUE(waiter->code() == GC_ERR_ABORT || waiter->code() == GC_ERR_TIMEOUT);
        }
        EXPECT_GE(aborted, 1);
    }
}

TEST_F(EventWaits, EndWithTheSystem)
{
    Waiter waiter{event};
    EXPECT_EQ(GC_ERR_SUCCESS, TLClose(tl));
    EXPECT_EQ(GC_ERR_ABORT, waiter.code());
}

TEST_F(EventWaits, EndWithTheLibrary)
{
    Waiter first{event};
    Waiter second{event};
    const Calls closing{call("ZVGR_Close", grabber())};
    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, GCCloseLib());
    EXPECT_EQ(closing, fake.calls()) << "nothing below is closed one by one";
    EXPECT_EQ(GC_ERR_ABORT, first.code());
    EXPECT_EQ(GC_ERR_ABORT, second.code());
}

TEST_F(EventWaits, EndWithTheListOfInterfaces)
{
    Waiter waiter{event};
    fake.has_grabbers(3);
    EXPECT_EQ(GC_ERR_SUCCESS, TLUpdateInterfaceList(tl, nullptr, 0));
    EXPECT_EQ(GC_ERR_ABORT, waiter.code());
}

TEST_F(EventWaits, GoOnWhenTheDeviceIsDroppedAndEndWithItsInterface)
{
    Waiter waiter{event};
    fake.grabber(0).has_cameras(2);
    EXPECT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    EXPECT_TRUE(waiter.is_asleep());
    EXPECT_EQ(GC_ERR_SUCCESS, TLClose(tl));
    EXPECT_EQ(GC_ERR_ABORT, waiter.code());
}

// A frame's entry and its signal come in one step. In two, a consumer that took the entry in between would
// find its next wait ended by the signal, with nothing there.
TEST_F(EventWaits, AreNotEndedByTheSignalOfAFrameThatWasTaken)
{
    log.set_level(Priority::warning);
    for (int round = 0; round < 500; ++round) {
        std::atomic<bool> is_delivering{false};
        std::thread library{[&] {
            is_delivering = true;
            deliver(*buffers[0]);
        }};
        while (!is_delivering)
            std::this_thread::yield();
        while (take().code != GC_ERR_SUCCESS) {
        }
        library.join();
        Waiter waiter{event};
        ASSERT_TRUE(waiter.is_asleep()) << "in round " << round;
        deliver(*buffers[1]);
        EXPECT_EQ(GC_ERR_SUCCESS, waiter.code());
        EXPECT_EQ(buffers[1]->handle, waiter.buffer());
    }
}

} // namespace

} // namespace zvtest
