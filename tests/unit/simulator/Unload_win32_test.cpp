#include <gtest/gtest.h>

#include "support/process/process_state.h"
#include "unit/simulator/LoadedLibrary.h"

// The library when it is unloaded on Windows, where no unload can wait for a thread: whatever its threads run
// in stays loaded until they have been joined.

namespace {

using namespace zvsim_test;

class Streaming : public testing::Test {
protected:
    size_t threads_before{zvtest::thread_count()};
    Loaded loaded;
};

TEST_F(Streaming, EndsWithTheGrabberAndThenTheLibraryCanGo)
{
    loaded.start(Mode::cyclic);
    EXPECT_TRUE(loaded.receiver.wait_for(5));
    EXPECT_EQ(success, loaded.library.close(loaded.grabber));
    EXPECT_TRUE(threads_become(threads_before));
    loaded.library.unload();
    EXPECT_FALSE(LoadedLibrary::is_mapped());
}

TEST_F(Streaming, KeepsTheLibraryUntilTheGrabberIsClosed)
{
    loaded.start(Mode::cyclic);
    EXPECT_TRUE(loaded.receiver.wait_for(5));
    loaded.library.unload();
    EXPECT_TRUE(LoadedLibrary::is_mapped());
    EXPECT_TRUE(loaded.receiver.wait_for(100));
    EXPECT_EQ(success, loaded.library.stop(loaded.camera));
    EXPECT_TRUE(LoadedLibrary::is_mapped());
    // Its own last reference goes inside this call, so whoever makes it has to hold one.
    LoadedLibrary again;
    EXPECT_EQ(success, loaded.library.close(loaded.grabber));
    EXPECT_TRUE(threads_become(threads_before));
    again.unload();
    EXPECT_FALSE(LoadedLibrary::is_mapped());
}

TEST_F(Streaming, ThatNeverBeganKeepsNothing)
{
    uint32_t stream = 0;
    EXPECT_EQ(success, loaded.library.stream_create_and_alloc(loaded.camera, &stream, ring_frames, 0));
    loaded.library.unload();
    EXPECT_FALSE(LoadedLibrary::is_mapped());
}

TEST(Unload, OfAnUnusedLibraryIsHarmless)
{
    LoadedLibrary{}.unload();
    EXPECT_FALSE(LoadedLibrary::is_mapped());
}

} // namespace
