#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>

#include <Poco/AutoPtr.h>
#include <Poco/Exception.h>
#include <Poco/Message.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "logger/RotatingFileChannel.h"
#include "platform/files.h"
#include "unit/logger/Sandbox.h"

using zvlog::FilePolicy;
using zvlog::RotatingFileChannel;

namespace {

class RotatingFile : public ::testing::Test {
protected:
    Poco::AutoPtr<RotatingFileChannel> open(std::uint64_t limit = 0)
    {
        FilePolicy policy;
        policy.path = file();
        policy.archive = zvlog::numbered_archives(file());
        policy.limit = limit;
        policy.archives = 2;
        return Poco::AutoPtr<RotatingFileChannel>(new RotatingFileChannel(policy));
    }

    static void write(Poco::AutoPtr<RotatingFileChannel>& channel, const std::string& text)
    {
        channel->log(Poco::Message("source", text, Poco::Message::PRIO_ERROR));
    }

    std::string file() const { return m_folder / "a.log"; }
    Folder m_folder;
};

TEST_F(RotatingFile, FollowsTheNameWhenSomebodyMovesTheFileAway)
{
    auto channel = open();
    write(channel, "one");
    std::filesystem::rename(file(), m_folder / "moved");
    write(channel, "two");
    EXPECT_EQ("one\n", content_of(m_folder / "moved"));
    EXPECT_EQ("two\n", content_of(file()));
}

TEST_F(RotatingFile, ComesBackWhenSomebodyDeletesTheFile)
{
    auto channel = open();
    write(channel, "one");
    std::filesystem::remove(file());
    write(channel, "two");
    EXPECT_EQ("two\n", content_of(file()));
}

TEST_F(RotatingFile, TwoWritersOfOneFileRotateItOnce)
{
    auto first = open(10);
    auto second = open(10);
    write(first, "first line");
    write(second, "second line");
    write(first, "third line");
    EXPECT_EQ("third line\n", content_of(file()));
    EXPECT_EQ("second line\n", content_of(file() + ".0"));
    EXPECT_EQ("first line\n", content_of(file() + ".1"));
}

TEST_F(RotatingFile, GoesOnWithAFileThatCannotBeMoved)
{
    std::filesystem::create_directories(file() + ".0/in the way");
    std::filesystem::create_directories(file() + ".1/in the way");
    auto channel = open(5);
    write(channel, "first");
    write(channel, "second");
    EXPECT_EQ("first\nsecond\n", content_of(file()));
}

TEST_F(RotatingFile, SaysWhenItCannotWrite)
{
    std::filesystem::create_directory(file());
    auto channel = open();
    EXPECT_THROW(write(channel, "text"), Poco::OpenFileException);
}

TEST_F(RotatingFile, SaysWhenTheDiskIsFull)
{
    if (!is_there("/dev/full"))
        GTEST_SKIP() << "needs a device that is always full";
    std::filesystem::create_symlink("/dev/full", file());
    auto channel = open();
    EXPECT_THROW(write(channel, "text"), Poco::WriteFileException);
}

TEST_F(RotatingFile, DoesNotWaitForTheReaderOfAPipe)
{
    ASSERT_EQ(0, mkfifo(file().c_str(), 0666));
    auto channel = open();
    EXPECT_THROW(write(channel, "text"), Poco::OpenFileException);
}

#ifndef _WIN32
/// A folder whose stamp is old enough to be trusted, and lines of one second unless a test says otherwise.
class SettledFolder : public RotatingFile {
protected:
    void SetUp() override
    {
        std::filesystem::create_directories(m_folder / "above/logs");
        write_file(m_folder / "above/logs/other", "text");
        bool is_settled = false;
        for (int look = 0; look < 1000000 && !is_settled; ++look)
            is_settled = platform::read_file(m_folder / "above/logs/other").is_settled;
        if (!is_settled)
            GTEST_SKIP() << "needs a file system whose stamps are trusted";
    }

    std::string log() const { return m_folder / "above/logs/other"; }

    Poco::AutoPtr<RotatingFileChannel> open_log(std::uint64_t limit = 0)
    {
        FilePolicy policy;
        policy.path = log();
        policy.archive = zvlog::numbered_archives(log());
        policy.limit = limit;
        policy.archives = 1;
        policy.make_folder = true;
        return Poco::AutoPtr<RotatingFileChannel>(new RotatingFileChannel(policy));
    }

