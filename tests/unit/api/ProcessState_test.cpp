#include <algorithm>
#include <atomic>
#include <iterator>

#include <gtest/gtest.h>

#include "api/ProcessState.h"
#include "modules/SystemModule.h"
#include "support/on_threads.h"

namespace zvgentl {

using zvtest::on_threads;

namespace {

class ProcessStateTest : public testing::Test {
protected:
    void TearDown() override
    {
        set_uninitialised();
        take_system(current_system());
    }
};

TEST_F(ProcessStateTest, IsInitialisedOnce)
{
    EXPECT_FALSE(is_initialised());
    EXPECT_TRUE(set_initialised());
    EXPECT_TRUE(is_initialised());
    EXPECT_FALSE(set_initialised());
    set_uninitialised();
    EXPECT_FALSE(is_initialised());
    EXPECT_TRUE(set_initialised());
}

TEST_F(ProcessStateTest, HoldsOneSystem)
{
    EXPECT_EQ(nullptr, current_system());
    auto first = std::make_unique<SystemModule>();
    SystemModule* const handle = first.get();
    EXPECT_TRUE(set_system(std::move(first)));
    EXPECT_EQ(handle, current_system());
    EXPECT_FALSE(set_system(std::make_unique<SystemModule>()));
    EXPECT_EQ(handle, current_system());
}

TEST_F(ProcessStateTest, GivesTheSystemUpForItsOwnHandleOnly)
{
    set_system(std::make_unique<SystemModule>());
    SystemModule* const handle = current_system();
    const int stranger = 0;
    EXPECT_EQ(nullptr, take_system(nullptr));
    EXPECT_EQ(nullptr, take_system(&stranger));
    EXPECT_EQ(handle, current_system());
    EXPECT_EQ(handle, take_system(handle).get());
    EXPECT_EQ(nullptr, current_system());
    EXPECT_EQ(nullptr, take_system(handle));
    EXPECT_EQ(nullptr, take_system(nullptr)) << "even when there is none";
}

TEST_F(ProcessStateTest, KeepsTheLastErrorAsAWhole)
{
    set_last_error("first");
    EXPECT_EQ("first", last_error());
    set_last_error("");
    EXPECT_EQ("", last_error());
    set_uninitialised();
    set_last_error("second");
    EXPECT_EQ("second", last_error());
}

TEST_F(ProcessStateTest, NeverTearsTheLastError)
{
    const std::string texts[] = {"", std::string(9, 'a'), std::string(100, 'b'), std::string(4000, 'c')};
    set_last_error(texts[0]);
    on_threads([&texts](int thread) {
        for (int i = 0; i < 2000; ++i) {
            if (thread % 2 == 0)
                set_last_error(texts[static_cast<size_t>(i + thread) % std::size(texts)]);
            const std::string seen = last_error();
            ASSERT_TRUE(std::find(std::begin(texts), std::end(texts), seen) != std::end(texts));
        }
    });
}

TEST_F(ProcessStateTest, LetsOneThreadInitialise)
{
    for (int round = 0; round < 100; ++round) {
        std::atomic<int> winners{0};
        on_threads([&winners](int) { winners += set_initialised() ? 1 : 0; });
        ASSERT_EQ(1, winners);
        set_uninitialised();
    }
}

TEST_F(ProcessStateTest, LetsOneThreadOpenAndOneCloseTheSystem)
{
    for (int round = 0; round < 100; ++round) {
        std::atomic<int> openers{0};
        std::atomic<int> closers{0};
        on_threads([&openers](int) { openers += set_system(std::make_unique<SystemModule>()) ? 1 : 0; });
        ASSERT_EQ(1, openers);
        const SystemModule* const handle = current_system();
        on_threads([&closers, handle](int) { closers += take_system(handle) ? 1 : 0; });
        ASSERT_EQ(1, closers);
    }
}

} // namespace

} // namespace zvgentl
