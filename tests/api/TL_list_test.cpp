#include <set>

#include "api/lines.h"

// TLUpdateInterfaceList, TLGetNumInterfaces and TLGetInterfaceID.

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

TEST_F(TLUpdateInterfaceList, HidesTheDemoGrabber)
{
    struct Row {
        uint32_t found;
        uint32_t setting;
        uint32_t listed;
    };
    for (const Row& row : {Row{0, 0, 0}, Row{0, 1, 0}, Row{1, 0, 1}, Row{1, 1, 1}, Row{2, 0, 1}, Row{2, 1, 2},
                           Row{3, 0, 2}, Row{3, 1, 3}, Row{3, 7, 3}, Row{3, 0xFFFFFFFF, 3}}) {
        SCOPED_TRACE(std::to_string(row.found) + " found, setting " + std::to_string(row.setting));
        fake.has_grabbers(row.found);
        settings.set("GenTL.Interface.ExposeDemoGrabber", row.setting);
        EXPECT_EQ(row.listed, update());
    }
}

TEST_F(TLUpdateInterfaceList, ReadsTheSettingEveryTime)
{
    fake.has_grabbers(3);
    EXPECT_EQ(2U, update());
    settings.set("GenTL.Interface.ExposeDemoGrabber", 1);
    EXPECT_EQ(3U, update());
    EXPECT_EQ(1, changed);
    EXPECT_EQ("FG2", interface_id(2));
    settings.set("GenTL.Interface.ExposeDemoGrabber", 0);
    EXPECT_EQ(2U, update());
    EXPECT_EQ(1, changed);
}

TEST_F(TLUpdateInterfaceList, ComparesTheNumberAlone)
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

TEST_F(TLUpdateInterfaceList, IgnoresTheStatusOfTheScan)
{
    fake.has_grabbers(3);
    fake.next("ZV_DeviceScan").answers_after_effect(any_failure);
    EXPECT_EQ(2U, update());
}

TEST_F(TLUpdateInterfaceList, FindsNothingWhenTheScanWritesNothing)
{
    update();
    forget();
    fake.next("ZV_DeviceScan").answers(any_failure);
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLUpdateInterfaceList(tl, &changed, 0));
    EXPECT_EQ(1, changed);
    EXPECT_LOG_LINES(info_line("Enter TLUpdateInterfaceList"), found_line(0),
                     info_line("Exit TLUpdateInterfaceList"));
}

TEST_F(TLUpdateInterfaceList, ListsNothingForANegativeCount)
{
    update();
    forget();
    fake.next("ZV_DeviceScan").gives(0xFFFFFFFF);
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLUpdateInterfaceList(tl, &changed, 0));
    EXPECT_LOG_LINES(info_line("Enter TLUpdateInterfaceList"), found_line(-1),
                     info_line("Exit TLUpdateInterfaceList"));
    fake.has_grabbers(0);
    EXPECT_EQ(0U, num_interfaces());
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

TEST_F(TLUpdateInterfaceList, ClosesOpenInterfacesOfTheOldListInOrder)
{
    fake.has_grabbers(3);
    open_interface("FG1");
    open_interface("FG0");
    const uint32_t first = fake.grabber_handle(0);
    const uint32_t second = fake.grabber_handle(1);
    fake.has_grabbers(4);
    forget();
    update();
    EXPECT_EQ((Calls{call("ZV_DeviceScan"), call("ZVGR_Close", first), call("ZVGR_Close", second)}),
              fake.calls());
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

class TLGetInterfaceID : public OpenSystem {
protected:
    std::array<char, 16> id{};
    size_t size{16};

    void SetUp() override
    {
        OpenSystem::SetUp();
        num_interfaces();
        id.fill('\xA5');
        forget();
    }

    ExpectedLine enter(uint32_t index, int room)
    {
        return info_line("Enter TLGetInterfaceID, handle=0x" + hex16(tl) + ", index=" +
                         std::to_string(static_cast<int>(index)) + ", size=" + std::to_string(room));
    }
};

TEST_F(TLGetInterfaceID, CopiesTheID)
{
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLGetInterfaceID(tl, 0, id.data(), &size));
    EXPECT_STREQ("FG0", id.data());
    EXPECT_EQ(4U, size);
    EXPECT_EQ('\xA5', id[4]);
    EXPECT_LOG_LINES(enter(0, 16), info_line("New grabber id was filled=FG0"),
                     info_line("Exit TLGetInterfaceID, size=4, Interface ID=FG0"));
}

