#include <chrono>
#include <cstdint>
#include <string>

#include <gmock/gmock.h>

#include "zvlog/ZVLogger.h"
#include "zvlog/ZVSettings.h"

#include "unit/logger/Sandbox.h"

using ::testing::HasSubstr;

namespace {

TEST(Text, IsCopiedAndJoined)
{
    const zvstring base("GenTL.Stream.QueuedBufferMode");
    zvstring copy(base);
    EXPECT_STREQ("", zvstring().c_str());
    EXPECT_STREQ("GenTL.Stream.QueuedBufferMode-Overwrite", (base + "-Overwrite").c_str());
    copy += "!";
    EXPECT_STREQ("GenTL.Stream.QueuedBufferMode!", copy.c_str());
    EXPECT_STREQ("GenTL.Stream.QueuedBufferMode", base.c_str());
    copy = base;
    const zvstring& same = copy;
    copy = same;
    EXPECT_STREQ(base.c_str(), copy.c_str());
}

TEST(Text, TakesNullAsEmpty)
{
    const char* const nothing = nullptr;
    zvstring text(nothing);
    text += nothing;
    EXPECT_STREQ("", (text + nothing).c_str());
}

TEST(Timer, CountsMicroseconds)
{
    const auto now = std::chrono::steady_clock::now();
    EXPECT_GE(ZVTimeElapsedUs(now), 0);
    EXPECT_GE(ZVTimeElapsedUs(now - std::chrono::seconds(2)), 2000000);
    EXPECT_LT(ZVTimeElapsedUs(now + std::chrono::hours(1)), 0);
}

TEST(Logger, HasItsNameAndTheLevelOfTheFirstCall)
{
    const EmptyHome home;
    EXPECT_EQ(nullptr, InitLogger(nullptr, nullptr, 0xFFFFFFFF));
    EXPECT_EQ(nullptr, InitLogger(nullptr, "", 0xFFFFFFFF));
    ZVPocoLogger* const logger = InitLogger(nullptr, "Interface.cpp", 5);
    ASSERT_NE(nullptr, logger);
    EXPECT_EQ("Interface.cpp", logger->name());
    EXPECT_FALSE(logger->getChannel().isNull());
    EXPECT_EQ(logger, InitLogger("text", "Interface.cpp", 0xFFFFFFFF));
    EXPECT_EQ(5, logger->getLevel());
}

class StoredSettings : public ::testing::Test {
protected:
    StoredSettings() { m_home.environment.set("ZV_SETTINGS_FILE", file()); }
    std::string file() const { return m_home.folder / "settings.properties"; }
    EmptyHome m_home;
};

TEST_F(StoredSettings, AreMadeAndReadWhereTheEnvironmentPointsAtThatMoment)
{
    EXPECT_EQ(2u, ZVSettings::InitInteger(3, "A", 2, "first"));
    EXPECT_EQ(4u, ZVSettings::InitInteger(3, "B", 4, nullptr));
    EXPECT_THAT(content_of(file()), HasSubstr("# first\n# Default: 2\nA = 2\n\n# Default: 4\nB = 4\n"));
    m_home.environment.set("ZV_SETTINGS_FILE", m_home.folder / "other.properties");
    write_file(m_home.folder / "other.properties", "A = 0x20\n");
    EXPECT_EQ(32u, ZVSettings::InitInteger(3, "A", 2, nullptr));
    m_home.environment.unset("ZV_SETTINGS_FILE");
    EXPECT_EQ(3u, ZVSettings::InitInteger(3, "A", 3, nullptr));
    EXPECT_THAT(content_of(m_home.user_settings()), HasSubstr("A = 3\n"));
}

TEST_F(StoredSettings, AreGivenWithoutBeingMade)
{
    std::uint32_t value = 99;
    EXPECT_FALSE(ZVSettings::Get(1, 3, zvstring("A") + "-Overwrite", value, 0xFFFFFFFF, true, nullptr));
    EXPECT_EQ(0xFFFFFFFF, value);
    EXPECT_FALSE(is_there(file()));

    write_file(file(), "A-Overwrite = 6\nB = x\n");
    EXPECT_TRUE(ZVSettings::Get(1, 3, zvstring("A") + "-Overwrite", value, 0xFFFFFFFF, true, nullptr));
    EXPECT_EQ(6u, value);
    EXPECT_FALSE(ZVSettings::Get(1, 3, zvstring("B"), value, 7, false, "description"));
    EXPECT_EQ(7u, value);
}

TEST_F(StoredSettings, OfAnotherTypeOrScopeOrWithoutAKeyAreTheDefault)
{
    write_file(file(), "A = 1\n");
    EXPECT_EQ(4u, ZVSettings::InitInteger(2, "A", 4, nullptr));
    for (const char* const key : {static_cast<const char*>(nullptr), ""})
        EXPECT_EQ(4u, ZVSettings::InitInteger(3, key, 4, nullptr));
    const struct {
        std::uint32_t scope, type;
        const char* key;
    } refused[] = {{1, 2, "A"}, {0, 3, "A"}, {1, 3, ""}};
    for (const auto& row : refused) {
        std::uint32_t value = 99;
        EXPECT_FALSE(ZVSettings::Get(row.scope, row.type, zvstring(row.key), value, 5, true, nullptr));
        EXPECT_EQ(5u, value);
    }
    EXPECT_EQ("A = 1\n", content_of(file()));
}

} // namespace
