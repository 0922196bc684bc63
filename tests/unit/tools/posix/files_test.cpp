#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "pictures/PictureWriter.h"
#include "platform/files.h"
#include "unit/tools/TemporaryFolder.h"

namespace zvgentl::test {

using namespace tool;
namespace fs = std::filesystem;

namespace {

const Picture picture{500, 400, 1, 8, std::vector<std::uint8_t>(200000, 7)};

/// While it lives, a file of this process takes no more bytes than this.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_previous);
        const rlimit limit{bytes, m_previous.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_previous);
        std::signal(SIGXFSZ, m_handler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    void (*m_handler)(int);
    rlimit m_previous{};
};

/// While it lives, new files may have all rights.
class NoMask {
public:
    NoMask() : m_previous(umask(0)) {}
    ~NoMask() { umask(m_previous); }
    NoMask(const NoMask&) = delete;
    NoMask& operator=(const NoMask&) = delete;

private:
    mode_t m_previous;
};

class EitherFile : public testing::TestWithParam<FileFormat> {
protected:
    TemporaryFolder folder;
    const fs::path file = folder / "picture";
    const std::unique_ptr<PictureWriter> writer = make_writer(GetParam());
};

} // namespace

TEST_P(EitherFile, FailsWhenTheDiskIsFullAndLeavesNothingBehind)
{
    for (const rlim_t room : {rlim_t{0}, rlim_t{100}}) {
        const FullDisk disk(room);
        EXPECT_THROW(writer->write(file, picture), std::runtime_error);
        EXPECT_TRUE(fs::is_empty(folder.path()));
    }
}

TEST_P(EitherFile, FollowsNoLinkThatSomebodyHasPlanted)
{
    const fs::path victim = folder / "victim";
    write_text(victim, "mine");
    fs::create_symlink(victim, file);
    fs::create_symlink(victim, folder / "picture.part");
    writer->write(file, picture);
    EXPECT_EQ("mine", read_text(victim));
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(file)));
}

INSTANTIATE_TEST_SUITE_P(Formats, EitherFile, testing::Values(FileFormat::png, FileFormat::tiff));

TEST(NewFile, IsNotCreatedBehindALink)
{
    const TemporaryFolder folder;
    const fs::path link = folder / "link";
    const fs::path target = folder / "target";
    fs::create_symlink(target, link);
    EXPECT_EQ(nullptr, platform::create_file(link, platform::Readers::usual));
    EXPECT_FALSE(fs::exists(target));
}

TEST(SettingsFile, IsForItsOwnerAloneWhateverTheMask)
{
    constexpr fs::perms owner_only = fs::perms::owner_read | fs::perms::owner_write;
    const TemporaryFolder folder;
    const NoMask mask;
    const fs::path file = folder / "settings.properties";
    std::string reason;
    EXPECT_EQ(platform::Replacement::done, platform::replace_file(file, platform::FileContent(), "a = 1\n",
                                                                  platform::Flush::later, reason));
    EXPECT_EQ(owner_only, fs::status(file).permissions());
}

} // namespace zvgentl::test
