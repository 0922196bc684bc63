#include <gtest/gtest.h>

#include <windows.h> // before the headers that need it

#include <tlhelp32.h>

#include "unit/simulator/LoadedLibrary.h"
#include "unit/simulator/fixtures.h"

// The library when it is unloaded on Windows, where no unload can wait for a thread: whatever its threads run
// in stays loaded until they have been joined.

namespace {

using namespace zvsim_test;

size_t thread_count()
{
    HANDLE const snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    size_t count = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more != 0; more = Thread32Next(snapshot, &entry))
        count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
    CloseHandle(snapshot);
    return count;
}

/// A joined thread stays in the system's list for a moment.
bool threads_become(size_t number)
{
    return becomes_true([number] { return thread_count() == number; });
}

/// A loaded library with one camera that delivers frames into a ring.
class Streaming : public testing::Test {
protected:
    void SetUp() override
    {
        uint32_t count = 0;
        ASSERT_EQ(success, library.device_scan(&count));
        grabber = library.open(0);
        count = 1;
        ASSERT_EQ(success, library.update_camera_list(grabber, &camera, &count));
        ASSERT_EQ(success, library.camera_open(camera, nullptr));
        ASSERT_EQ(success, library.stream_create_and_alloc(camera, &stream, 4, 0));
        ASSERT_EQ(success, library.camera_callback_register(camera, &Receiver::frame_callback, &receiver));
    }

    size_t threads_before{thread_count()};
    Variable rate{"ZV_GRABBER_RATE", "0"};
    Variable size{"ZV_GRABBER_SIZE", "64x48"};
    LoadedLibrary library;
    Receiver receiver;
    uint32_t grabber{0};
    uint32_t camera{0};
    uint32_t stream{0};
};

TEST_F(Streaming, EndsWithTheGrabberAndThenTheLibraryCanGo)
{
    ASSERT_EQ(success, library.start(camera, stream, 0));
    EXPECT_TRUE(receiver.wait_for(5));
    EXPECT_EQ(success, library.close(grabber));
    EXPECT_TRUE(threads_become(threads_before));
    library.unload();
    EXPECT_FALSE(LoadedLibrary::is_mapped());
}

TEST_F(Streaming, KeepsTheLibraryUntilTheGrabberIsClosed)
{
    ASSERT_EQ(success, library.start(camera, stream, 0));
    EXPECT_TRUE(receiver.wait_for(5));
    library.unload();
    EXPECT_TRUE(LoadedLibrary::is_mapped());
    EXPECT_TRUE(receiver.wait_for(100));
    EXPECT_EQ(success, library.stop(camera));
    EXPECT_TRUE(LoadedLibrary::is_mapped());
    // Its own last reference goes inside this call, so whoever makes it has to hold one.
    LoadedLibrary again;
    EXPECT_EQ(success, library.close(grabber));
    EXPECT_TRUE(threads_become(threads_before));
    again.unload();
    EXPECT_FALSE(LoadedLibrary::is_mapped());
}

TEST_F(Streaming, ThatNeverBeganKeepsNothing)
{
    library.unload();
    EXPECT_FALSE(LoadedLibrary::is_mapped());
}

TEST(Unload, OfAnUnusedLibraryIsHarmless)
{
    LoadedLibrary{}.unload();
    EXPECT_FALSE(LoadedLibrary::is_mapped());
}

} // namespace
