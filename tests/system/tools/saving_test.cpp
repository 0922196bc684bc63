#include <fstream>

#include <gmock/gmock.h>

#include "zvgr/FrameStamp.h"

#include "Program.h"

// What grab saves beside pictures, and where.

namespace zvgentl::test {

namespace fs = std::filesystem;

namespace {

class Saving : public testing::Test {
protected:
    std::string path(const char* name) const { return (folder / name).u8string(); }
    /// A grab of as many frames, as fast as they come, with more options.
    static Ended grab(const char* frames, Words options)
    {
        options.insert(options.begin(), {"grab", "--json", "--frames", frames});
        return Program{options, {{"ZV_GRABBER_RATE", "0"}}}.run();
    }

    TemporaryFolder folder;
};

struct RawFrame {
    nlohmann::json header;
    std::string data;
};

std::vector<RawFrame> raw_frames(const std::string& text)
{
    std::vector<RawFrame> frames;
    for (std::size_t place = 0; place < text.size();) {
        const std::size_t end = text.find('\n', place);
        RawFrame frame{nlohmann::json::parse(text.substr(place, end - place)), {}};
        frame.data = text.substr(end + 1, frame.header["size"].get<std::size_t>());
        place = end + 1 + frame.data.size();
        frames.push_back(std::move(frame));
    }
    return frames;
}

void expect_intact(const std::vector<RawFrame>& frames, std::size_t count)
{
    ASSERT_EQ(count, frames.size());
    for (std::size_t i = 0; i < count; ++i) {
        const auto& [header, data] = frames[i];
        EXPECT_EQ(i, header["number"]);
        EXPECT_EQ(640, header["width"]);
        EXPECT_EQ(480, header["height"]);
        EXPECT_EQ("Mono8", header["pixel_format"]);
        EXPECT_EQ(8, header["bits_per_pixel"]);
        const auto stamp = zvgr::read_stamp(reinterpret_cast<const std::uint8_t*>(data.data()), data.size());
        EXPECT_TRUE(stamp && stamp->checksum_ok) << i;
    }
}

} // namespace

TEST_F(Saving, RefusesAFolderWithFramesOfAnEarlierRun)
{
    for (const char* const format : {"png", "tiff", "raw"}) {
        ASSERT_EQ(0, grab("3", {"--output", path(format), "--format", format}).code);
        const Ended ended = grab("1", {"--output", path(format), "--format", format});
        EXPECT_EQ(1, ended.code);
        EXPECT_THAT(ended.errors,
                    HasSubstr("holds 3 frames of an earlier run; --overwrite removes them, --append"));
        EXPECT_EQ("failed", ended.json()["outcome"]);
        EXPECT_EQ(3U, count_files(folder / format));
    }
}

TEST_F(Saving, NumbersOnOrBeginsAgainWhenAskedTo)
{
    write_text(folder / "frames" / "notes.txt", "mine");
    ASSERT_EQ(0, grab("3", {"--output", path("frames")}).code);
    ASSERT_EQ(0, grab("2", {"--output", path("frames"), "--append", "--format", "tiff"}).code);
    EXPECT_TRUE(fs::exists(folder / "frames" / "frame_000004.tiff"));
    EXPECT_EQ(6U, count_files(folder / "frames"));
    ASSERT_EQ(0, grab("1", {"--output", path("frames"), "--overwrite"}).code);
    EXPECT_TRUE(fs::exists(folder / "frames" / "frame_000000.png"));
    EXPECT_EQ(2U, count_files(folder / "frames")) << "no frame of the earlier run, and the notes";
}

TEST_F(Saving, KeepsEarlierFramesWhenThereIsNoCamera)
{
    ASSERT_EQ(0, grab("2", {"--output", path("frames")}).code);
    ASSERT_EQ(1, grab("2", {"--output", path("frames"), "--overwrite", "--device", "none"}).code);
    EXPECT_EQ(2U, count_files(folder / "frames"));
}

TEST_F(Saving, WritesRawFramesToOneFileOrMany)
{
    ASSERT_EQ(0, grab("3", {"--format", "raw", "--output", path("all.raw")}).code);
    expect_intact(raw_frames(read_text(folder / "all.raw")), 3);
    EXPECT_EQ(1U, count_files(folder.path()));
    EXPECT_EQ(1, grab("3", {"--format", "raw", "--output", path("all.raw")}).code);
    EXPECT_EQ(0, grab("1", {"--format", "raw", "--output", path("all.raw"), "--overwrite"}).code);
    expect_intact(raw_frames(read_text(folder / "all.raw")), 1);
    ASSERT_EQ(0, grab("2", {"--format", "raw", "--output", path("each")}).code);
    expect_intact(raw_frames(read_text(folder / "each" / "frame_000000.raw") +
                             read_text(folder / "each" / "frame_000001.raw")),
                  2);
}

TEST_F(Saving, WritesRawFramesToStandardOutput)
{
    const Ended ended = grab("3", {"--format", "raw", "--output", "-"});
    EXPECT_EQ(0, ended.code);
    expect_intact(raw_frames(ended.output), 3);
    EXPECT_EQ("complete", nlohmann::json::parse(ended.errors)["outcome"]);
    EXPECT_THAT(grab("3", {"--output", "-"}).errors, HasSubstr("use --format raw"));
}

TEST_F(Saving, WritesATableOfFrames)
{
    ASSERT_EQ(0, grab("5", {"--skip", "2", "--frames-csv", path("frames.csv")}).code);
    std::ifstream table(folder / "frames.csv");
    std::string line;
    std::getline(table, line);
    EXPECT_EQ("number,id,timestamp,arrival_s,size,state", line);
    for (int i = 0; i < 5; ++i) {
        ASSERT_TRUE(std::getline(table, line));
        EXPECT_THAT(line, StartsWith(std::to_string(i) + "," + std::to_string(i + 2) + ","))
            << "two are skipped";
        EXPECT_THAT(line, testing::EndsWith(",307200,intact"));
    }
    EXPECT_FALSE(std::getline(table, line));
}

TEST_F(Saving, CountsSkippedFramesNeitherAsDeliveredNorAsLost)
{
    const Ended ended = grab("4", {"--skip", "3"});
    EXPECT_EQ(4, ended.json()["delivered"]);
    EXPECT_EQ(3, ended.json()["skipped"]);
    EXPECT_EQ(0, ended.json()["lost"]);
}

TEST_F(Saving, PrintsNothingWhenItIsQuiet)
{
    const Ended ended = Program({"grab", "--frames", "2", "--quiet"}).run();
    EXPECT_EQ(0, ended.code);
    EXPECT_EQ("", ended.output + ended.errors);
}

TEST_F(Saving, StopsAfterADuration)
{
    const Ended ended = Program({"grab", "--duration", "1", "--json"}, {{"ZV_GRABBER_RATE", "0"}}).run();
    EXPECT_EQ(0, ended.code);
    EXPECT_EQ(0, ended.json()["requested"]);
    EXPECT_LT(0, ended.json()["delivered"]);
}

TEST_F(Saving, TellsLostFramesInItsOutcome)
{
    write_text(folder / "faults.yaml", "faults:\n  - {kind: frame-dropped, when: {frame: 3, every: 3}}\n");
    const std::string configuration = (folder / "faults.yaml").generic_u8string();
    for (const bool must_fail : {false, true}) {
        Words words{"grab", "--frames", "20", "--json"};
        if (must_fail)
            words.push_back("--fail-on-loss");
        const Ended ended =
            Program(words, {{"ZV_GRABBER_CONFIG", configuration}, {"ZV_GRABBER_RATE", "0"}}).run();
        EXPECT_EQ(must_fail ? 1 : 0, ended.code) << ended.errors;
        EXPECT_EQ("incomplete", ended.json()["outcome"]);
        EXPECT_LT(0, ended.json()["lost"]);
    }
}

} // namespace zvgentl::test
