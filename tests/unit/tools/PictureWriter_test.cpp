#include <algorithm>
#include <iterator>
#include <ostream>
#include <random>

#include <gtest/gtest.h>

#include "TemporaryFolder.h"
#include "pictures/PictureWriter.h"
#include "read_picture.h"

namespace zvgentl::test {

using namespace tool;
namespace fs = std::filesystem;

namespace {

struct Kind {
    FileFormat format;
    unsigned channels;
    unsigned bits;
};

std::ostream& operator<<(std::ostream& stream, const Kind& kind)
{
    return stream << (kind.format == FileFormat::png ? "Png" : "Tiff") << kind.channels << "Channels"
                  << kind.bits << "Bits";
}

Picture random_picture(std::uint32_t width, std::uint32_t height, unsigned channels, unsigned bits)
{
    Picture picture{width, height, channels, bits, {}};
    std::mt19937 random(width * 31 + height * 7 + channels * 3 + bits);
    std::generate_n(std::back_inserter(picture.samples), picture.row_size() * height,
                    [&random] { return static_cast<std::uint8_t>(random()); });
    return picture;
}

class WritePicture : public testing::TestWithParam<Kind> {};

} // namespace

TEST_P(WritePicture, ReadsBackBitForBit)
{
    const TemporaryFolder folder;
    const auto writer = make_writer(GetParam().format);
    const fs::path file = folder / "picture";
    const Picture written = random_picture(37, 23, GetParam().channels, GetParam().bits);
    writer->write(file, written);

    const Picture read = GetParam().format == FileFormat::png ? read_png(file) : read_tiff(file);
    EXPECT_EQ(written.width, read.width);
    EXPECT_EQ(written.height, read.height);
    EXPECT_EQ(written.channels, read.channels);
    EXPECT_EQ(written.bits, read.bits);
    EXPECT_EQ(written.samples, read.samples);
}

INSTANTIATE_TEST_SUITE_P(Kinds, WritePicture,
                         testing::Values(Kind{FileFormat::png, 1, 8}, Kind{FileFormat::png, 3, 8},
                                         Kind{FileFormat::png, 4, 8}, Kind{FileFormat::png, 1, 16},
                                         Kind{FileFormat::png, 3, 16}, Kind{FileFormat::png, 4, 16},
                                         Kind{FileFormat::tiff, 1, 8}, Kind{FileFormat::tiff, 3, 8},
                                         Kind{FileFormat::tiff, 4, 8}, Kind{FileFormat::tiff, 1, 16},
                                         Kind{FileFormat::tiff, 3, 16}, Kind{FileFormat::tiff, 4, 16}),
                         testing::PrintToStringParamName());

class EitherFormat : public testing::TestWithParam<FileFormat> {};

TEST_P(EitherFormat, ReplacesAFileOfThatName)
{
    const TemporaryFolder folder;
    const fs::path file = folder / "picture";
    write_text(file, "something else");
    const Picture picture = random_picture(5, 4, 1, 8);
    make_writer(GetParam())->write(file, picture);
    EXPECT_EQ(picture.samples, (GetParam() == FileFormat::png ? read_png(file) : read_tiff(file)).samples);
}

TEST_P(EitherFormat, NamesTheFileThatCannotBeWritten)
{
    const TemporaryFolder folder;
    const fs::path file = folder.path() / "missing" / "picture";
    try {
        make_writer(GetParam())->write(file, random_picture(5, 4, 1, 8));
        FAIL() << "wrote into a folder that does not exist";
    } catch (const std::runtime_error& reason) {
        EXPECT_NE(std::string::npos, std::string(reason.what()).find(file.string())) << reason.what();
    }
}

TEST_P(EitherFormat, LeavesNothingBehindWhenTheTargetCannotBeReplaced)
{
    const TemporaryFolder folder;
    const fs::path file = folder / "picture";
    fs::create_directories(file / "in the way");
    EXPECT_THROW(make_writer(GetParam())->write(file, random_picture(5, 4, 1, 8)), std::runtime_error);
    EXPECT_EQ(1, std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()));
}

TEST_P(EitherFormat, FailsWhenTheDiskIsFull)
{
    const TemporaryFolder folder;
    const fs::path file = folder / "picture";
    fs::create_symlink("/dev/full", folder / "picture.part"); // where the writer keeps an unfinished file
    EXPECT_THROW(make_writer(GetParam())->write(file, random_picture(500, 400, 1, 8)), std::runtime_error);
    EXPECT_FALSE(fs::exists(file));
}

INSTANTIATE_TEST_SUITE_P(Formats, EitherFormat, testing::Values(FileFormat::png, FileFormat::tiff));

} // namespace zvgentl::test
