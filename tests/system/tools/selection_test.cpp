#include <gmock/gmock.h>

#include "Program.h"

#include "platform/environment.h"

// Devices by their names, in all producers.

namespace zvgentl::test {

namespace fs = std::filesystem;

namespace {

std::string device_of(Program& program)
{
    const Ended ended = program.run();
    EXPECT_EQ(0, ended.code) << ended.errors;
    return ended.json()["device"];
}

/// The variable with several folders.
std::string list_of(const std::vector<fs::path>& folders)
{
    std::string list;
    for (const auto& folder : folders)
        list += folder.u8string() + platform::path_list_separator;
    return list;
}

const fs::path own_folder = fs::path(PRODUCER_FILE).parent_path();

} // namespace

TEST(Names, MayHaveLettersOfOtherCase)
{
    for (const Words& words :
         {Words{"--device", "device10"}, Words{"--device", "shs2048-0003"}, Words{"--interface", "fg1"},
          Words{"--interface", "fg1", "--device", "DEVICE10"}}) {
        Words all{"grab", "--frames", "1", "--json"};
        all.insert(all.end(), words.begin(), words.end());
        Program program(all);
        EXPECT_EQ("Device10", device_of(program));
    }
}

TEST(SeveralProducers, AreAllSearched)
{
    const TemporaryFolder folder;
    write_text(folder / "broken.cti", "not a library");
    Program program({"grab", "--frames", "1", "--json", "--device", "Device10"});
    program.with("GENICAM_GENTL64_PATH", list_of({folder.path(), own_folder}));
    EXPECT_EQ("Device10", device_of(program));
    Program missing({"grab", "--device", "Device99"});
    const Ended ended = missing.with("GENICAM_GENTL64_PATH", list_of({folder.path(), own_folder})).run();
    EXPECT_EQ(1, ended.code);
    EXPECT_THAT(ended.errors, HasSubstr("none of 2 producers has Device99"));
    EXPECT_THAT(ended.errors, HasSubstr("broken.cti"));
    EXPECT_THAT(ended.errors, HasSubstr("FG1/Device10"));
}

TEST(SeveralProducers, AreAskedForWhenMoreThanOneHasTheDevice)
{
    const TemporaryFolder folder;
    for (const auto& entry : fs::directory_iterator(own_folder)) {
        const auto name = entry.path().filename().u8string();
        const std::string ending = entry.path().extension().u8string();
        if (name == "ZVGRLibGenTL.cti" || ending == ".so" || ending == ".dll")
            fs::copy_file(entry.path(), folder.path() / entry.path().filename());
    }
    Program program({"grab", "--device", "Device10"});
    const Ended ended = program.with("GENICAM_GENTL64_PATH", list_of({folder.path(), own_folder})).run();
    EXPECT_EQ(1, ended.code);
    EXPECT_THAT(ended.errors, HasSubstr("more than one producer has Device10; choose one with --cti:"));
}

TEST(AProducer, IsNamedWithTheLibraryThatItMisses)
{
    const TemporaryFolder folder;
    fs::copy_file(PRODUCER_FILE, folder / "alone.cti");
    const Ended ended = Program({"list", "--cti", (folder / "alone.cti").u8string()}).run();
    EXPECT_EQ(1, ended.code);
    EXPECT_THAT(ended.errors, testing::ContainsRegex("needs.* is missing"));
#ifndef _WIN32 // which does not tell the name
    EXPECT_THAT(ended.errors,
                testing::ContainsRegex("the library libZV[A-Za-z]*.so, which it needs, is missing"));
#endif
}

} // namespace zvgentl::test
