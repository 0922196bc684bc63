#include <set>

#include "api/lines.h"
#include "support/FailingAllocations.h"

// TLUpdateInterfaceList and TLGetNumInterfaces, and the scan that TLGetInterfaceID makes.

namespace zvtest {

namespace {

const ExpectedLine unchanged_line =
    info_line("Exit TLUpdateInterfaceList - GC_ERR_SUCCESS, number of interfaces hasn't changed");

ExpectedLine found_line(int count)
{
    return info_line("TLUpdateInterfaceList - Found " + std::to_string(count) + " Grabbers");
}

class TLUpdateInterfaceList : public OpenSystem {
protected:
    bool8_t changed{untouched<bool8_t>()};

    /// An update that has to work, and how many interfaces there are afterwards.
    uint32_t update()
    {
        EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLUpdateInterfaceList(tl, &changed, 0));
        return num_interfaces();
    }
};

TEST_F(TLUpdateInterfaceList, ListsWhatTheScanFound)
{
    fake.has_grabbers(3);
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLUpdateInterfaceList(tl, &changed, 0));
    EXPECT_EQ(1, changed);
    EXPECT_LOG_LINES(info_line("Enter TLUpdateInterfaceList"), found_line(2),
                     info_line("Exit TLUpdateInterfaceList"));
    EXPECT_EQ((Calls{call("ZV_DeviceScan")}), fake.calls());
    EXPECT_EQ((std::vector<SettingsRead>{plain_read("GenTL.Interface.ExposeDemoGrabber", 0)}),
              settings.reads());
    EXPECT_EQ(0U, settings.stored("GenTL.Interface.ExposeDemoGrabber"));
}

TEST_F(TLUpdateInterfaceList, ReportsNoChangeTheSecondTime)
{
    fake.has_grabbers(3);
    update();
    const IF_HANDLE open = open_interface("FG1");
    forget();
    changed = 7;
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLUpdateInterfaceList(tl, &changed, 0));
    EXPECT_EQ(0, changed);
    EXPECT_LOG_LINES(info_line("Enter TLUpdateInterfaceList"), found_line(2), unchanged_line);
    uint32_t count = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, IFGetNumDevices(open, &count));
}

TEST_F(TLUpdateInterfaceList, ComparesOnlyTheNumber)
{
    update();
    const IF_HANDLE iface = open_interface("FG0");
    fake.grabber(0).has_protocol(2).is_named("another").has_cameras(5);
    EXPECT_EQ(1U, update());
    EXPECT_EQ(0, changed);
    uint32_t count = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, IFGetNumDevices(iface, &count));
}

TEST_F(TLUpdateInterfaceList, FindsNothingWithoutGrabbers)
{
    fake.has_grabbers(0);
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLUpdateInterfaceList(tl, &changed, 0));
    EXPECT_EQ(0, changed);
    EXPECT_LOG_LINES(info_line("Enter TLUpdateInterfaceList"), found_line(0), unchanged_line);
}

TEST_F(TLUpdateInterfaceList, ForgetsGrabbersThatAreGone)
{
    update();
    open_interface("FG0");
    fake.has_grabbers(0);
    EXPECT_EQ(0U, update());
    EXPECT_EQ(1, changed);
}

TEST_F(TLUpdateInterfaceList, ListsNothingUntilTheRebuildIsDone)
{
    log.set_level(Priority::fatal); // lines are made of memory as well
    size_t failures = 0;
    for (long nth = 1;; ++nth) {
        SCOPED_TRACE(nth);
        fake.has_grabbers(1);
        update();
        fake.has_grabbers(4);
        GC_ERROR code = GC_ERR_SUCCESS;
        bool struck = false;
        {
            const auto faults = FailingAllocations::nth(nth);
            code = GenTL::TLUpdateInterfaceList(tl, &changed, 0);
            struck = faults.struck();
        }
        if (!struck)
            break;
        EXPECT_EQ(GC_ERR_ERROR, code);
        forget();
        EXPECT_EQ(3U, num_interfaces());
        failures += fake.count("ZV_DeviceScan"); // there was no list
    }
    EXPECT_LE(3U, failures) << "an allocation for each interface";
    EXPECT_EQ(3U, num_interfaces());
}