TEST_F(TLGetInterfaceID, FitsExactly)
{
    size = 4;
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLGetInterfaceID(tl, 0, id.data(), &size));
    EXPECT_STREQ("FG0", id.data());
    EXPECT_EQ(4U, size);
}

TEST_F(TLGetInterfaceID, AnswersTheSizeAlone)
{
    for (char* nowhere : {static_cast<char*>(nullptr), all_ones<char*>()}) {
        forget();
        size = 0;
        EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLGetInterfaceID(tl, 0, nowhere, &size));
        EXPECT_EQ(4U, size);
        EXPECT_LOG_LINES(enter(0, 0), info_line("Exit TLGetInterfaceID, size=4, Interface ID=FG0"));
    }
}

TEST_F(TLGetInterfaceID, CopiesNothingWhenTheRoomIsTooSmall)
{
    const std::string text = "GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold Interface Id data";
    for (int room : {3, 1, 0}) {
        forget();
        size = static_cast<size_t>(room);
        EXPECT_EQ(GC_ERR_BUFFER_TOO_SMALL, GenTL::TLGetInterfaceID(tl, 0, id.data(), &size));
        EXPECT_EQ(4U, size);
        EXPECT_EQ('\xA5', id[0]);
        EXPECT_LOG_LINES(enter(0, room), error_line(text), FAILED_WITH(GC_ERR_BUFFER_TOO_SMALL));
    }
    EXPECT_EQ(text, last_error());
}

TEST_F(TLGetInterfaceID, RefusesIndexesBehindTheList)
{
    const std::string before = last_error();
    for (uint32_t index : {1U, 2U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_INDEX, GenTL::TLGetInterfaceID(tl, index, id.data(), &size));
        EXPECT_LOG_LINES(enter(index, 16), error_line("Invalid inteface index " + std::to_string(index)),
                         FAILED_WITH(GC_ERR_INVALID_INDEX));
    }
    EXPECT_EQ(16U, size);
    EXPECT_EQ('\xA5', id[0]);
    EXPECT_EQ(before, last_error());
}

TEST_F(TLGetInterfaceID, NumbersBeyondTenPlainly)
{
    fake.has_grabbers(13);
    GenTL::TLUpdateInterfaceList(tl, nullptr, 0);
    for (uint32_t i = 0; i < 12; ++i)
        EXPECT_EQ("FG" + std::to_string(i), interface_id(i));
}

class TLGetInterfaceIDWithoutAList : public OpenSystem {};

TEST_F(TLGetInterfaceIDWithoutAList, ListsTheInterfacesFirst)
{
    fake.has_grabbers(3);
    EXPECT_EQ("FG1", interface_id(1));
    EXPECT_EQ((Calls{call("ZV_DeviceScan")}), fake.calls());
}

TEST_F(TLGetInterfaceIDWithoutAList, FindsNoIndexWithoutGrabbers)
{
    fake.has_grabbers(0);
    size_t size = 0;
    EXPECT_EQ(GC_ERR_INVALID_INDEX, GenTL::TLGetInterfaceID(tl, 0, nullptr, &size));
    EXPECT_EQ(GC_ERR_INVALID_INDEX, GenTL::TLGetInterfaceID(tl, 0, nullptr, &size));
    EXPECT_EQ(2U, fake.count("ZV_DeviceScan"));
}

} // namespace

} // namespace zvtest
