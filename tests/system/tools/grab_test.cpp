#include <optional>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>

#include "zvgr/FrameStamp.h"

#include "Program.h"
#include "unit/tools/read_picture.h"

namespace zvgentl::test {

namespace fs = std::filesystem;
using tool::Picture;

namespace {

constexpr const char* as_fast_as_possible = "0";
constexpr const char* nearly_none = "0.001"; // a second frame would come after a quarter of an hour

fs::path frame_file(const fs::path& folder, std::uint64_t number, const std::string& format)
{
    const std::string digits = std::to_string(number);
    return folder / ("frame_" + std::string(6 - digits.size(), '0') + digits + "." + format);
}

/// Saved pictures have the stamps of intact frames, each of a later one than the picture before.
void expect_intact_pictures(const fs::path& folder, std::uint64_t frames, const std::string& format,
                            unsigned bits)
{
    std::optional<std::uint64_t> last;
    for (std::uint64_t i = 0; i < frames; ++i) {
        const fs::path file = frame_file(folder, i, format);
        const Picture picture = format == "png" ? read_png(file) : read_tiff(file);
        EXPECT_EQ(bits, picture.bits) << file;
        const auto stamp = zvgr::read_stamp(picture.samples.data(), picture.samples.size());
        ASSERT_TRUE(stamp && stamp->checksum_ok) << file;
        EXPECT_TRUE(!last || stamp->counter > *last) << file;
        last = stamp->counter;
    }
}

Words grab_words(const std::string& mode, const Words& options)
{
    Words words{"grab", "--mode", mode, "--json"};
    words.insert(words.end(), options.begin(), options.end());
    return words;
}

class Grab : public testing::TestWithParam<const char*> {
protected:
    static Program grab(const Words& options, const char* rate = as_fast_as_possible)
    {
        return Program{grab_words(GetParam(), options), {{"ZV_GRABBER_RATE", rate}}};
    }
    static bool is_queued() { return GetParam() == std::string("queued"); }

    TemporaryFolder folder;
};

class InterruptedGrab : public testing::TestWithParam<std::tuple<std::string, Interruption>> {
protected:
    /// Interrupts a grab without end once this file is there.
    Ended grab_until(const char* file, const char* rate)
    {
        program.with("ZV_GRABBER_RATE", rate).start();
        while (!fs::exists(folder / file)) // it gets its name when it is complete
            std::this_thread::yield();
        program.interrupt(std::get<1>(GetParam()));
        return program.wait();
    }

    static int exit_code()
    {
        const std::string name = std::get<1>(GetParam()).name;
        return name == "Term" ? 143 : name == "Hup" ? 129 : 130;
    }

