#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "Port_fixtures.h"

// GCGetPortURL, GCGetNumPortURLs and GCGetPortURLInfo: what they answer, and what the library may do to them.

namespace zvtest {

namespace {

const std::string system_url = "Local:ZV_SystemGenTL.xml;88888888;d3f";
const std::string buffer_url = "Local:ZV_BufferGenTL.zip;88888888;280";
const std::string library_url = "Local:Camera.xml;1000;2a";

class PortUrls : public OpenPorts {
protected:
    void SetUp() override
    {
        OpenPorts::SetUp();
        fake.set_xml_url(library_url);
    }

    Info<std::string> url_info(PORT_HANDLE handle, size_t room = default_room)
    {
        return query<std::string>(room, [&](auto... out) { return ask(handle, URL_INFO_URL, out...); });
    }
    static GC_ERROR ask(PORT_HANDLE handle, URL_INFO_CMD command, INFO_DATATYPE* type, void* buffer,
                        size_t* size)
    {
        return GCGetPortURLInfo(handle, 0, command, type, buffer, size);
    }
    /// GCGetPortURL with `room` bytes; the type is not written.
    Info<std::string> plain_url(PORT_HANDLE handle, size_t room = default_room)
    {
        return query<std::string>(room, [&](INFO_DATATYPE*, void* buffer, size_t* size) {
            return GCGetPortURL(handle, static_cast<char*>(buffer), size);
        });
    }
    std::string url_of(const Port& asked) const
    {
        const std::string kind = asked.kind;
        return kind == "TLSystem" ? system_url : kind == "TLBuffer" ? buffer_url : library_url;
    }
    /// What the next call of the library writes instead of a URL.
    void next_url_is(const std::string& bytes, uint64_t size)
    {
        fake.next("ZVGR_GetXmlUrl").gives(size);
        fake.after("ZVGR_GetXmlUrl", [bytes](const Call& made) {
            std::memcpy(made.arguments[1].pointer(), bytes.data(), bytes.size());
        });
    }
    Calls asked_of_library(uint32_t handle) const { return {call("ZVGR_GetXmlUrl", handle, any(), 260)}; }

    static ExpectedLine line(Priority priority, const std::string& message, const char* function)
    {
        return {priority, message, function, "ZVGRLibGenTL"};
    }
    static ExpectedLine info(const std::string& message) // of GCGetPortURLInfo
    {
        return line(Priority::information, message, "GCGetPortURLInfo");
    }
    static ExpectedLine info_entered(PORT_HANDLE handle, int command, size_t size)
    {
        return info("Enter GCGetPortURLInfo, handle=0x" + hex16(handle) +
                    ", URL index=0, info=" + std::to_string(command) + ", size=" + std::to_string(size));
    }
    static ExpectedLine plain_entered(PORT_HANDLE handle)
    {
        return line(Priority::information, "Enter GCGetPortURL, port handle=0x" + hex16(handle),
                    "GCGetPortURL");
    }
};

TEST_F(PortUrls, AreOneForEachPort)
{
    for (const Port& asked : ports()) {
        uint32_t count = 7;
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, GCGetNumPortURLs(asked.handle, &count));
        EXPECT_EQ(1U, count);
        EXPECT_LOG_LINES(line(Priority::information,
                              "Enter GCGetNumPortURLs, handle=0x" + hex16(asked.handle), "GCGetNumPortURLs"),
                         line(Priority::information,
                              std::string("Get URL count for device type ") + asked.kind, "GCGetNumPortURLs"),
                         line(Priority::information, "Exit URL count=1", "GCGetNumPortURLs"));
    }
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(PortUrls, AreGivenAsInformation)
{
    for (const Port& asked : ports()) {
        SCOPED_TRACE(asked.kind);
        forget();
        const auto info_of_port = url_info(asked.handle, 300);
        EXPECT_EQ(GC_ERR_SUCCESS, info_of_port.code);
        EXPECT_EQ(INFO_DATATYPE_STRING, info_of_port.type);
        EXPECT_EQ(url_of(asked), info_of_port.value);
        EXPECT_EQ(url_of(asked).size() + 1, info_of_port.size);
        EXPECT_EQ(0xA5, info_of_port.bytes[info_of_port.size]);
        EXPECT_LOG_LINES(info_entered(asked.handle, 0, 300),
                         info(std::string("Get URL info for device type ") + asked.kind),
                         info("GCGetPortURLInfo URL=" + url_of(asked)), info("Exit GCGetPortURLInfo"));
    }
}

TEST_F(PortUrls, AreGivenOnTheirOwn)
{
    for (const Port& asked : ports()) {
        SCOPED_TRACE(asked.kind);
        forget();
        const auto plain = plain_url(asked.handle);
        EXPECT_EQ(GC_ERR_SUCCESS, plain.code);
        EXPECT_TRUE(is_untouched(plain.type));
        EXPECT_EQ(url_of(asked) + '\0', plain.value);
        EXPECT_EQ(url_of(asked).size() + 2, plain.size);
        EXPECT_EQ(0, plain.bytes[plain.size - 1]);
        EXPECT_EQ(0xA5, plain.bytes[plain.size]);
        EXPECT_LOG_LINES(
            plain_entered(asked.handle),
            line(Priority::information, "Found url " + url_of(asked) + " for " + asked.kind, "GCGetPortURL"),
            line(Priority::information, "Exit GCGetPortURL", "GCGetPortURL"));
    }
}

TEST_F(PortUrls, ComeFromTheLibraryWithTheHandleOfGrabberOrCamera)
{
    for (const LibraryPort& asked : library_ports()) {
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, url_info(asked.handle).code);
        EXPECT_EQ(asked_of_library(asked.library), fake.calls()) << asked.kind;
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, plain_url(asked.handle).code);
        EXPECT_EQ(asked_of_library(asked.library), fake.calls()) << asked.kind;
    }
}

