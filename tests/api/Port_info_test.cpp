#include <cstdint>

#include "Port_fixtures.h"

// GCGetPortURL, GCGetNumPortURLs, GCGetPortURLInfo and GCGetPortInfo: what they check first.

namespace zvtest {

namespace {

ExpectedLine line(Priority priority, const std::string& message, const char* function)
{
    return {priority, message, function, "ZVGRLibGenTL"};
}

class GCGetPortURL : public OpenPorts {
protected:
    static ExpectedLine entered(PORT_HANDLE handle)
    {
        return line(Priority::information, "Enter GCGetPortURL, port handle=0x" + hex16(handle),
                    "GCGetPortURL");
    }
    char url[300]{"left alone"};
    size_t size{sizeof url};
};

TEST_F(GCGetPortURL, RefusesAMissingSizeBeforeItLooksAtTheHandle)
{
    for (size_t* const missing : {static_cast<size_t*>(nullptr), all_ones<size_t*>()}) {
        for (const PORT_HANDLE handle : {tl, static_cast<PORT_HANDLE>(nullptr)}) {
            forget();
            EXPECT_EQ(GC_ERR_INVALID_PARAMETER, GenTL::GCGetPortURL(handle, url, missing));
            EXPECT_LOG_LINES(entered(handle),
                             port_error_exit("GCGetPortURL", "GC_ERR_INVALID_PARAMETER", -1009));
        }
    }
}

TEST_F(GCGetPortURL, HasNoneForHandlesThatNameNothing)
{
    for (const PORT_HANDLE handle : strangers()) {
        forget();
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, GenTL::GCGetPortURL(handle, url, &size));
        EXPECT_STREQ("left alone", url);
        EXPECT_LOG_LINES(entered(handle), line(Priority::error, "case Invalid handle: GC_ERR_NOT_IMPLEMENTED",
                                               "GCGetPortURL"));
    }
}

// Lines print 32 bits of a size, here none that are set; the room is all of it.
TEST_F(GCGetPortURL, TakesASizeBeyond32BitsWhole)
{
    size = 0x100000000;
    EXPECT_EQ(GC_ERR_SUCCESS, GenTL::GCGetPortURL(tl, url, &size));
    EXPECT_EQ(39U, size);
    EXPECT_STREQ("Local:ZV_SystemGenTL.xml;88888888;d3f", url);
}

class GCGetNumPortURLs : public OpenPorts {
protected:
    static ExpectedLine entered(PORT_HANDLE handle)
    {
        return line(Priority::information, "Enter GCGetNumPortURLs, handle=0x" + hex16(handle),
                    "GCGetNumPortURLs");
    }
    static ExpectedLine asked_of(const std::string& kind)
    {
        return line(Priority::information, "Get URL count for device type " + kind, "GCGetNumPortURLs");
    }
    uint32_t count{7};
};

TEST_F(GCGetNumPortURLs, RefusesAMissingOutputSilentlyBeforeItLooksAtTheHandle)
{
    for (uint32_t* const missing : {static_cast<uint32_t*>(nullptr), all_ones<uint32_t*>()}) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, GenTL::GCGetNumPortURLs(nullptr, missing));
        EXPECT_LOG_LINES(entered(nullptr));
    }
}

TEST_F(GCGetNumPortURLs, CountsNoneForHandlesThatNameNothing)
{
    for (const PORT_HANDLE handle : strangers()) {
        forget();
        count = 7;
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, GenTL::GCGetNumPortURLs(handle, &count));
        EXPECT_EQ(0U, count);
        EXPECT_LOG_LINES(
            entered(handle), asked_of("Invalid handle"),
            line(Priority::error, "case Invalid handle: GC_ERR_NOT_IMPLEMENTED", "GCGetNumPortURLs"),
            port_error_exit("GCGetNumPortURLs", "GC_ERR_NOT_IMPLEMENTED", -1003));
    }
}

TEST_F(GCGetNumPortURLs, LogsTheKindOfEveryPort)
{
    for (const Port& port_of_kind : ports()) {
        forget();
        GenTL::GCGetNumPortURLs(port_of_kind.handle, &count);
        EXPECT_LOGGED(entered(port_of_kind.handle));
        EXPECT_LOGGED(asked_of(port_of_kind.kind));
    }
}

class GCGetPortURLInfo : public OpenPorts {
protected:
    GC_ERROR ask(PORT_HANDLE handle, uint32_t index, INFO_DATATYPE* info_type, void* buffer,
                 size_t* info_size)
    {
        return GenTL::GCGetPortURLInfo(handle, index, URL_INFO_URL, info_type, buffer, info_size);
    }
    static ExpectedLine entered(PORT_HANDLE handle, const std::string& index, size_t size)
    {
        return line(Priority::information,
                    "Enter GCGetPortURLInfo, handle=0x" + hex16(handle) + ", URL index=" + index +
                        ", info=0, size=" + std::to_string(size),
                    "GCGetPortURLInfo");
    }
    static ExpectedLine asked_of(const std::string& kind)
    {
        return line(Priority::information, "Get URL info for device type " + kind, "GCGetPortURLInfo");
    }
    char url[300]{"left alone"};
    size_t size{sizeof url};
    INFO_DATATYPE type{untouched<INFO_DATATYPE>()};
};

