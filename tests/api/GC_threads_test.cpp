#include <array>
#include <atomic>
#include <set>

#include <gmock/gmock.h>

#include "api/lines.h"
#include "support/on_threads.h"

// Calls from several threads at once: one of them wins, and nothing tears.

namespace zvtest {

namespace {

/// What four simultaneous calls answer.
template <class Function>
std::array<GC_ERROR, 4> codes_of(Function function)
{
    std::array<GC_ERROR, 4> codes{};
    on_threads([&](int thread) { codes.at(static_cast<size_t>(thread)) = function(); });
    return codes;
}

/// One call succeeds, the others answer `code`.
auto succeed_once_and_give(GC_ERROR code)
{
    return testing::UnorderedElementsAre(GC_ERR_SUCCESS, code, code, code);
}

class LibraryOnThreads : public Library {};

TEST_F(LibraryOnThreads, IsInitialisedAndClosedAgain)
{
    log.keep_lines(false);
    for (int round = 0; round < 50; ++round) {
        ASSERT_THAT(codes_of(GCInitLib), succeed_once_and_give(GC_ERR_RESOURCE_IN_USE));
        ASSERT_EQ(GC_ERR_SUCCESS, GCCloseLib());
    }
}

class SystemOnThreads : public OpenLibrary {};

TEST_F(SystemOnThreads, IsOpenedByOneAndClosedByOne)
{
    log.keep_lines(false);
    for (int round = 0; round < 50; ++round) {
        std::atomic<TL_HANDLE> system{nullptr};
        const auto opened = codes_of([&system] {
            TL_HANDLE handle = nullptr;
            const GC_ERROR code = TLOpen(&handle);
            if (code == GC_ERR_SUCCESS)
                system = handle;
            return code;
        });
        ASSERT_THAT(opened, succeed_once_and_give(GC_ERR_RESOURCE_IN_USE));
        ASSERT_THAT(codes_of([&system] { return TLClose(system); }),
                    succeed_once_and_give(GC_ERR_INVALID_HANDLE));
    }
}

TEST_F(SystemOnThreads, RecordsWholeErrorsOnly)
{
    log.keep_lines(false);
    const std::string by_size[] = {
        "GCGetInfo - GC_ERR_BUFFER_TOO_SMALL: buffer length is too small to hold data (1/6)",
        "GCGetInfo - GC_ERR_INVALID_PARAMETER: buffer size too small to contain NULL termination (5/6)",
        "TLUpdateInterfaceList - GC_ERR_INVALID_HANDLE: invalid system handle",
    };
    TLUpdateInterfaceList(nullptr, nullptr, 0);
    on_threads([&by_size](int thread) {
        for (int i = 0; i < 1000; ++i) {
            if (thread == 0) {
                TLUpdateInterfaceList(nullptr, nullptr, 0);
            } else if (thread != 3) {
                char room[8] = {};
                size_t size = thread == 1 ? 1 : 5;
                INFO_DATATYPE type = 0;
                GCGetInfo(TL_INFO_TLTYPE, &type, room, &size);
            }
            GC_ERROR code = 0;
            char text[256] = {};
            size_t size = sizeof text;
            ASSERT_EQ(GC_ERR_SUCCESS, GCGetLastError(&code, text, &size));
            ASSERT_EQ(std::string(text).size() + 1, size);
            ASSERT_TRUE(text == by_size[0] || text == by_size[1] || text == by_size[2]) << text;
        }
    });
}

class TreeOnThreads : public OpenDevice {};

TEST_F(TreeOnThreads, AnswersQueriesOfAllAlike)
{
    log.keep_lines(false);
    const std::string model = device_info<std::string>(DEVICE_INFO_MODEL).value;
    on_threads([&](int) {
        for (int i = 0; i < 300; ++i) {
            ASSERT_EQ(1U, num_interfaces());
            ASSERT_EQ("FG0", interface_id(0));
            ASSERT_EQ("GenTL_1.5", system_info<std::string>(TL_INFO_ID).value);
            ASSERT_EQ("FG0", interface_info<std::string>(INTERFACE_INFO_ID).value);
            ASSERT_EQ(1U, num_devices(iface));
            ASSERT_EQ("Device00", device_id(iface, 0));
            ASSERT_EQ(model, device_info<std::string>(DEVICE_INFO_MODEL).value);
            PORT_HANDLE given = nullptr;
            ASSERT_EQ(GC_ERR_SUCCESS, DevGetPort(dev, &given));
            ASSERT_EQ(port, given);
        }
    });
}

TEST_F(TreeOnThreads, LogsWholeLinesWithTheThreadOfEach)
{
    forget();
    constexpr int rounds = 100;
    on_threads([&](int) {
        for (int i = 0; i < rounds; ++i)
            num_devices(iface);
    });
    EXPECT_EQ(4U * rounds, times_logged("Enter IFGetNumDevices"));
    EXPECT_EQ(4U * rounds, times_logged("Exit IFGetNumDevices, camera amount=1"));
    std::set<uint32_t> threads;
    for (const LogLine& line : log.lines())
        threads.insert(line.thread);
    EXPECT_EQ(4U, threads.size());
}

} // namespace

} // namespace zvtest