TEST_F(PortUrls, OfOwnPortsDoNotInvolveTheLibrary)
{
    for (const PORT_HANDLE handle : own_ports()) {
        EXPECT_EQ(GC_ERR_SUCCESS, url_info(handle).code);
        EXPECT_EQ(GC_ERR_SUCCESS, plain_url(handle).code);
    }
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(PortUrls, NeedOneByteMoreOnTheirOwn)
{
    for (const Port& asked : ports()) {
        const size_t length = url_of(asked).size();
        forget();
        const auto information = size_query([&](auto... out) { return ask(asked.handle, 0, out...); });
        EXPECT_EQ(GC_ERR_SUCCESS, information.code);
        EXPECT_EQ(INFO_DATATYPE_STRING, information.type);
        EXPECT_EQ(length + 1, information.size);
        EXPECT_LOGGED(info("Exit GCGetPortURLInfo"));

        for (char* const missing : {static_cast<char*>(nullptr), all_ones<char*>()}) {
            size_t size = untouched<size_t>();
            forget();
            EXPECT_EQ(GC_ERR_SUCCESS, GCGetPortURL(asked.handle, missing, &size));
            EXPECT_EQ(length + 2, size);
            EXPECT_LOGGED(line(Priority::information, "Found url " + url_of(asked) + " for " + asked.kind,
                               "GCGetPortURL"));
            EXPECT_LOGGED(line(Priority::information, "Exit GCGetPortURL", "GCGetPortURL"));
        }
    }
}

TEST_F(PortUrls, HaveTheKnownLengthsForTheSystem)
{
    EXPECT_EQ(37U, system_url.size());
    EXPECT_EQ(38U, size_query([&](auto... out) { return ask(tl, 0, out...); }).size);
    size_t size = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, GCGetPortURL(tl, nullptr, &size));
    EXPECT_EQ(39U, size);
}

/// A buffer too small for the system's URL of 37 characters.
struct SmallRoom {
    size_t room;
    GC_ERROR code;
    std::string problem; // as recorded
};

std::string lacks_zero(const std::string& function, size_t room, size_t needed)
{
    return function + " - GC_ERR_INVALID_PARAMETER: buffer size too small to contain NULL termination (" +
           std::to_string(room) + "/" + std::to_string(needed) + ")";
}

std::string too_small(const std::string& function, size_t room, size_t needed)
{
    return function + " - GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold data (" +
           std::to_string(room) + "/" + std::to_string(needed) + ")";
}

