#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "Program.h"

namespace zvgentl::test {

namespace {

class InterruptedGrab : public testing::TestWithParam<std::tuple<std::string, Interruption>> {
protected:
    static std::string mode() { return std::get<0>(GetParam()); }
    static const Interruption& way() { return std::get<1>(GetParam()); }
};

} // namespace

TEST_P(InterruptedGrab, SavesWhatArrivedAndTakesItsSettingsAway)
{
    const Folder folder;
    const FileWatch watch(folder.path());
    Program program(
        {"grab", "--mode", mode(), "--frames", "0", "--output", folder.path().string(), "--json"});
    program.start();
    watch.wait_for("frame_000003.png");
    program.interrupt(way());
    const Ended ended = program.wait();
    EXPECT_EQ(130, ended.code) << ended.errors;
    const auto summary = ended.json();
    EXPECT_EQ("interrupted", summary["outcome"]);
    EXPECT_LE(4, summary["delivered"]);
    EXPECT_EQ(summary["delivered"], summary["saved"]["files"]);
    EXPECT_EQ(summary["saved"]["files"], count_files(folder.path()))
        << "every file is complete, none is left over";
    EXPECT_EQ(0, summary["checksums"]["damaged"]);
    EXPECT_TRUE(program.left_nothing_temporary());
}

TEST_P(InterruptedGrab, NeedNotWaitForAFrame)
{
    const Folder folder;
    const FileWatch watch(folder.path());
    Program program({"grab", "--mode", mode(), "--frames", "0", "--timeout", "3600000", "--output",
                     folder.path().string(), "--json"});
    program.with("ZV_GRABBER_RATE", "0.001"); // the second frame would come after a quarter of an hour
    program.start();
    watch.wait_for("frame_000000.png");
    program.interrupt(way());
    const Ended ended = program.wait();
    EXPECT_EQ(130, ended.code) << ended.errors;
    EXPECT_EQ(1, ended.json()["delivered"]);
    EXPECT_TRUE(program.left_nothing_temporary());
}

INSTANTIATE_TEST_SUITE_P(Ways, InterruptedGrab,
                         testing::Combine(testing::Values("queued", "cyclic"),
                                          testing::ValuesIn(interruptions)),
                         [](const auto& way) {
                             return std::get<0>(way.param) + std::get<1>(way.param).name;
                         });

} // namespace zvgentl::test
