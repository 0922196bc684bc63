#include "api/lines.h"

namespace zvtest {

namespace {

/// None of these names an interface of a system that lists FG0 and FG1.
constexpr const char* unknown_ids[] = {"", "FG", "fg0", "FG00", "FG0 ", " FG0", "FG2", "FG0x", "0"};

class TLOpenInterface : public OpenSystem {
protected:
    IF_HANDLE iface{untouched<IF_HANDLE>()};

    void SetUp() override
    {
        OpenSystem::SetUp();
        fake.has_grabbers(3);
        num_interfaces();
        forget();
    }

    GC_ERROR open(const char* id) { return GenTL::TLOpenInterface(tl, id, &iface); }
};

TEST_F(TLOpenInterface, OpensTheGrabberAtTheIndex)
{
    EXPECT_EQ(GC_ERR_SUCCESS, open("FG1"));
    EXPECT_EQ((Calls{call("ZVGR_Open", 1)}), fake.calls());
    EXPECT_LOG_LINES(info_line("Enter TLOpenInterface"),
                     info_line("Exit, Returning success GC_ERR_SUCCESS (0x0), Exit TLOpenInterface, index=1, "
                               "fgHandle=0x" +
                               low_hex(fake.grabber_handle(1)) + ", interfaceHandle=0x" + low_hex(iface)),
                     duration_line());
    EXPECT_EQ(1U, log.elapsed_calls());
    uint32_t count = untouched<uint32_t>();
    EXPECT_EQ(GC_ERR_SUCCESS, IFGetNumDevices(iface, &count));
    EXPECT_EQ(0U, count);
}

TEST_F(TLOpenInterface, GivesTheOpenOne)
{
    ASSERT_EQ(GC_ERR_SUCCESS, open("FG0"));
    const IF_HANDLE first = iface;
    iface = untouched<IF_HANDLE>();
    forget();
    EXPECT_EQ(GC_ERR_RESOURCE_IN_USE, open("FG0"));
    EXPECT_EQ(first, iface);
    EXPECT_TRUE(fake.calls().empty());
    EXPECT_LOG_LINES(info_line("Enter TLOpenInterface"), FAILED_WITH(GC_ERR_RESOURCE_IN_USE),
                     duration_line());
    uint32_t count = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, IFGetNumDevices(iface, &count));
}

TEST_F(TLOpenInterface, WritesNullWhenTheGrabberDoesNotOpen)
{
    const std::string before = last_error();
    forget();
    fake.next("ZVGR_Open").answers(ZV_NO_HANDLE);
    EXPECT_EQ(GC_ERR_ACCESS_DENIED, open("FG0"));
    EXPECT_EQ(nullptr, iface);
    EXPECT_LOG_LINES(info_line("Enter TLOpenInterface"), FAILED_WITH(GC_ERR_ACCESS_DENIED), duration_line());
    EXPECT_EQ(before, last_error());
    EXPECT_EQ(GC_ERR_SUCCESS, open("FG0")) << "the interface counts as open";
}

TEST_F(TLOpenInterface, RefusesUnknownIDs)
{
    const std::string before = last_error();
    for (const char* id : unknown_ids) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_ID, open(id));
        EXPECT_TRUE(is_untouched(iface));
        EXPECT_TRUE(fake.calls().empty());
        EXPECT_LOG_LINES(info_line("Enter TLOpenInterface"),
                         error_line(std::string("Invalid grabber Id ") + id), FAILED_WITH(GC_ERR_INVALID_ID),
                         duration_line());
    }
    EXPECT_EQ(before, last_error());
}

TEST_F(TLOpenInterface, OpensAClosedInterfaceAgain)
{
    open("FG0");
    const IF_HANDLE first = iface;
    const uint32_t first_grabber = fake.grabber_handle(0);
    ASSERT_EQ(GC_ERR_SUCCESS, IFClose(iface));
    EXPECT_EQ(GC_ERR_SUCCESS, open("FG0"));
    EXPECT_EQ(first, iface);
    EXPECT_NE(first_grabber, fake.grabber_handle(0));
    forget();
    ASSERT_EQ(GC_ERR_SUCCESS, IFUpdateDeviceList(iface, nullptr, 0));
    EXPECT_EQ(call("ZVGR_UpdateCameraList", fake.grabber_handle(0), 16), fake.calls().at(0));
}