TEST_F(PortUrls, AreCopiedInPartWhenThereIsTooLittleRoomForTheInformation)
{
    for (const SmallRoom& row :
         {SmallRoom{37, GC_ERR_INVALID_PARAMETER, lacks_zero("GCGetPortURLInfo", 37, 38)},
          SmallRoom{36, GC_ERR_BUFFER_TOO_SMALL, too_small("GCGetPortURLInfo", 36, 38)},
          SmallRoom{1, GC_ERR_BUFFER_TOO_SMALL, too_small("GCGetPortURLInfo", 1, 38)}}) {
        forget();
        const auto answer = url_info(tl, row.room);
        EXPECT_EQ(row.code, answer.code);
        EXPECT_EQ(INFO_DATATYPE_STRING, answer.type);
        EXPECT_EQ(row.room, answer.size);
        EXPECT_EQ(system_url.substr(0, row.room),
                  std::string(answer.bytes.begin(), answer.bytes.begin() + static_cast<long>(row.room)));
        EXPECT_LOG_LINES(
            info_entered(tl, 0, row.room), info("Get URL info for device type TLSystem"),
            info("GCGetPortURLInfo URL=" + system_url),
            line(Priority::error, row.problem, "GCGetPortURLInfo"),
            line(Priority::error,
                 "Exit, Returning error ret (0x" + low_hex(static_cast<uint64_t>(row.code)) + ")",
                 "GCGetPortURLInfo"));
        EXPECT_EQ(row.problem, last_error());
    }
}

TEST_F(PortUrls, AreCopiedInPartWhenThereIsTooLittleRoomOnTheirOwn)
{
    for (const SmallRoom& row : {SmallRoom{38, GC_ERR_INVALID_PARAMETER, lacks_zero("GCGetPortURL", 38, 39)},
                                 SmallRoom{37, GC_ERR_BUFFER_TOO_SMALL, too_small("GCGetPortURL", 37, 39)},
                                 SmallRoom{1, GC_ERR_BUFFER_TOO_SMALL, too_small("GCGetPortURL", 1, 39)},
                                 SmallRoom{0, GC_ERR_INVALID_PARAMETER, lacks_zero("GCGetPortURL", 0, 39)}}) {
        forget();
        const auto answer = plain_url(tl, row.room);
        EXPECT_EQ(row.code, answer.code);
        EXPECT_EQ(row.room, answer.size);
        EXPECT_EQ((system_url + '\0').substr(0, row.room),
                  std::string(answer.bytes.begin(), answer.bytes.begin() + static_cast<long>(row.room)));
        EXPECT_LOG_LINES(
            plain_entered(tl), line(Priority::error, row.problem, "GCGetPortURL"),
            line(Priority::error,
                 "Exit, Returning error ret (0x" + low_hex(static_cast<uint64_t>(row.code)) + ")",
                 "GCGetPortURL"));
        EXPECT_EQ(row.problem, last_error());
    }
}

TEST_F(PortUrls, FitIntoExactlyTheRoomNeeded)
{
    EXPECT_EQ(system_url, url_info(tl, 38).value);
    EXPECT_EQ(GC_ERR_SUCCESS, plain_url(tl, 39).code);
}

TEST_F(PortUrls, HaveNoOtherInformation)
{
    for (const Port& asked : ports()) {
        for (const URL_INFO_CMD command : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 1000, -1, INT32_MIN}) {
            char text[100] = "left alone";
            size_t size = sizeof text;
            INFO_DATATYPE type = untouched<INFO_DATATYPE>();
            forget();
            EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, ask(asked.handle, command, &type, text, &size));
            EXPECT_EQ(0U, size);
            EXPECT_TRUE(is_untouched(type));
            EXPECT_STREQ("left alone", text);
            EXPECT_LOG_LINES(info_entered(asked.handle, command, 100),
                             info(std::string("Get URL info for device type ") + asked.kind),
                             line(Priority::error, "info= " + std::to_string(command), "GCGetPortURLInfo"),
                             port_error_exit("GCGetPortURLInfo", "GC_ERR_NOT_IMPLEMENTED", -1003));
        }
    }
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(PortUrls, AreNotAvailableAsInformationWhenTheLibraryRefuses)
{
    const std::string tag = "GCGetPortURLInfo [GC_ERR_NOT_AVAILABLE]: getting xml string ";
    const std::vector<ExpectedLine> of_grabber = {
        line(Priority::error, "info= 0, getting xml string failed", "GCGetPortURLInfo"),
        port_error_exit("GCGetPortURLInfo", "GC_ERR_NOT_AVAILABLE", -1014)};
    for (const LibraryPort& asked : library_ports()) {
        SCOPED_TRACE(asked.kind);
        std::vector<ExpectedLine> expected = {
            info_entered(asked.handle, 0, 100),
            info(std::string("Get URL info for device type ") + asked.kind)};
        if (asked.side == "Grabber")
            expected.insert(expected.end(), of_grabber.begin(), of_grabber.end());
        else
            expected.push_back(info(tag + (asked.handle == ds ? "failed" : "address failed")));

        fake.next("ZVGR_GetXmlUrl").answers(any_failure);
        forget();
        const auto answer = url_info(asked.handle, 100);
        EXPECT_EQ(GC_ERR_NOT_AVAILABLE, answer.code);
        EXPECT_EQ(INFO_DATATYPE_STRING, answer.type);
        EXPECT_EQ(100U, answer.size);
        EXPECT_EQ(0xA5, answer.bytes[0]);
        EXPECT_TRUE(logged_exactly(expected));
    }
}

