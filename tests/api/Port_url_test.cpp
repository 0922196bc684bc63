#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "Port_fixtures.h"

// What is special to URLs: GCGetNumPortURLs, GCGetPortURL, and what the library may do to both ways of
// asking.

namespace zvtest {

namespace {

const std::string system_url = "Local:ZV_SystemGenTL.xml;88888888;d3f"; // 37 characters
const std::string buffer_url = "Local:ZV_BufferGenTL.zip;88888888;280";
const std::string library_url = "Local:Camera.xml;1000;2a";

class PortUrls : public OpenPorts {
protected:
    void SetUp() override
    {
        OpenPorts::SetUp();
        fake.set_xml_url(library_url);
    }

    /// GCGetPortURLInfo with `room` bytes.
    static Info<std::string> url_info(PORT_HANDLE handle, size_t room = default_room)
    {
        return query<std::string>(
            room, [&](auto... out) { return GCGetPortURLInfo(handle, 0, URL_INFO_URL, out...); });
    }
    /// GCGetPortURL with `room` bytes; the type is not written.
    static Info<std::string> plain_url(PORT_HANDLE handle, size_t room = default_room)
    {
        return query<std::string>(room, [&](INFO_DATATYPE*, void* buffer, size_t* size) {
            return GCGetPortURL(handle, static_cast<char*>(buffer), size);
        });
    }
    /// Expects the URL from both functions.
    static void expect_url(PORT_HANDLE handle, const std::string& url)
    {
        const auto information = url_info(handle);
        EXPECT_EQ(GC_ERR_SUCCESS, information.code);
        EXPECT_EQ(url, information.value);
        EXPECT_EQ(url.size() + 1, information.size);
        const auto plain = plain_url(handle);
        EXPECT_EQ(GC_ERR_SUCCESS, plain.code);
        EXPECT_EQ(url + '\0', plain.value);
        EXPECT_EQ(url.size() + 2, plain.size);
    }
    static std::string url_of(const std::string& kind)
    {
        return kind == "TLSystem" ? system_url : kind == "TLBuffer" ? buffer_url : library_url;
    }
    /// What the library writes instead of a URL, and the size that it reports.
    void always_url_is(const std::string& bytes, uint64_t size)
    {
        fake.always("ZVGR_GetXmlUrl").gives(size);
        fake.after("ZVGR_GetXmlUrl", [bytes](const Call& made) {
            std::memcpy(made.arguments[1].pointer(), bytes.data(), bytes.size());
        });
    }

