#include <filesystem>
#include <string>

#include <Poco/AutoPtr.h>
#include <Poco/Exception.h>
#include <Poco/Message.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "logger/RotatingFileChannel.h"
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

} // namespace
