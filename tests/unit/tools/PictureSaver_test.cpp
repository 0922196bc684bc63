#include <stdexcept>

#include <gmock/gmock.h>

#include "TemporaryFolder.h"
#include "read_picture.h"
#include "support.h"
#include "zvgentl/PictureSaver.h"

namespace zvgentl::test {

using namespace tool;
namespace fs = std::filesystem;

namespace {

constexpr std::size_t plenty = 1U << 20U;

Picture grey(std::uint8_t value) { return {8, 4, 1, 8, std::vector<std::uint8_t>(32, value)}; }

} // namespace

TEST(PictureSaver, WritesEachPictureUnderItsNumberHoweverFewMayWait)
{
    for (const std::size_t limit : {plenty, std::size_t{1}}) {
        const TemporaryFolder folder;
        PictureSaver saver(folder / "new" / "folder", FileFormat::png, limit);
        for (std::uint8_t i = 0; i < 20; ++i)
            saver.save(i, grey(i));
        saver.finish();
        EXPECT_EQ(20U, saver.saved());
        for (std::uint8_t i = 0; i < 20; ++i)
            EXPECT_EQ(grey(i).samples,
                      read_png(folder / "new" / "folder" / PictureSaver::file_name(i, ".png")).samples);
    }
}

TEST(PictureSaver, ReportsAFailedWrite)
{
    const TemporaryFolder folder;
    PictureSaver saver(folder.path(), FileFormat::png, plenty);
    fs::create_directories(folder / "frame_000001.png" / "in the way");
    saver.save(1, grey(1));
    EXPECT_THROW(saver.finish(), std::runtime_error);
    EXPECT_THROW(saver.save(2, grey(2)), std::runtime_error);
}

TEST(PictureSaver, NamesTheFolderThatCannotBeMade)
{
    const TemporaryFolder folder;
    write_text(folder / "file", "in the way");
    for (const char* const name : {"file", "file/below"}) {
        EXPECT_THAT(error_of([&] { const PictureSaver saver(folder / name, FileFormat::png, plenty); }),
                    HasSubstr((folder / name).string()));
    }
}

TEST(PictureSaver, NamesFilesSoThatTheySortByNumber)
{
    EXPECT_EQ("frame_000000.png", PictureSaver::file_name(0, ".png"));
    EXPECT_EQ("frame_000123.tiff", PictureSaver::file_name(123, ".tiff"));
    EXPECT_EQ("frame_1234567.png", PictureSaver::file_name(1234567, ".png"));
}

} // namespace zvgentl::test
