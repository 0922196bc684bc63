#include <gtest/gtest.h>

#include "api/ProcessState.h"
#include "modules/SystemModule.h"

// What TLOpen and TLClose bring about only when another thread was faster.

namespace zvgentl {

namespace {

TEST(ProcessState, HoldsOneSystem)
{
    ASSERT_EQ(nullptr, current_system());
    auto first = std::make_unique<SystemModule>();
    const SystemModule* const handle = first.get();
    EXPECT_TRUE(set_system(std::move(first)));
    EXPECT_FALSE(set_system(std::make_unique<SystemModule>()));
    EXPECT_EQ(handle, current_system());
    EXPECT_EQ(handle, take_system(handle).get());
    EXPECT_EQ(nullptr, take_system(handle));
}

} // namespace

} // namespace zvgentl