    TemporaryFolder folder;
    Program program{grab_words(std::get<0>(GetParam()), {"--frames", "0", "--timeout", "3600000", "--output",
                                                         folder.path().string()})};
};

} // namespace

TEST_P(Grab, DeliversTheFramesThatWereAskedFor)
{
    auto program = grab({"--frames", "200", "--buffers", "4"});
    const Ended ended = program.run();
    ASSERT_EQ(0, ended.code) << ended.output << ended.errors;
    const auto summary = ended.json();
    EXPECT_EQ(summary["lost"] == 0 ? "complete" : "incomplete", summary["outcome"]);
    EXPECT_EQ(GetParam(), summary["mode"]);
    EXPECT_EQ("FG0", summary["interface"]);
    EXPECT_EQ("Device00", summary["device"]);
    EXPECT_EQ(200, summary["delivered"]);
    EXPECT_EQ(200, summary["checksums"]["found"]);
    EXPECT_EQ(0, summary["checksums"]["damaged"]);
    EXPECT_EQ(0, summary["repeated"]);
    EXPECT_TRUE(summary["lost"].is_number());
    if (is_queued()) {
        EXPECT_EQ(0, summary["lost"]) << "the camera waits for buffers";
    }
    EXPECT_EQ(is_queued() ? "frame ids" : "frame counter", summary["lost_from"]);
    EXPECT_EQ("", ended.errors) << "no progress bar without a terminal";
    EXPECT_TRUE(program.left_nothing_temporary());
}

TEST_P(Grab, SavesFramesBitForBit)
{
    const struct {
        const char* device;
        const char* format;
        const char* pixels;
        unsigned bits;
    } rows[] = {{"Device10", "png", "Mono8", 8}, {"SCX800-0002", "tiff", "Mono16", 16}};
    for (const auto& row : rows) {
        const fs::path pictures = folder / row.format;
        const Ended ended = grab({"--frames", "10", "--device", row.device, "--output", pictures.string(),
                                  "--format", row.format})
                                .run();
        ASSERT_EQ(0, ended.code) << ended.output << ended.errors;
        EXPECT_EQ(row.pixels, ended.json()["picture"]["pixel_format"]);
        EXPECT_EQ(10, ended.json()["saved"]["files"]);
        EXPECT_EQ(10U, count_files(pictures));
        expect_intact_pictures(pictures, 10, row.format, row.bits);
    }
}

TEST_P(Grab, SavesInAFolderOfAnyName)
{
    const std::string any = (folder.path() / fs::u8path(u8"Bilder f\u00fcr \u0416")).u8string();
    for (const char* const format : {"png", "tiff"}) {
        const Ended ended = grab({"--frames", "2", "--output", any, "--format", format, "--append"}).run();
        ASSERT_EQ(0, ended.code) << ended.output << ended.errors;
        EXPECT_EQ(any, ended.json()["saved"]["folder"]);
    }
    EXPECT_EQ(4U, count_files(fs::u8path(any)));
}

TEST_P(Grab, LeavesTheUsersSettingsAloneButFollowsThem)
{
    auto program = grab({"--frames", "1", "--interface", "FG2"});
    const std::string settings = std::string("GenTL.Interface.ExposeDemoGrabber = 1\n") +
                                 "GenTL.Stream.QueuedBufferMode-Overwrite = " + (is_queued() ? "0" : "1") +
                                 "\n";
    write_text(program.folder() / "settings.properties", settings);
    const Ended ended = program.run();
    ASSERT_EQ(0, ended.code) << ended.output << ended.errors;
    EXPECT_EQ("FG2", ended.json()["interface"]);
    EXPECT_EQ(settings, read_text(program.folder() / "settings.properties"));
}

TEST_P(Grab, FailsWhenNoFrameComesInTime)
{
    auto program = grab({"--frames", "5", "--timeout", "50"}, nearly_none);
    const Ended ended = program.run();
    EXPECT_EQ(1, ended.code);
    EXPECT_EQ("timed out", ended.json()["outcome"]);
    EXPECT_GT(5, ended.json()["delivered"]);
    EXPECT_TRUE(program.left_nothing_temporary());
}

TEST_P(Grab, ShowsItsProgressOnlyOnATerminal)
{
    const Ended ended = grab({"--frames", "20"}).on_terminal().run();
    ASSERT_EQ(0, ended.code) << ended.errors;
    EXPECT_THAT(ended.errors, HasSubstr("1/20 frames"));
    EXPECT_EQ(20, ended.json()["delivered"]) << "the summary stays readable";
}

INSTANTIATE_TEST_SUITE_P(Modes, Grab, testing::Values("queued", "cyclic"),
                         [](const auto& name) { return std::string(name.param); });

TEST_P(InterruptedGrab, SavesWhatArrivedAndRemovesItsSettings)
{
    const Ended ended = grab_until("frame_000003.png", "");
    EXPECT_EQ(exit_code(), ended.code) << ended.errors;
    const auto summary = ended.json();
    EXPECT_EQ("interrupted", summary["outcome"]);
    EXPECT_LE(4, summary["delivered"]);
    EXPECT_EQ(summary["delivered"], summary["saved"]["files"]);
    EXPECT_EQ(summary["saved"]["files"], count_files(folder.path())) << "all of them complete, and no others";
    EXPECT_EQ(0, summary["checksums"]["damaged"]);
    EXPECT_TRUE(program.left_nothing_temporary());
}

TEST_P(InterruptedGrab, NeedNotWaitForAFrame)
{
    const Ended ended = grab_until("frame_000000.png", nearly_none);
    EXPECT_EQ(exit_code(), ended.code) << ended.errors;
    EXPECT_EQ(1, ended.json()["delivered"]);
    EXPECT_TRUE(program.left_nothing_temporary());
}

INSTANTIATE_TEST_SUITE_P(Ways, InterruptedGrab,
                         testing::Combine(testing::Values("queued", "cyclic"),
                                          testing::ValuesIn(interruptions)),
                         [](const auto& way) {
                             return std::get<0>(way.param) + std::get<1>(way.param).name;
                         });

TEST(GrabSelection, SaysWhatThereIsWhenTheDeviceIsNot)
{
    Program program({"grab", "--device", "Device99"});
    const Ended ended = program.run();
    EXPECT_EQ(1, ended.code);
    EXPECT_THAT(ended.errors, HasSubstr("FG0/Device00, FG0/Device01, FG1/Device10"));
    EXPECT_TRUE(program.left_nothing_temporary());
}

TEST(GrabSelection, RefusesFewerBuffersThanTheStreamNeeds)
{
    const Ended ended = Program({"grab", "--buffers", "3"}).run();
    EXPECT_EQ(1, ended.code);
    EXPECT_THAT(ended.errors, HasSubstr("at least 4"));
}

} // namespace zvgentl::test