    /// A channel that has found the file under its name.
    Poco::AutoPtr<RotatingFileChannel> open_and_write()
    {
        auto channel = open_log();
        write_at(channel, 1, "1");
        write_at(channel, 1, "2");
        return channel;
    }

    static void write_at(Poco::AutoPtr<RotatingFileChannel>& channel, std::time_t second,
                         const std::string& text)
    {
        Poco::Message message("source", text, Poco::Message::PRIO_ERROR);
        message.setTime(Poco::Timestamp::fromEpochTime(second));
        channel->log(message);
    }
};

TEST_F(SettledFolder, StillShowsWhenSomebodyMovesTheFileAway)
{
    auto channel = open_and_write();
    std::filesystem::rename(log(), m_folder / "moved");
    write_at(channel, 1, "3");
    EXPECT_EQ("text1\n2\n", content_of(m_folder / "moved"));
    EXPECT_EQ("3\n", content_of(log()));
}

TEST_F(SettledFolder, StillShowsWhenSomebodyDeletesOrReplacesTheFile)
{
    auto channel = open_and_write();
    std::filesystem::remove(log());
    write_at(channel, 1, "3");
    EXPECT_EQ("3\n", content_of(log()));
    write_file(m_folder / "new", "new\n");
    std::filesystem::rename(m_folder / "new", log());
    write_at(channel, 1, "4");
    EXPECT_EQ("new\n4\n", content_of(log()));
}

TEST_F(SettledFolder, ShowsWhenItIsMovedAwayItself)
{
    auto channel = open_and_write();
    std::filesystem::rename(m_folder / "above/logs", m_folder / "above/moved");
    write_at(channel, 1, "3");
    EXPECT_EQ("text1\n2\n", content_of(m_folder / "above/moved/other"));
    EXPECT_EQ("3\n", content_of(log()));
}

TEST_F(SettledFolder, IsLookedForAgainInTheNextSecond)
{
    auto channel = open_and_write();
    std::filesystem::rename(m_folder / "above", m_folder / "moved");
    write_at(channel, 1, "3");
    write_at(channel, 2, "4");
    EXPECT_EQ("text1\n2\n3\n", content_of(m_folder / "moved/logs/other"));
    EXPECT_EQ("4\n", content_of(log()));
}

TEST_F(SettledFolder, SaysNothingAboutAFileInAnotherOne)
{
    write_file(m_folder / "target", "");
    std::filesystem::create_symlink(m_folder / "target", m_folder / "above/logs/link");
    FilePolicy policy;
    policy.path = m_folder / "above/logs/link";
    Poco::AutoPtr<RotatingFileChannel> channel(new RotatingFileChannel(policy));
    write_at(channel, 1, "1");
    while (!platform::read_file(log()).is_settled || !platform::read_file(m_folder / "target").is_settled) {
    }
    write_at(channel, 1, "2");
    std::filesystem::rename(m_folder / "target", m_folder / "moved");
    write_at(channel, 1, "3");
    EXPECT_EQ("1\n2\n", content_of(m_folder / "moved"));
    EXPECT_EQ("3\n", content_of(m_folder / "target"));
}

TEST_F(SettledFolder, LeavesTheSizeThatOthersGiveTheFileToEverySixteenthLine)
{
    auto channel = open_log(1000);
    write_at(channel, 1, "1");
    write_at(channel, 1, "2");
    std::ofstream(log(), std::ios::app) << std::string(1000, '.');
    for (int line = 0; line < 16; ++line)
        write_at(channel, 1, "3");
    EXPECT_TRUE(is_there(log() + ".0"));
}

TEST_F(SettledFolder, LeavesTheLimitWhereItIs)
{
    auto channel = open_log(10);
    for (const char* const line : {"1", "2", "3", "4"}) // the file begins with four letters
        write_at(channel, 1, line);
    EXPECT_EQ("text1\n2\n3\n", content_of(log() + ".0"));
    EXPECT_EQ("4\n", content_of(log()));
}
#endif

} // namespace
