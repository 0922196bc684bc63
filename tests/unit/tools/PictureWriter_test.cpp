#include <algorithm>
#include <iterator>
#include <memory>
#include <random>

#include <gmock/gmock.h>

#include "TemporaryFolder.h"
#include "pictures/PictureWriter.h"
#include "read_picture.h"
#include "support.h"
#include "zvgentl/PictureSaver.h"

namespace zvgentl::test {

using namespace tool;
namespace fs = std::filesystem;

namespace {

Picture read_back(FileFormat format, const fs::path& file)
{
    return format == FileFormat::png ? read_png(file) : read_tiff(file);
}

Picture random_picture(std::uint32_t width, std::uint32_t height, unsigned channels, unsigned bits)
{
    Picture picture{width, height, channels, bits, {}};
    std::mt19937 random(width * 31 + height * 7 + channels * 3 + bits);
    std::generate_n(std::back_inserter(picture.samples), picture.row_size() * height,
                    [&random] { return static_cast<std::uint8_t>(random()); });
    return picture;
}

class EitherFormat : public testing::TestWithParam<FileFormat> {
protected:
    TemporaryFolder folder;
    const fs::path file = folder / "picture";
    const std::unique_ptr<PictureWriter> writer = make_writer(GetParam());
};

} // namespace

TEST_P(EitherFormat, ReplacesAFileAndReadsBackBitForBit)
{
    for (const unsigned channels : {1U, 3U, 4U})
        for (const unsigned bits : {8U, 16U}) {
            const Picture written = random_picture(37, 23, channels, bits);
            writer->write(file, written);
            EXPECT_THAT(read_back(GetParam(), file),
                        testing::FieldsAre(37, 23, channels, bits, written.samples));
        }
}

TEST_P(EitherFormat, NamesTheFileThatCannotBeWritten)
{
    const fs::path missing = folder.path() / "missing" / "picture";
    EXPECT_THAT(error_of([&] { writer->write(missing, random_picture(5, 4, 1, 8)); }),
                HasSubstr(missing.string()));
}

TEST_P(EitherFormat, LeavesNothingBehindWhenTheTargetCannotBeReplaced)
{
    fs::create_directories(file / "in the way");
    EXPECT_THROW(writer->write(file, random_picture(5, 4, 1, 8)), std::runtime_error);
    EXPECT_EQ(1, std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()));
}

TEST(UnfinishedPictures, AreRemovedWhenTheNextOnesAreSaved)
{
    const TemporaryFolder folder;
    const fs::path left = folder / "frame-2000000011-0123456789abcdef.part"; // of a process that has ended
    write_text(left, "half a picture");
    write_text(folder / "frame_000001.png", "a whole one");
    const PictureSaver saver(folder.path(), FileFormat::png, 1);
    EXPECT_FALSE(fs::exists(left));
    EXPECT_TRUE(fs::exists(folder / "frame_000001.png"));
}

INSTANTIATE_TEST_SUITE_P(Formats, EitherFormat, testing::Values(FileFormat::png, FileFormat::tiff));

} // namespace zvgentl::test