TEST_F(PortUrls, AreNotAvailableOnTheirOwnWhenTheLibraryRefuses)
{
    for (const LibraryPort& asked : library_ports()) {
        fake.next("ZVGR_GetXmlUrl").answers_after_effect(0);
        forget();
        const auto answer = plain_url(asked.handle, 100);
        EXPECT_EQ(GC_ERR_NOT_AVAILABLE, answer.code);
        EXPECT_EQ(100U, answer.size);
        EXPECT_EQ(0xA5, answer.bytes[0]);
        EXPECT_LOG_LINES(
            plain_entered(asked.handle),
            line(Priority::error, std::string("Getting xml url failed for ") + asked.kind, "GCGetPortURL"),
            port_error_exit("GCGetPortURL", "GC_ERR_NOT_AVAILABLE", -1014));
    }
}

TEST_F(PortUrls, RecordNoErrorWhenTheLibraryRefuses)
{
    const std::string before = last_error();
    fake.always("ZVGR_GetXmlUrl").answers(any_failure);
    EXPECT_EQ(GC_ERR_NOT_AVAILABLE, url_info(port).code);
    EXPECT_EQ(GC_ERR_NOT_AVAILABLE, plain_url(port).code);
    EXPECT_EQ(before, last_error());
}

TEST_F(PortUrls, AreWrittenByTheLibraryIntoMemoryOfZeros)
{
    fake.on("ZVGR_GetXmlUrl", [](const Call& made) {
        const auto* const text = static_cast<const char*>(made.arguments[1].pointer());
        EXPECT_TRUE(std::all_of(text, text + 260, [](char c) { return c == '\0'; }));
    });
    url_info(port);
    plain_url(port);
    EXPECT_EQ(2U, fake.count("ZVGR_GetXmlUrl"));
}

TEST_F(PortUrls, MayFillTheLibrarysRoom)
{
    const std::string longest(259, 'u');
    fake.set_xml_url(longest);
    EXPECT_EQ(longest, url_info(port).value);
    EXPECT_EQ(longest + '\0', plain_url(port).value);
}

TEST_F(PortUrls, EndWithTheLibrarysRoom)
{
    const std::string unterminated(260, 'u');
    next_url_is(unterminated, 260);
    const auto information = url_info(port);
    EXPECT_EQ(GC_ERR_SUCCESS, information.code);
    EXPECT_EQ(unterminated, information.value);
    EXPECT_EQ(261U, information.size);
    fake.next("ZVGR_GetXmlUrl").gives(260);
    const auto plain = plain_url(port);
    EXPECT_EQ(GC_ERR_SUCCESS, plain.code);
    EXPECT_EQ(unterminated + '\0', plain.value);
    EXPECT_EQ(262U, plain.size);
}

// What the library says of the length does not matter, only the zero does.
TEST_F(PortUrls, EndWithTheirZero)
{
    next_url_is("Local:a.xml;0;1", 0);
    EXPECT_EQ("Local:a.xml;0;1", url_info(port).value);
    fake.next("ZVGR_GetXmlUrl").gives(UINT64_MAX);
    EXPECT_EQ("Local:a.xml;0;1", url_info(port).value);
}

TEST_F(PortUrls, MayBeEmpty)
{
    fake.always("ZVGR_GetXmlUrl").gives(1);
    const auto information = url_info(port);
    EXPECT_EQ(GC_ERR_SUCCESS, information.code);
    EXPECT_EQ(1U, information.size);
    const auto plain = plain_url(port);
    EXPECT_EQ(GC_ERR_SUCCESS, plain.code);
    EXPECT_EQ(2U, plain.size);
}

// "%" in a URL is text.
TEST_F(PortUrls, AreLoggedAsTheyAre)
{
    fake.set_xml_url("Local:%s%n.xml;0;1");
    EXPECT_EQ("Local:%s%n.xml;0;1", url_info(port).value);
    EXPECT_LOGGED(info("GCGetPortURLInfo URL=Local:%s%n.xml;0;1"));
}

} // namespace

} // namespace zvtest
