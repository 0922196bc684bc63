#include <gmock/gmock.h>

#include "simulator/Devices.h"
#include "simulator/PictureFolder.h"
#include "simulator/pictures/FolderSource.h"
#include "simulator/pictures/PngFile.h"
#include "unit/simulator/picture_files.h"

namespace {

using namespace zvsim_test;
using testing::HasSubstr;
using zvsim::PictureFolder;

TEST(PngFile, IsReadBitForBit)
{
    const Folder folder;
    for (const Pixels pixels : {Pixels::grey_8, Pixels::grey_16, Pixels::rgb_8, Pixels::rgb_16}) {
        for (const bool is_interlaced : {false, true}) {
            TestPicture written = test_picture(61, 37, pixels, 1);
            written.is_interlaced = is_interlaced;
            write_png(folder.file("a.png"), written);
            std::string problem;
            const auto read = zvsim::read_png(folder.file("a.png"), problem);
            ASSERT_TRUE(read) << problem;
            EXPECT_EQ(61U, read->width);
            EXPECT_EQ(37U, read->height);
            EXPECT_EQ(written.in_memory(), read->pixels);
        }
    }
}

TEST(PngFile, HasThePixelFormatOfItsPixels)
{
    const Folder folder;
    const std::vector<std::pair<Pixels, std::string>> formats{{Pixels::grey_8, "Mono8"},
                                                              {Pixels::grey_16, "Mono16"},
                                                              {Pixels::rgb_8, "RGB8"},
                                                              {Pixels::rgb_16, "RGB16"}};
    for (const auto& [pixels, name] : formats) {
        write_png(folder.file("a.png"), test_picture(8, 8, pixels, 1));
        std::string problem;
        EXPECT_EQ(name, zvsim::read_png(folder.file("a.png"), problem)->format->name);
    }
}

TEST(PngFile, OfAnotherKindIsAProblem)
{
    const std::vector<std::pair<Pixels, std::string>> problems{{Pixels::grey_1, "1 bits in a sample"},
                                                               {Pixels::grey_alpha_8, "alpha channel"},
                                                               {Pixels::rgba_8, "alpha channel"},
                                                               {Pixels::palette_8, "palette"}};
    const Folder folder;
    for (const auto& [pixels, reason] : problems) {
        write_png(folder.file("a.png"), test_picture(8, 8, pixels, 1));
        std::string problem;
        EXPECT_FALSE(zvsim::read_png(folder.file("a.png"), problem));
        EXPECT_THAT(problem, HasSubstr(reason));
    }
}

TEST(PngFile, ThatIsNoneIsAProblem)
{
    const Folder folder;
    folder.write("text.png", "this is not a picture");
    folder.write("empty.png", "");
    for (const char* const name : {"text.png", "empty.png", "missing.png"}) {
        std::string problem;
        EXPECT_FALSE(zvsim::read_png(folder.file(name), problem)) << name;
        EXPECT_FALSE(problem.empty()) << name;
    }
}

TEST(PngFile, ThatEndsEarlyIsAProblem)
{
    const Folder folder;
    write_png(folder.file("a.png"), test_picture(64, 64, Pixels::grey_8, 1));
    std::filesystem::resize_file(folder.file("a.png"), 2000);
    std::string problem;
    EXPECT_FALSE(zvsim::read_png(folder.file("a.png"), problem));
    EXPECT_FALSE(problem.empty());
}

TEST(PictureFolder, IsPlayedInNameOrderAndInALoop)
{
    const Folder folder;
    std::vector<TestPicture> pictures;
    for (unsigned seed = 0; seed < 3; ++seed)
        pictures.push_back(test_picture(16, 4, Pixels::grey_16, seed));
    write_png(folder.file("b.png"), pictures[1]);
    write_png(folder.file("c.PNG"), pictures[2]);
    write_png(folder.file("a.png"), pictures[0]);
    folder.write("0.txt", "not a picture, and not called one");
    std::filesystem::create_directory(folder.file("d.png"));

    std::vector<std::string> warnings;
    const auto read = PictureFolder::read(folder.path(), warnings);
    ASSERT_NE(nullptr, read);
    EXPECT_THAT(warnings, testing::IsEmpty());
    for (uint64_t frame = 0; frame < 7; ++frame)
        EXPECT_EQ(pictures[frame % 3].in_memory(), read->picture(frame).pixels);
}

TEST(PictureFolder, LeavesOutWhatDoesNotFitTheFirstPicture)
{
    const Folder folder;
    const TestPicture first = test_picture(16, 4, Pixels::grey_8, 0);
    write_png(folder.file("a.png"), first);
    write_png(folder.file("b-wider.png"), test_picture(17, 4, Pixels::grey_8, 1));
    write_png(folder.file("c-higher.png"), test_picture(16, 5, Pixels::grey_8, 1));
    write_png(folder.file("d-deeper.png"), test_picture(16, 4, Pixels::grey_16, 1));
    folder.write("e-broken.png", "broken");
    std::vector<std::string> warnings;
    const auto read = PictureFolder::read(folder.path(), warnings);
    ASSERT_NE(nullptr, read);
    EXPECT_THAT(warnings, testing::ElementsAre(HasSubstr("b-wider.png"), HasSubstr("c-higher.png"),
                                               HasSubstr("d-deeper.png"), HasSubstr("e-broken.png")));
    EXPECT_EQ(first.in_memory(), read->picture(1).pixels);
}

TEST(PictureFolder, WithoutPicturesIsNone)
{
    const Folder folder;
    folder.write("a.png", "broken");
    std::vector<std::string> warnings;
    EXPECT_EQ(nullptr, PictureFolder::read(folder.path(), warnings));
    EXPECT_THAT(warnings,
                testing::ElementsAre(HasSubstr("a.png"), HasSubstr("no usable PNG or TIFF picture")));
}

TEST(PictureFolder, ThatIsMissingIsNone)
{
    const Folder folder;
    std::vector<std::string> warnings;
    EXPECT_EQ(nullptr, PictureFolder::read(folder.file("missing"), warnings));
    EXPECT_THAT(warnings, testing::ElementsAre(HasSubstr("missing cannot be read")));
}

TEST(FolderSource, StaysWithinTheRoomThatItIsGiven)
{
    const Folder folder;
    const TestPicture picture = test_picture(16, 4, Pixels::grey_8, 0);
    write_png(folder.file("a.png"), picture);
    std::vector<std::string> warnings;
    const auto read = PictureFolder::read(folder.path(), warnings);
    ASSERT_NE(nullptr, read);
    zvsim::CameraModel camera;
    camera.start.width = 16;
    camera.start.height = 4;
    camera.start.format = &read->format();
    const zvsim::GrabberModel grabber;
    zvsim::FolderSource source{zvsim::CameraDevice{camera, grabber}, *read};
    for (const size_t room : {size_t{0}, size_t{10}, size_t{64}, size_t{70}}) {
        std::vector<unsigned char> target(80, 0x5A);
        source.draw({0, zvsim::TestPattern::diagonal_ramp, 1}, target.data(), room);
        std::vector<unsigned char> expected(80, 0x5A);
        std::copy_n(picture.bytes.begin(), std::min(room, picture.bytes.size()), expected.begin());
        EXPECT_EQ(expected, target) << room;
    }
}

} // namespace
