#include <gtest/gtest.h>

#include "support/Script.h"

using namespace zvtest;

namespace {

uint64_t answer(Script& script, const Call& made)
{
    const auto found = script.answer_for(made);
    return found ? found->value : 0;
}

} // namespace

TEST(Script, AnswersSingleCallsInOrderBeforeTheLastingAnswer)
{
    Script script;
    script.always("f").answers(5);
    script.nth("f", 4).answers(7);
    script.next("f").answers(1);
    script.next("f").answers(2);
    EXPECT_EQ(0U, answer(script, call("g")));
    for (const uint64_t expected : {1U, 2U, 5U, 7U, 5U})
        EXPECT_EQ(expected, answer(script, call("f")));
}

TEST(Script, CountsOnlyCallsThatSatisfyThePredicate)
{
    Script script;
    script.next("f").when([](const Call& made) { return made.arguments[0] == 2; }).answers(1);
    EXPECT_EQ(0U, answer(script, call("f", 1)));
    EXPECT_EQ(1U, answer(script, call("f", 2)));
}

TEST(Script, NamesSingleAnswersThatWereNeverAskedFor)
{
    Script script;
    script.always("lasting").answers(5);
    script.next("used").answers(1);
    script.nth("early", 2).answers(1);
    answer(script, call("used"));
    answer(script, call("early"));
    EXPECT_EQ(std::vector<std::string>{"early"}, script.unused());
}
