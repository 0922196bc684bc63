#include <gtest/gtest.h>

#include "zvlog/ZVSettings.h"

#include "support/FakeSettings.h"

using namespace zvtest;

namespace {

class FakeSettingsStore : public testing::Test {
protected:
    FakeSettings& settings{FakeSettings::instance()};
    void SetUp() override { settings.reset(); }
    void TearDown() override { settings.reset(); }
};

} // namespace

TEST_F(FakeSettingsStore, CreatesKeysOnlyForPlainReads)
{
    EXPECT_EQ(4U, ZVSettings::InitInteger(zv_feature_integer, "A", 4, "text"));
    EXPECT_EQ(4U, settings.stored("A"));
    EXPECT_EQ("text", settings.description("A"));
    uint32_t value = 1;
    EXPECT_FALSE(ZVSettings::Get(zv_scope_machine, zv_feature_integer, "B", value, 9, true, nullptr));
    EXPECT_EQ(9U, value);
    EXPECT_FALSE(settings.stored("B").has_value());
    EXPECT_EQ(1U, settings.stored_count());
}

TEST_F(FakeSettingsStore, AnswersStoredValues)
{
    settings.set("A", 7);
    settings.set_override("B", 8);
    uint32_t value = 1;
    EXPECT_EQ(7U, ZVSettings::InitInteger(zv_feature_integer, "A", 4, nullptr));
    EXPECT_TRUE(ZVSettings::Get(zv_scope_machine, zv_feature_integer, zvstring("B") + "-Overwrite", value, 9,
                                true, nullptr));
    EXPECT_EQ(8U, value);
    settings.remove("A");
    EXPECT_EQ(4U, ZVSettings::InitInteger(zv_feature_integer, "A", 4, nullptr));
}

TEST_F(FakeSettingsStore, RecordsReadsWithAllArguments)
{
    uint32_t value = UINT32_MAX;
    ZVSettings::InitInteger(3, "A", 4, "text");
    ZVSettings::Get(1, 3, "B-Overwrite", value, UINT32_MAX, true, nullptr);
    EXPECT_EQ((std::vector<SettingsRead>{plain_read("A", 4, "text"), override_read("B")}), settings.reads());
    EXPECT_FALSE(plain_read("A", 4) == plain_read("A", 4, ""));
    settings.clear_reads();
    EXPECT_TRUE(settings.reads().empty());
}

TEST_F(FakeSettingsStore, CanLeaveTheValueAlone)
{
    uint32_t value = 5;
    settings.get_writes_nothing();
    ZVSettings::Get(1, 3, "B", value, 9, true, nullptr);
    EXPECT_EQ(5U, value);
}

TEST(FakeString, JoinsTexts)
{
    zvstring text("a");
    text += "b";
    const zvstring copy = text + "c";
    text = copy;
    EXPECT_STREQ("abc", text.c_str());
    EXPECT_STREQ("", zvstring().c_str());
}
