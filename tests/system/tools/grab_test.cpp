#include <algorithm>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "zvgr/FrameStamp.h"

#include "Program.h"
#include "pictures.h"

namespace zvgentl::test {

namespace fs = std::filesystem;

namespace {

constexpr const char* as_fast_as_possible = "0";
constexpr const char* nearly_none = "0.001";

std::string frame_file(std::uint64_t number, const std::string& extension)
{
    std::string digits = std::to_string(number);
    digits.insert(0, 6 - digits.size(), '0');
    return "frame_" + digits + extension;
}

/// The counters in the pixels of saved frames, each with its checksum verified.
std::vector<std::uint64_t> counters_in(const fs::path& folder, std::uint64_t frames,
                                       const std::string& extension)
{
    std::vector<std::uint64_t> counters;
    for (std::uint64_t i = 0; i < frames; ++i) {
        const fs::path file = folder / frame_file(i, extension);
        const GreyPicture picture = extension == ".png" ? read_png(file) : read_tiff(file);
        const auto stamp = zvgr::read_stamp(picture.samples.data(), picture.samples.size());
        EXPECT_TRUE(stamp && stamp->checksum_ok) << file;
        counters.push_back(stamp ? stamp->counter : 0);
    }
    return counters;
}

bool rises(const std::vector<std::uint64_t>& numbers)
{
    return std::adjacent_find(numbers.begin(), numbers.end(), std::greater_equal<>()) == numbers.end();
}

GreyPicture grey_picture(std::uint8_t first)
{
    GreyPicture picture{64, 48, 8, std::vector<unsigned char>(64 * 48)};
    for (std::size_t i = 0; i < picture.samples.size(); ++i)
        picture.samples[i] = static_cast<unsigned char>(first + i * 7);
    return picture;
}

class Grab : public testing::TestWithParam<const char*> {
protected:
    static std::string mode() { return GetParam(); }
};

} // namespace

TEST_P(Grab, DeliversTheFramesThatWereAskedFor)
{
    Program program({"grab", "--mode", mode(), "--frames", "200", "--json"});
    const Ended ended = program.with("ZV_GRABBER_RATE", as_fast_as_possible).run();
    ASSERT_EQ(0, ended.code) << ended.output << ended.errors;
    const auto summary = ended.json();
    EXPECT_EQ("complete", summary["outcome"]);
    EXPECT_EQ(mode(), summary["mode"]);
    EXPECT_EQ("FG0", summary["interface"]);
    EXPECT_EQ("Device00", summary["device"]);
    EXPECT_EQ(200, summary["delivered"]);
    EXPECT_EQ(200, summary["checksums"]["found"]);
    EXPECT_EQ(0, summary["checksums"]["damaged"]);
    EXPECT_EQ(0, summary["repeated"]);
    EXPECT_TRUE(summary["lost"].is_number());
    EXPECT_EQ(mode() == "queued" ? "frame ids" : "frame counter", summary["lost_from"]);
    EXPECT_EQ("", ended.errors) << "no progress bar without a terminal";
    EXPECT_TRUE(program.left_nothing_temporary());
}

TEST_P(Grab, SavesEightBitFramesBitForBit)
{
    const Folder folder;
    const fs::path pictures = folder / "pictures";
    const Ended ended = Program({"grab", "--mode", mode(), "--frames", "30", "--device", "Device10",
                                 "--output", pictures.string(), "--json"})
                            .with("ZV_GRABBER_RATE", as_fast_as_possible)
                            .run();
    ASSERT_EQ(0, ended.code) << ended.output << ended.errors;
    EXPECT_EQ(30, ended.json()["saved"]["files"]);
    EXPECT_EQ(30U, count_files(pictures));
    EXPECT_TRUE(rises(counters_in(pictures, 30, ".png")));
}

TEST_P(Grab, SavesSixteenBitFramesBitForBit)
{
    const Folder folder;
    const fs::path pictures = folder / "pictures";
    const Ended ended = Program({"grab", "--mode", mode(), "--frames", "10", "--device", "SCX800-0002",
                                 "--output", pictures.string(), "--format", "tiff", "--json"})
                            .with("ZV_GRABBER_RATE", as_fast_as_possible)
                            .run();
    ASSERT_EQ(0, ended.code) << ended.output << ended.errors;
    EXPECT_EQ("Mono16", ended.json()["picture"]["pixel_format"]);
    EXPECT_EQ(10U, count_files(pictures));
    EXPECT_TRUE(rises(counters_in(pictures, 10, ".tiff")));
    EXPECT_EQ(16U, read_tiff(pictures / "frame_000000.tiff").bits);
}

TEST_P(Grab, SavesThePicturesThatTheCameraPlays)
{
    const Folder folder;
    fs::create_directory(folder / "source");
    for (std::uint8_t i = 0; i < 3; ++i)
        write_png(folder / "source" / frame_file(i, ".png"), grey_picture(i));
    const fs::path pictures = folder / "pictures";
    const Ended ended =
        Program({"grab", "--mode", mode(), "--frames", "6", "--output", pictures.string(), "--json"})
            .with("ZV_GRABBER_RATE", as_fast_as_possible)
            .with("ZV_GRABBER_PICTURES", (folder / "source").string())
            .run();
    ASSERT_EQ(0, ended.code) << ended.output << ended.errors;
    EXPECT_EQ(0, ended.json()["checksums"]["found"]);
    EXPECT_EQ(mode() == "cyclic", ended.json()["lost"].is_null())
        << "only frame ids tell without a frame counter";
    for (std::uint64_t i = 0; i < 6; ++i) {
        const GreyPicture picture = read_png(pictures / frame_file(i, ".png"));
        EXPECT_TRUE(grey_picture(picture.samples.at(0)) == picture) << i;
        EXPECT_LT(picture.samples.at(0), 3);
    }
}

TEST_P(Grab, LeavesTheUsersSettingsAloneButFollowsThem)
{
    Program program({"grab", "--mode", mode(), "--frames", "1", "--interface", "FG2", "--json"});
    const std::string settings =
        std::string("GenTL.Interface.ExposeDemoGrabber = 1\n") +
        "GenTL.Stream.QueuedBufferMode-Overwrite = " + (mode() == "queued" ? "0" : "1") + "\n";
    write_text(program.folder() / "settings.properties", settings);
    const Ended ended = program.run();
    ASSERT_EQ(0, ended.code) << ended.output << ended.errors;
    EXPECT_EQ("FG2", ended.json()["interface"]);
    EXPECT_EQ(settings, read_text(program.folder() / "settings.properties"));
}

TEST_P(Grab, FailsWhenNoFrameComesInTime)
{
    Program program({"grab", "--mode", mode(), "--frames", "5", "--timeout", "50", "--json"});
    const Ended ended = program.with("ZV_GRABBER_RATE", nearly_none).run();
    EXPECT_EQ(1, ended.code);
    EXPECT_EQ("timed out", ended.json()["outcome"]);
    EXPECT_GT(5, ended.json()["delivered"]);
    EXPECT_TRUE(program.left_nothing_temporary());
}

TEST_P(Grab, FailsWhenThePicturesCannotBeSaved)
{
    const Folder folder;
    write_text(folder / "file", "");
    const std::string pictures = (folder / "file" / "pictures").u8string();
    Program program({"grab", "--mode", mode(), "--frames", "0", "--output", pictures});
    const Ended ended = program.run();
    EXPECT_EQ(1, ended.code);
    EXPECT_NE(std::string::npos, ended.errors.find(pictures)) << ended.errors;
    EXPECT_TRUE(program.left_nothing_temporary());
}

TEST_P(Grab, ShowsItsProgressOnATerminalAlone)
{
    Program program({"grab", "--mode", mode(), "--frames", "20", "--json"});
    const Ended ended = program.with("ZV_GRABBER_RATE", as_fast_as_possible).on_terminal().run();
    ASSERT_EQ(0, ended.code) << ended.errors;
    EXPECT_NE(std::string::npos, ended.errors.find("1/20 frames")) << ended.errors;
    EXPECT_EQ(20, ended.json()["delivered"]) << "the summary stays readable";
}

TEST_P(Grab, SavesInAFolderOfAnyName)
{
    const Folder folder;
    const fs::path pictures = folder.path() / fs::u8path(u8"Bilder f\u00fcr \u0416");
    for (const char* const format : {"png", "tiff"}) {
        const Ended ended = Program({"grab", "--mode", mode(), "--frames", "2", "--output",
                                     pictures.u8string(), "--format", format, "--json"})
                                .with("ZV_GRABBER_RATE", as_fast_as_possible)
                                .run();
        ASSERT_EQ(0, ended.code) << ended.output << ended.errors;
        EXPECT_EQ(pictures.u8string(), ended.json()["saved"]["folder"]);
    }
    EXPECT_EQ(4U, count_files(pictures));
}

INSTANTIATE_TEST_SUITE_P(Modes, Grab, testing::Values("queued", "cyclic"),
                         [](const auto& name) { return std::string(name.param); });

TEST(GrabSelection, SaysWhatThereIsWhenTheDeviceIsNot)
{
    Program program({"grab", "--device", "Device99"});
    const Ended ended = program.run();
    EXPECT_EQ(1, ended.code);
    EXPECT_NE(std::string::npos, ended.errors.find("FG0/Device00, FG0/Device01, FG1/Device10"))
        << ended.errors;
    EXPECT_TRUE(program.left_nothing_temporary());
}

TEST(GrabSelection, RefusesFewerBuffersThanTheStreamNeeds)
{
    const Ended ended = Program({"grab", "--buffers", "3"}).run();
    EXPECT_EQ(1, ended.code);
    EXPECT_NE(std::string::npos, ended.errors.find("at least 4")) << ended.errors;
}

TEST(GrabSelection, LosesNothingInQueuedModeWhenTheCameraWaitsForBuffers)
{
    const Ended ended = Program({"grab", "--frames", "500", "--buffers", "4", "--json"})
                            .with("ZV_GRABBER_RATE", as_fast_as_possible)
                            .run();
    ASSERT_EQ(0, ended.code) << ended.errors;
    EXPECT_EQ(0, ended.json()["lost"]);
}

} // namespace zvgentl::test