class TLOpenInterfaceWithoutAList : public OpenSystem {};

TEST_F(TLOpenInterfaceWithoutAList, ListsTheInterfacesFirst)
{
    IF_HANDLE iface = nullptr;
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::TLOpenInterface(tl, "FG0", &iface));
    EXPECT_EQ((Calls{call("ZV_DeviceScan"), call("ZVGR_Open", 0)}), fake.calls());
    EXPECT_EQ((std::vector<std::string>{
                  "Enter TLOpenInterface", "Enter TLUpdateInterfaceList",
                  "TLUpdateInterfaceList - Found 1 Grabbers", "Exit TLUpdateInterfaceList",
                  "Exit, Returning success GC_ERR_SUCCESS (0x0), Exit TLOpenInterface, index=0, fgHandle=0x" +
                      low_hex(fake.grabber_handle(0)) + ", interfaceHandle=0x" + low_hex(iface),
                  "duration: 12 usec"}),
              logged_messages());
}

class TLGetInterfaceInfo : public OpenSystem {
protected:
    void SetUp() override
    {
        OpenSystem::SetUp();
        fake.has_grabbers(3);
        fake.grabber(1).is_named("Left grabber").has_protocol(1);
        num_interfaces();
        forget();
    }

    template <class T = std::string>
    Info<T> ask(INTERFACE_INFO_CMD command, size_t room = default_room, const char* id = "FG1")
    {
        forget();
        return query<T>(room,
                        [&](auto... out) { return GenTL::TLGetInterfaceInfo(tl, id, command, out...); });
    }
    ExpectedLine enter(INTERFACE_INFO_CMD command)
    {
        return info_line("Enter TLGetInterfaceInfo, hTL=0x" + hex16(tl) +
                         ", info=" + std::to_string(command));
    }
};

TEST_F(TLGetInterfaceInfo, WorksForOpenInterfacesAsWell)
{
    open_interface("FG1");
    EXPECT_EQ("Left grabber", ask(INTERFACE_INFO_DISPLAYNAME).value);
}

TEST_F(TLGetInterfaceInfo, RefusesUnknownIDsBeforeUnknownCommands)
{
    for (const char* id : unknown_ids) {
        for (const INTERFACE_INFO_CMD command : {0, 3}) {
            const auto answer = ask<uint32_t>(command, 4, id);
            EXPECT_EQ(GC_ERR_INVALID_ID, answer.code);
            EXPECT_TRUE(is_untouched(answer.type));
            EXPECT_EQ(4U, answer.size);
            EXPECT_LOG_LINES(enter(command), error_line(std::string("Invalid grabber Id ") + id),
                             FAILED_WITH(GC_ERR_INVALID_ID));
        }
    }
}

TEST_F(TLGetInterfaceInfo, LeavesABufferOfNoSizeToTheRuleForTexts)
{
    const auto id = ask(INTERFACE_INFO_ID, 0);
    EXPECT_EQ(GC_ERR_INVALID_PARAMETER, id.code);
    EXPECT_EQ(INFO_DATATYPE_STRING, id.type);
    EXPECT_EQ(0U, id.size);
    const std::string text =
        "TLGetInterfaceInfo - GC_ERR_INVALID_PARAMETER: buffer size too small to contain "
        "NULL termination (0/4)";
    EXPECT_LOG_LINES(enter(0), error_line(text), text_failed_with(GC_ERR_INVALID_PARAMETER));
    EXPECT_EQ(text, last_error());
}

class TLGetInterfaceInfoWithoutAList : public OpenSystem {};

TEST_F(TLGetInterfaceInfoWithoutAList, ListsTheInterfacesFirst)
{
    const auto id = query<std::string>(
        16, [&](auto... out) { return GenTL::TLGetInterfaceInfo(tl, "FG0", INTERFACE_INFO_ID, out...); });
    EXPECT_EQ("FG0", id.value);
    EXPECT_EQ((Calls{call("ZV_DeviceScan")}), fake.calls());
}

} // namespace

} // namespace zvtest