TEST_F(GCGetPortURLInfo, RefusesMalformedArgumentsBeforeTheIndex)
{
    struct Arguments {
        INFO_DATATYPE* type;
        void* buffer;
        size_t* size;
        size_t logged_size;
    };
    size_t zero = 0;
    const Arguments rows[] = {
        {nullptr, url, &size, 300}, {all_ones<INFO_DATATYPE*>(), url, &size, 300},
        {&type, url, nullptr, 0},   {&type, url, all_ones<size_t*>(), 0},
        {&type, url, &zero, 0},
    };
    for (const Arguments& row : rows) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, ask(nullptr, 1, row.type, row.buffer, row.size));
        EXPECT_LOG_LINES(entered(nullptr, "1", row.logged_size),
                         port_error_exit("GCGetPortURLInfo", "GC_ERR_INVALID_PARAMETER", -1009));
    }
    EXPECT_TRUE(is_untouched(type));
    EXPECT_STREQ("left alone", url);
}

TEST_F(GCGetPortURLInfo, RefusesOtherUrls)
{
    struct Row {
        uint32_t index;
        const char* logged;
    };
    for (const Row& row : {Row{1, "1"}, Row{0xFFFFFFFF, "-1"}}) {
        for (const PORT_HANDLE handle : {tl, static_cast<PORT_HANDLE>(nullptr)}) {
            forget();
            EXPECT_EQ(GC_ERR_INVALID_INDEX, ask(handle, row.index, &type, url, &size));
            EXPECT_LOG_LINES(
                entered(handle, row.logged, sizeof url),
                line(Priority::error,
                     std::string("GCGetPortURLInfo [GC_ERR_INVALID_PARAMETER]: Invalid URL index=") +
                         row.logged,
                     "GCGetPortURLInfo"));
        }
    }
    EXPECT_TRUE(is_untouched(type));
}

TEST_F(GCGetPortURLInfo, HasNoneForHandlesThatNameNothing)
{
    for (const PORT_HANDLE handle : strangers()) {
        forget();
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, ask(handle, 0, &type, url, &size));
        EXPECT_LOG_LINES(
            entered(handle, "0", sizeof url), asked_of("Invalid handle"),
            line(Priority::error, "case Invalid handle: GC_ERR_NOT_IMPLEMENTED", "GCGetPortURLInfo"),
            port_error_exit("GCGetPortURLInfo", "GC_ERR_NOT_IMPLEMENTED", -1003));
    }
    EXPECT_TRUE(is_untouched(type));
    EXPECT_STREQ("left alone", url);
}

TEST_F(GCGetPortURLInfo, LogsTheKindOfEveryPort)
{
    for (const Port& port_of_kind : ports()) {
        forget();
        ask(port_of_kind.handle, 0, &type, url, &size);
        EXPECT_LOGGED(asked_of(port_of_kind.kind));
    }
}

TEST_F(GCGetPortURLInfo, TakesASizeBeyond32BitsWhole)
{
    size = 0x100000000;
    EXPECT_EQ(GC_ERR_SUCCESS, ask(tl, 0, &type, url, &size));
    EXPECT_EQ(38U, size);
    EXPECT_STREQ("Local:ZV_SystemGenTL.xml;88888888;d3f", url);
    EXPECT_LOGGED(entered(tl, "0", 0));
}

class GCGetPortInfo : public OpenPorts {
protected:
    GC_ERROR ask(PORT_HANDLE handle, INFO_DATATYPE* info_type, void* buffer, size_t* info_size)
    {
        return GenTL::GCGetPortInfo(handle, PORT_INFO_MODULE, info_type, buffer, info_size);
    }
    static ExpectedLine entered(size_t size)
    {
        return line(Priority::information, "Enter GCGetPortInfo, info=4, buffer size=" + std::to_string(size),
                    "GCGetPortInfo");
    }
    char text[100]{"left alone"};
    size_t size{sizeof text};
    INFO_DATATYPE type{untouched<INFO_DATATYPE>()};
};

TEST_F(GCGetPortInfo, RefusesMalformedArgumentsBeforeItLooksAtTheHandle)
{
    struct Arguments {
        INFO_DATATYPE* type;
        void* buffer;
        size_t* size;
        size_t logged_size;
    };
    size_t zero = 0;
    const Arguments rows[] = {
        {nullptr, text, &size, 100}, {all_ones<INFO_DATATYPE*>(), text, &size, 100},
        {&type, text, nullptr, 0},   {&type, text, all_ones<size_t*>(), 0},
        {&type, text, &zero, 0},
    };
    for (const Arguments& row : rows) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_PARAMETER, ask(nullptr, row.type, row.buffer, row.size));
        EXPECT_LOG_LINES(entered(row.logged_size),
                         port_error_exit("GCGetPortInfo", "GC_ERR_INVALID_PARAMETER", -1009));
    }
    EXPECT_TRUE(is_untouched(type));
    EXPECT_STREQ("left alone", text);
}

