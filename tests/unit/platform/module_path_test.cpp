#include <filesystem>

#include <gtest/gtest.h>

#include "platform/process.h"

// Linked into this program, the code was loaded from it.
TEST(ModulePath, IsTheFullPathOfTheFileThatHoldsTheCode)
{
    const auto path = platform::module_path();
    ASSERT_TRUE(path.has_value());
    EXPECT_TRUE(std::filesystem::path(*path).is_absolute());
    EXPECT_TRUE(std::filesystem::is_regular_file(*path));
    EXPECT_EQ("unit_producer", std::filesystem::path(*path).stem());
}

TEST(ModulePath, IsTheSameAtEveryQuestion) { EXPECT_EQ(platform::module_path(), platform::module_path()); }