    static ExpectedLine entered(PORT_HANDLE handle)
    {
        return info_line("Enter GCGetPortURL, port handle=0x" + hex16(handle));
    }
    static std::vector<ExpectedLine> success_lines(const Port& asked)
    {
        return {entered(asked.handle), info_line("Found url " + url_of(asked.kind) + " for " + asked.kind),
                info_line("Exit GCGetPortURL")};
    }
};

TEST_F(PortUrls, AreOneForEachPort)
{
    for (const Port& asked : ports()) {
        uint32_t count = 7;
        forget();
        EXPECT_EQ(GC_ERR_SUCCESS, GCGetNumPortURLs(asked.handle, &count));
        EXPECT_EQ(1U, count);
        EXPECT_LOG_LINES(info_line("Enter GCGetNumPortURLs, handle=0x" + hex16(asked.handle)),
                         info_line(std::string("Get URL count for device type ") + asked.kind),
                         info_line("Exit URL count=1"));
    }
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(PortUrls, AreGivenOnTheirOwn)
{
    for (const Port& asked : ports()) {
        SCOPED_TRACE(asked.kind);
        forget();
        const auto plain = plain_url(asked.handle);
        EXPECT_EQ(GC_ERR_SUCCESS, plain.code);
        EXPECT_TRUE(is_untouched(plain.type));
        EXPECT_EQ(url_of(asked.kind) + '\0', plain.value);
        EXPECT_EQ(url_of(asked.kind).size() + 2, plain.size);
        EXPECT_EQ(0, plain.bytes[plain.size - 1]);
        EXPECT_EQ(0xA5, plain.bytes[plain.size]);
        EXPECT_TRUE(logged_exactly(success_lines(asked)));
    }
}

TEST_F(PortUrls, ComeFromTheLibraryWithTheHandleOfGrabberOrCamera)
{
    for (const PORT_HANDLE handle : own_ports())
        plain_url(handle);
    EXPECT_TRUE(fake.calls().empty());
    for (const LibraryPort& asked : library_ports()) {
        forget();
        plain_url(asked.handle);
        EXPECT_EQ((Calls{call("ZVGR_GetXmlUrl", asked.library, any(), 260)}), fake.calls()) << asked.kind;
    }
}

TEST_F(PortUrls, NeedOneByteMoreOnTheirOwn)
{
    for (const Port& asked : ports()) {
        for (char* const missing : {static_cast<char*>(nullptr), all_ones<char*>()}) {
            size_t size = untouched<size_t>();
            forget();
            EXPECT_EQ(GC_ERR_SUCCESS, GCGetPortURL(asked.handle, missing, &size));
            EXPECT_EQ(url_of(asked.kind).size() + 2, size);
            EXPECT_TRUE(logged_exactly(success_lines(asked)));
        }
    }
    EXPECT_EQ(GC_ERR_SUCCESS, plain_url(tl, 39).code);
}

TEST_F(PortUrls, AreCopiedInPartWhenThereIsTooLittleRoomOnTheirOwn)
{
    struct Row {
        size_t room;
        GC_ERROR code;
        const char* problem;
    };
    const char* const lacks_zero =
        "GC_ERR_INVALID_PARAMETER: buffer size too small to contain NULL termination";
    const char* const too_small = "GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold data";
    for (const Row& row : {Row{38, GC_ERR_INVALID_PARAMETER, lacks_zero},
                           {37, GC_ERR_BUFFER_TOO_SMALL, too_small},
                           {1, GC_ERR_BUFFER_TOO_SMALL, too_small},
                           {0, GC_ERR_INVALID_PARAMETER, lacks_zero}}) {
        forget();
        const auto answer = plain_url(tl, row.room);
        EXPECT_EQ(row.code, answer.code);
        EXPECT_EQ(row.room, answer.size);
        EXPECT_EQ((system_url + '\0').substr(0, row.room),
                  std::string(answer.bytes.begin(), answer.bytes.begin() + static_cast<long>(row.room)));
        const std::string text =
            std::string("GCGetPortURL - ") + row.problem + " (" + std::to_string(row.room) + "/39)";
        EXPECT_LOG_LINES(entered(tl), error_line(text), text_failed_with(row.code));
        EXPECT_EQ(text, last_error());
    }
}

// Lines print 32 bits of a size, here none that are set; the room is all of it.
TEST_F(PortUrls, AreGivenIntoRoomsBeyond32Bits)
{
    char url[300];
    size_t size = 0x100000000;
    EXPECT_EQ(GC_ERR_SUCCESS, GCGetPortURL(tl, url, &size));
    EXPECT_EQ(39U, size);
    EXPECT_STREQ(system_url.c_str(), url);

    size = 0x100000000;
    INFO_DATATYPE type = 0;
    EXPECT_EQ(GC_ERR_SUCCESS, GCGetPortURLInfo(tl, 0, URL_INFO_URL, &type, url, &size));
    EXPECT_EQ(38U, size);
    EXPECT_LOGGED(Priority::information,
                  "Enter GCGetPortURLInfo, handle=0x" + hex16(tl) + ", URL index=0, info=0, size=0");
}

TEST_F(PortUrls, AreNotAvailableAsInformationWhenTheLibraryRefuses)
{
    const std::string before = last_error();
    const std::string tag = "GCGetPortURLInfo [GC_ERR_NOT_AVAILABLE]: getting xml string ";
    for (const LibraryPort& asked : library_ports()) {
        SCOPED_TRACE(asked.kind);
        std::vector<ExpectedLine> expected = {
            info_line("Enter GCGetPortURLInfo, handle=0x" + hex16(asked.handle) +
                      ", URL index=0, info=0, size=100"),
            info_line(std::string("Get URL info for device type ") + asked.kind)};
        if (asked.side == "Grabber") {
            expected.push_back(error_line("info= 0, getting xml string failed"));
            expected.push_back(FAILED_WITH(GC_ERR_NOT_AVAILABLE));
        } else {
            expected.push_back(info_line(tag + (asked.handle == ds ? "failed" : "address failed")));
        }
        fake.next("ZVGR_GetXmlUrl").answers(any_failure);
        forget();
        const auto answer = url_info(asked.handle, 100);
        EXPECT_EQ(GC_ERR_NOT_AVAILABLE, answer.code);
        EXPECT_EQ(INFO_DATATYPE_STRING, answer.type);
        EXPECT_EQ(100U, answer.size);
        EXPECT_EQ(0xA5, answer.bytes[0]);
        EXPECT_TRUE(logged_exactly(expected));
        EXPECT_EQ(before, last_error());
    }
}

TEST_F(PortUrls, AreNotAvailableOnTheirOwnWhenTheLibraryRefuses)
{
    const std::string before = last_error();
    for (const LibraryPort& asked : library_ports()) {
        fake.next("ZVGR_GetXmlUrl").answers_after_effect(0);
        forget();
        const auto answer = plain_url(asked.handle, 100);
        EXPECT_EQ(GC_ERR_NOT_AVAILABLE, answer.code);
        EXPECT_EQ(100U, answer.size);
        EXPECT_EQ(0xA5, answer.bytes[0]);
        EXPECT_LOG_LINES(entered(asked.handle),
                         error_line(std::string("Getting xml url failed for ") + asked.kind),
                         FAILED_WITH(GC_ERR_NOT_AVAILABLE));
        EXPECT_EQ(before, last_error());
    }
}

TEST_F(PortUrls, AreWrittenByTheLibraryIntoMemoryOfZeros)
{
    fake.on("ZVGR_GetXmlUrl", [](const Call& made) {
        const auto* const text = static_cast<const char*>(made.arguments[1].pointer());
        EXPECT_TRUE(std::all_of(text, text + 260, [](char c) { return c == '\0'; }));
    });
    expect_url(port, library_url);
    EXPECT_EQ(2U, fake.count("ZVGR_GetXmlUrl"));
}

TEST_F(PortUrls, MayFillTheLibrarysRoom)
{
    const std::string longest(259, 'u');
    fake.set_xml_url(longest);
    expect_url(port, longest);
}

TEST_F(PortUrls, EndWithTheLibrarysRoom)
{
    const std::string unterminated(260, 'u');
    always_url_is(unterminated, 260);
    expect_url(port, unterminated);
}

// The length that the library reports does not matter, only the zero does.
TEST_F(PortUrls, EndWithTheirZero)
{
    always_url_is("Local:a.xml;0;1", 0);
    expect_url(port, "Local:a.xml;0;1");
    fake.always("ZVGR_GetXmlUrl").gives(UINT64_MAX);
    expect_url(port, "Local:a.xml;0;1");
}

TEST_F(PortUrls, MayBeEmpty)
{
    fake.always("ZVGR_GetXmlUrl").gives(1);
    expect_url(port, "");
}

// "%" in a URL is text.
TEST_F(PortUrls, AreLoggedAsTheyAre)
{
    fake.set_xml_url("Local:%s%n.xml;0;1");
    expect_url(port, "Local:%s%n.xml;0;1");
    EXPECT_LOGGED(Priority::information, "GCGetPortURLInfo URL=Local:%s%n.xml;0;1");
    EXPECT_LOGGED(info_line("Found url Local:%s%n.xml;0;1 for Device"));
}

class GCGetPortURLInfo : public OpenPorts {};

TEST_F(GCGetPortURLInfo, RefusesOtherUrls)
{
    for (const uint32_t index : {1U, 0xFFFFFFFFU}) {
        for (const PORT_HANDLE handle : {tl, static_cast<PORT_HANDLE>(nullptr)}) {
            forget();
            const auto answer = query<std::string>(100, [&](auto... out) {
                return GenTL::GCGetPortURLInfo(handle, index, URL_INFO_URL, out...);
            });
            EXPECT_EQ(GC_ERR_INVALID_INDEX, answer.code);
            EXPECT_TRUE(is_untouched(answer.type));
            const std::string printed = index == 1 ? "1" : "-1";
            EXPECT_LOG_LINES(
                info_line("Enter GCGetPortURLInfo, handle=0x" + hex16(handle) + ", URL index=" + printed +
                          ", info=0, size=100"),
                error_line("GCGetPortURLInfo [GC_ERR_INVALID_PARAMETER]: Invalid URL index=" + printed));
        }
    }
}

TEST_F(GCGetPortURLInfo, LooksAtItsOutputsBeforeTheIndex)
{
    INFO_DATATYPE type = 0;
    EXPECT_EQ(GC_ERR_INVALID_PARAMETER,
              GenTL::GCGetPortURLInfo(nullptr, 1, URL_INFO_URL, &type, nullptr, nullptr));
}

} // namespace

} // namespace zvtest