TEST_F(GCGetPortInfo, RefusesHandlesThatNameNothingSilently)
{
    for (const PORT_HANDLE handle : strangers()) {
        forget();
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, ask(handle, &type, text, &size));
        EXPECT_EQ(sizeof text, size);
        EXPECT_LOG_LINES(entered(sizeof text));
    }
    EXPECT_TRUE(is_untouched(type));
    EXPECT_STREQ("left alone", text);
}

TEST_F(GCGetPortInfo, LooksAtTheHandleBeforeTheCommand)
{
    EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::GCGetPortInfo(nullptr, -1, &type, text, &size));
    EXPECT_EQ(sizeof text, size);
}

TEST_F(GCGetPortInfo, TakesASizeBeyond32BitsWhole)
{
    size = 0x100000000;
    EXPECT_EQ(GC_ERR_SUCCESS, ask(tl, &type, text, &size));
    EXPECT_EQ(9U, size);
    EXPECT_STREQ("TLSystem", text);
    EXPECT_LOGGED(entered(0));
}

class ClosedPortInfo : public ClosedPorts {};

TEST_F(ClosedPortInfo, IsRefusedLikeThatOfAnUnknownHandle)
{
    for (const PORT_HANDLE handle : closed_ports()) {
        char text[100];
        size_t size = sizeof text;
        INFO_DATATYPE type = 0;
        uint32_t count = 7;
        forget();
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, GenTL::GCGetPortURL(handle, text, &size));
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED, GenTL::GCGetNumPortURLs(handle, &count));
        EXPECT_EQ(0U, count);
        EXPECT_EQ(GC_ERR_NOT_IMPLEMENTED,
                  GenTL::GCGetPortURLInfo(handle, 0, URL_INFO_URL, &type, text, &size));
        EXPECT_EQ(GC_ERR_INVALID_HANDLE, GenTL::GCGetPortInfo(handle, PORT_INFO_MODULE, &type, text, &size));
        EXPECT_EQ(3U, times_logged("case Invalid handle: GC_ERR_NOT_IMPLEMENTED"));
        EXPECT_LOGGED(Priority::information, "Get URL count for device type Invalid handle");
        EXPECT_LOGGED(Priority::information, "Get URL info for device type Invalid handle");
    }
    EXPECT_TRUE(fake.calls().empty());
}

class PortInfoBeforeInitialisation : public Library {
protected:
    static ExpectedLine not_opened(const char* function)
    {
        return line(Priority::error, "No preceding call to GCInitLib", function);
    }
    char text[100]{"left alone"};
    size_t size{sizeof text};
    INFO_DATATYPE type{untouched<INFO_DATATYPE>()};
};

TEST_F(PortInfoBeforeInitialisation, GivesNoUrl)
{
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, GenTL::GCGetPortURL(nullptr, text, nullptr));
    EXPECT_LOG_LINES(
        line(Priority::information, "Enter GCGetPortURL, port handle=0x0000000000000000", "GCGetPortURL"),
        not_opened("GCGetPortURL"));
}

TEST_F(PortInfoBeforeInitialisation, CountsNoUrls)
{
    uint32_t count = 7;
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, GenTL::GCGetNumPortURLs(nullptr, &count));
    EXPECT_EQ(7U, count);
    EXPECT_LOG_LINES(
        line(Priority::information, "Enter GCGetNumPortURLs, handle=0x0000000000000000", "GCGetNumPortURLs"),
        not_opened("GCGetNumPortURLs"));
}

TEST_F(PortInfoBeforeInitialisation, GivesNoUrlInfo)
{
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED,
              GenTL::GCGetPortURLInfo(nullptr, 1, URL_INFO_URL, &type, text, nullptr));
    EXPECT_TRUE(is_untouched(type));
    EXPECT_LOG_LINES(line(Priority::information,
                          "Enter GCGetPortURLInfo, handle=0x0000000000000000, URL index=1, info=0, size=0",
                          "GCGetPortURLInfo"),
                     not_opened("GCGetPortURLInfo"));
}

TEST_F(PortInfoBeforeInitialisation, GivesNoPortInfo)
{
    EXPECT_EQ(GC_ERR_NOT_INITIALIZED, GenTL::GCGetPortInfo(nullptr, PORT_INFO_ID, &type, text, &size));
    EXPECT_TRUE(is_untouched(type));
    EXPECT_LOG_LINES(
        line(Priority::information, "Enter GCGetPortInfo, info=0, buffer size=100", "GCGetPortInfo"),
        not_opened("GCGetPortInfo"));
}

} // namespace

} // namespace zvtest
