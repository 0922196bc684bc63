#include <gmock/gmock.h>

#include "Program.h"

// Software grabbers that are not what somebody configured.

namespace zvgentl::test {

namespace {

/// What is wrong, and what every command says about it.
struct Mistake {
    const char* variable;
    std::string value;
    std::string says;
    std::size_t interfaces;
};

/// Runs a command with a mistake in its environment.
Ended run_with(const Mistake& mistake, const Words& words)
{
    return Program(words, {{mistake.variable, mistake.value}}).run();
}

class WrongConfiguration : public testing::Test {
protected:
    std::vector<Mistake> mistakes() const
    {
        write_text(folder / "wrong.yaml", "grabbers:\n  - protocol: CXP\n");
        write_text(folder / "pictures" / "text.png", "not a picture");
        write_text(folder / "pictures.yaml",
                   "grabbers:\n  - cameras:\n      - pictures: " + name("missing") + "\n");
        return {
            {"ZV_GRABBER_CONFIG", name("wrong.yaml"),
             name("wrong.yaml") + ":2: protocol is \"CXP\"; allowed: CoaXPress", 0},
            {"ZV_GRABBER_CONFIG", name("missing.yaml"), name("missing.yaml") + ": cannot be found", 0},
            {"ZV_GRABBER_CONFIG", "relative.yaml", "ZV_GRABBER_CONFIG must be an absolute path", 0},
            {"ZV_GRABBER_CONFIG", name("pictures.yaml"), name("missing"), 1},
            {"ZV_GRABBER_PICTURES", name("pictures"), name("pictures"), 2},
            {"ZV_GRABBER_RATE", "fast", "ZV_GRABBER_RATE=fast is ignored; allowed: 0", 2},
            {"ZV_GRABBER_SIZE", "640", "ZV_GRABBER_SIZE=640 is ignored; allowed: WIDTHxHEIGHT", 2},
        };
    }
    std::string name(const char* file) const { return (folder / file).generic_u8string(); }

    TemporaryFolder folder;
};

} // namespace

TEST_F(WrongConfiguration, IsWhatListSaysBesideWhatThereIs)
{
    for (const auto& mistake : mistakes()) {
        const Ended ended = run_with(mistake, {"list", "--json"});
        EXPECT_EQ(1, ended.code) << mistake.says;
        const auto producer = ended.json()["producers"][0];
        EXPECT_THAT(producer["report"], HasSubstr(mistake.says));
        EXPECT_EQ(mistake.interfaces, producer["interfaces"].size()) << mistake.says;
        EXPECT_THAT(run_with(mistake, {"list"}).errors, HasSubstr(mistake.says));
    }
}

TEST_F(WrongConfiguration, IsWhyOtherCommandsDoNotBegin)
{
    for (const auto& mistake : mistakes())
        for (const Words& words : {Words{"grab", "--frames", "1"}, Words{"xml"}}) {
            const Ended ended = run_with(mistake, words);
            EXPECT_EQ(1, ended.code) << mistake.says;
            EXPECT_THAT(ended.errors, HasSubstr(mistake.says));
        }
}

TEST_F(WrongConfiguration, IsReportedWithoutALogToo)
{
    Program program({"list"}, {{"ZV_GRABBER_RATE", "fast"}});
#ifndef _WIN32
    program.with("HOME", "/no/such/folder").with("XDG_STATE_HOME", "").with("XDG_CONFIG_HOME", "");
#endif
    const Ended ended = program.run();
    EXPECT_EQ(1, ended.code);
    EXPECT_THAT(ended.errors, HasSubstr("ZV_GRABBER_RATE=fast"));
}

TEST(Log, IsNamedUnderAFailure)
{
    Program program({"xml", "--device", "Device99"});
    program.with("ZV_LOGGER_CONFIG", "");
    const std::string log = "The log may tell more: " + program.folder().path().u8string();
    const Ended ended = program.run();
    EXPECT_EQ(1, ended.code);
    EXPECT_THAT(ended.errors, HasSubstr(log));
    EXPECT_THAT(ended.errors, HasSubstr("zvgentl.log"));
}

TEST(Log, IsWhereItsConfigurationSays)
{
    Program program({"xml", "--device", "Device99"});
    EXPECT_THAT(program.run().errors, HasSubstr("logger.properties says where it is"));
}

} // namespace zvgentl::test
