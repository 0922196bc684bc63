#include <chrono>
#include <cstdint>
#include <string>

#include <gmock/gmock.h>

#include "zvlog/ZVLogger.h"
#include "zvlog/ZVReports.h"
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

TEST_F(StoredSettings, GiveWayToThoseOfTheEnvironment)
{
    write_file(file(), "A = 1\nB = 2\n");
    EXPECT_EQ(1u, ZVSettings::InitInteger(3, "A", 4, nullptr));
    m_home.environment.set("ZV_SETTINGS_OVERRIDE", "A = 7; C=0x10");
    EXPECT_EQ(7u, ZVSettings::InitInteger(3, "A", 4, nullptr));
    EXPECT_EQ(2u, ZVSettings::InitInteger(3, "B", 4, nullptr));
    EXPECT_EQ(16u, ZVSettings::InitInteger(3, "C", 4, nullptr));
    EXPECT_EQ(5u, ZVSettings::InitInteger(3, "D", 5, nullptr));
    EXPECT_EQ("A = 1\nB = 2\n", content_of(file())) << "and are not written to the file";
    m_home.environment.unset("ZV_SETTINGS_OVERRIDE");
    EXPECT_EQ(1u, ZVSettings::InitInteger(3, "A", 4, nullptr));
}

TEST_F(StoredSettings, NeedNoFileWhenTheEnvironmentFixesThem)
{
    m_home.environment.set("ZV_SETTINGS_FILE", m_home.folder / "no/such/folder/file");
    m_home.environment.set("ZV_SETTINGS_OVERRIDE", "A = 7");
    EXPECT_EQ(7u, ZVSettings::InitInteger(3, "A", 4, nullptr));
}

std::string reports()
{
    std::string text(ZVReportedText(nullptr, 0), 'x');
    EXPECT_EQ(text.size(), ZVReportedText(text.data(), text.size()));
    text.pop_back();
    return text;
}

TEST(Reports, AreKeptUntilTheirSourceHasAnother)
{
    EXPECT_EQ("", reports());
    ZVReport("B", "one\ntwo");
    ZVReport("A", "zero");
    EXPECT_EQ("zero\none\ntwo", reports());
    ZVReport("B", "three");
    ZVReport(nullptr, "nobody");
    ZVReport("", "nobody");
    EXPECT_EQ("zero\nthree", reports());
    char part[5] = {};
    EXPECT_EQ(11u, ZVReportedText(part, sizeof part));
    EXPECT_STREQ("zero", part);
    ZVReport("A", "");
    ZVReport("B", nullptr);
    EXPECT_EQ("", reports());
}

} // namespace