TEST_F(TLUpdateInterfaceList, NeedsNoFlag)
{
    for (bool8_t* nowhere : {static_cast<bool8_t*>(nullptr), all_ones<bool8_t*>()}) {
        fake.has_grabbers(3);
        EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLUpdateInterfaceList(tl, nowhere, 0)); // changed
        EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLUpdateInterfaceList(tl, nowhere, 0)); // unchanged
        EXPECT_EQ(2U, num_interfaces());
        fake.has_grabbers(0);
        EXPECT_EQ(0U, update());
    }
}

TEST_F(TLUpdateInterfaceList, DoesNotUseTheTimeOut)
{
    for (uint64_t timeout : {uint64_t{0}, uint64_t{1}, uint64_t{GENTL_INFINITE}})
        EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLUpdateInterfaceList(tl, &changed, timeout));
}

TEST_F(TLUpdateInterfaceList, DoesNotGiveAnInterfaceHandleAgainSoon)
{
    std::set<IF_HANDLE> handles;
    constexpr size_t rounds = 100;
    for (uint32_t i = 0; i < rounds; ++i) {
        fake.has_grabbers(i % 2 == 0 ? 1 : 3);
        update();
        EXPECT_EQ(1, changed);
        handles.insert(open_interface("FG0"));
    }
    EXPECT_EQ(rounds, handles.size());
}

class TLUpdateInterfaceListWhileAcquiring : public RunningQueuedStream {};

TEST_F(TLUpdateInterfaceListWhileAcquiring, DropsDevicesWithoutClosingThem)
{
    const uint32_t handle = grabber();
    fake.has_grabbers(3);
    ASSERT_EQ(GC_ERR_SUCCESS, GenTL::TLUpdateInterfaceList(tl, nullptr, 0));
    EXPECT_EQ((Calls{call("ZV_DeviceScan"), call("ZVGR_Close", handle)}), fake.calls());
}

class TLGetNumInterfaces : public OpenSystem {};

TEST_F(TLGetNumInterfaces, ListsTheInterfacesAtTheFirstCall)
{
    fake.has_grabbers(3);
    uint32_t count = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLGetNumInterfaces(tl, &count));
    EXPECT_EQ(2U, count);
    EXPECT_LOG_LINES(info_line("Enter TLGetNumInterfaces"), info_line("Enter TLUpdateInterfaceList"),
                     found_line(2), info_line("Exit TLUpdateInterfaceList"),
                     info_line("Exit TLGetNumInterfaces, amount=2"));

    forget();
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLGetNumInterfaces(tl, &count));
    EXPECT_TRUE(fake.calls().empty());
    EXPECT_LOG_LINES(info_line("Enter TLGetNumInterfaces"), info_line("Exit TLGetNumInterfaces, amount=2"));
}

TEST_F(TLGetNumInterfaces, DoesNotNoticeAChangeByItself)
{
    EXPECT_EQ(1U, num_interfaces());
    fake.has_grabbers(5);
    EXPECT_EQ(1U, num_interfaces());
}

TEST_F(TLGetNumInterfaces, ScansAgainWhileThereIsNone)
{
    fake.has_grabbers(0);
    for (int i = 0; i < 2; ++i) {
        forget();
        EXPECT_EQ(0U, num_interfaces());
        EXPECT_EQ((Calls{call("ZV_DeviceScan")}), fake.calls());
        EXPECT_LOG_LINES(info_line("Enter TLGetNumInterfaces"), info_line("Enter TLUpdateInterfaceList"),
                         found_line(0), unchanged_line, info_line("Exit TLGetNumInterfaces, amount=0"));
    }
    fake.has_grabbers(1);
    EXPECT_EQ(1U, num_interfaces());
}

class TLGetInterfaceIDWithoutAList : public OpenSystem {};

TEST_F(TLGetInterfaceIDWithoutAList, ListsTheInterfacesFirst)
{
    fake.has_grabbers(3);
    EXPECT_EQ("FG1", interface_id(1));
    EXPECT_EQ((Calls{call("ZV_DeviceScan")}), fake.calls());
}

} // namespace

} // namespace zvtest
