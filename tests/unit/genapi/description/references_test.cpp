#include <string>
#include <vector>

#include "unit/genapi/support.h"

namespace zvgenapi::test {

namespace {

std::vector<std::string> problems_of(const std::string& nodes)
{
    std::vector<std::string> texts;
    const NodeMap map = NodeMap::load(description_of(nodes));
    for (const Error& problem : map.problems())
        texts.push_back(std::string(error_kind_name(problem.kind())) + ": " + problem.what());
    return texts;
}

/// What the value, the maximum and the access mode of A fail with.
std::vector<std::string> kinds_of(const std::string& nodes)
{
    const Device device(nodes);
    const Integer a = device.integer("A");
    return {kind_of_error([&] { a.value(); }), kind_of_error([&] { a.maximum(); }),
            kind_of_error([&] { a.access(); })};
}

} // namespace

TEST(References, ThatLeadNowhereAreToldAndFailWhereTheyAreNeeded)
{
    EXPECT_THAT(
        problems_of(integer("A", "<pValue>B</pValue>")),
        ElementsAre("description: A (line 3): it refers to B, which the description does not contain"));
    EXPECT_THAT(
        problems_of(node("Category", "Root", "\n<pFeature>Gone</pFeature>")),
        ElementsAre("description: Root (line 4): it refers to Gone, which the description does not contain"));
    const auto sound = "no error";
    const auto faulty = "description";
    EXPECT_THAT(kinds_of(integer("A", "<pValue>B</pValue>")), ElementsAre(faulty, faulty, faulty));
    EXPECT_THAT(kinds_of(integer("A", "<Value>1</Value><pMax>B</pMax>")), ElementsAre(sound, faulty, sound));
    EXPECT_THAT(kinds_of(integer("A", "<Value>1</Value><pIsAvailable>B</pIsAvailable>")),
                ElementsAre(faulty, sound, faulty));
    EXPECT_THAT(kinds_of(integer("A", "<Value>1</Value><pSelected>B</pSelected><pInvalidator>B</pInvalidator>"
                                      "<pAlias>B</pAlias><pError>B</pError>")),
                ElementsAre(sound, sound, sound));
}

TEST(References, ThatGoRoundAreFoundAtOnceAndNamed)
{
    EXPECT_THAT(problems_of(integer("A", "<pValue>A</pValue>")),
                testing::Contains(HasSubstr("cycle: A (line 3): it depends on itself: A -> A")));
    const std::string three = integer("A", "<pValue>B</pValue>") + integer("B", "<pValue>C</pValue>") +
                              integer("C", "<pValue>A</pValue>");
    EXPECT_THAT(problems_of(three), testing::Contains(HasSubstr("A -> B -> C -> A")));
    EXPECT_THAT(kinds_of(three), ElementsAre("cycle", "cycle", "cycle"));
    const Device device(three);
    EXPECT_THAT(error_of([&] { device.number("B"); }).second, StartsWith("B (line "));
}

TEST(References, MayGoRoundInEveryWayThatHasAnEnd)
{
    const std::vector<std::string> sound{
        // limits that depend on values whose limits depend on this one's
        integer("A", "<Value>1</Value><pMax>M</pMax>") + formula("M", variable("X", "B"), "10 - X") +
            integer("B", "<Value>2</Value><pMax>N</pMax>") + formula("N", variable("X", "A"), "10 - X"),
        integer("A", "<Value>1</Value><pIsLocked>A</pIsLocked>"),
        integer("A", "<Value>1</Value><pSelected>B</pSelected>") +
            integer("B", "<Value>1</Value><pSelected>A</pSelected>"),
        integer("A", "<Value>1</Value><pInvalidator>B</pInvalidator>") +
            integer("B", "<Value>1</Value><pInvalidator>A</pInvalidator>"),
        integer("A", "<Value>1</Value>") +
            node("Category", "C", "<pFeature>C</pFeature><pFeature>A</pFeature>"),
    };
    for (const std::string& nodes : sound) {
        EXPECT_THAT(problems_of(nodes), IsEmpty()) << nodes;
        EXPECT_THAT(kinds_of(nodes), ElementsAre("no error", "no error", "no error")) << nodes;
    }
}

TEST(References, GoRoundThroughEveryElementThatValuesNeed)
{
    const auto reg_with = [](const std::string& content) {
        return node("IntReg", "A", content + "<AccessMode>RW</AccessMode><pPort>Device</pPort>");
    };
    const std::vector<std::string> faulty{
        reg_with("<pAddress>A</pAddress><Length>4</Length>"),
        reg_with("<Address>0</Address><pLength>A</pLength>"),
        reg_with("<Address>0</Address><pIndex Offset=\"4\">A</pIndex><Length>4</Length>"),
        reg_with("<Address>0</Address><pIndex pOffset=\"A\">B</pIndex><Length>4</Length>") +
            integer("B", "<Value>1</Value>"),
        reg_with("<IntSwissKnife>" + variable("X", "A") +
                 "<Formula>X</Formula></IntSwissKnife><Length>4</Length>"),
        integer("A", "<pIndex>A</pIndex><ValueIndexed Index=\"0\">1</ValueIndexed>"),
        integer("A", "<pIndex>B</pIndex><pValueIndexed Index=\"0\">A</pValueIndexed>") +
            integer("B", "<Value>1</Value>"),
        integer("A", "<pIndex>B</pIndex><pValueDefault>A</pValueDefault>") + integer("B", "<Value>1</Value>"),
        integer("A", "<pValue>K</pValue>") + formula("K", variable("X", "A"), "X"),
        integer("A", "<pValue>K</pValue>") +
            node("IntConverter", "K",
                 "<FormulaFrom>TO</FormulaFrom><FormulaTo>FROM</FormulaTo><pValue>A</pValue>"),
        integer("A", "<pValue>K</pValue><pMax>K</pMax>") + formula("K", variable("X.Max", "A"), "X.Max"),
    };
    for (const std::string& nodes : faulty)
        EXPECT_EQ("cycle", kinds_of(nodes).front()) << nodes;
    EXPECT_THAT(kinds_of(integer("A", "<Value>1</Value><pMax>B</pMax>") +
                         formula("B", variable("X.Max", "A"), "X.Max")),
                ElementsAre("no error", "cycle", "no error"));
}

TEST(References, OfOtherNodesAreNotHarmedByThoseThatGoRound)
{
    const Device device(integer("A", "<pValue>A</pValue>") + integer("B", "<Value>3</Value>") +
                        integer("C", "<pValue>A</pValue>"));
    EXPECT_EQ(3, device.number("B"));
    EXPECT_THAT(error_of([&] { device.number("C"); }), testing::Pair("cycle", HasSubstr("A -> A")));
}

TEST(References, AreFollowedInLongChainsAndWideCirclesWithoutTheStack)
{
    std::string chain;
    for (int i = 0; i < 50000; ++i)
        chain +=
            integer("N" + std::to_string(i), "<pValue>N" + std::to_string((i + 1) % 50000) + "</pValue>");
    const NodeMap map = NodeMap::load(description_of(chain));
    ASSERT_EQ(3U, map.problems().size()) << "one for each question: value, limits, access";
    EXPECT_THAT(map.problems().front().what(), HasSubstr(" -> ..."));
}

TEST(Names, ThatAreGivenTwiceAreTold)
{
    const std::string twice = integer("A", "<Value>1</Value>") + integer("A", "<Value>2</Value>");
    EXPECT_THAT(problems_of(twice), ElementsAre("description: A (line 4): the name is used in line 3, too"));
    EXPECT_EQ(1, Device(twice).number("A")) << "the first one counts";
    EXPECT_THAT(problems_of("<Integer/>"), ElementsAre("description: line 3: a node has no name"));
}

TEST(Names, OfMergedDescriptionsFollowTheirPriority)
{
    const std::string merged = "<Integer Name=\"A\" MergePriority=\"-1\"><Value>1</Value></Integer>"
                               "<Integer Name=\"A\" MergePriority=\"1\"><Value>2</Value></Integer>"
                               "<Integer Name=\"A\" MergePriority=\"0\"><Value>3</Value></Integer>";
    EXPECT_THAT(problems_of(merged), IsEmpty());
    EXPECT_EQ(2, Device(merged).number("A"));
}

TEST(Names, HaveTwoSpaces)
{
    const Device device("<Integer Name=\"A\" NameSpace=\"Custom\"><Value>1</Value></Integer>"
                        "<Integer Name=\"A\" NameSpace=\"Standard\"><Value>2</Value></Integer>" +
                        integer("B", "<pValue>Cust::A</pValue>"));
    EXPECT_EQ(1, device.number("Cust::A"));
    EXPECT_EQ(2, device.number("Std::A"));
    EXPECT_EQ(2, device.number("A")) << "the standard one is looked at first";
    EXPECT_EQ(1, device.number("B"));
    EXPECT_EQ("Std::A", device.map.get("A").full_name());
    EXPECT_EQ("Cust::B", device.map.get("B").full_name());
    EXPECT_FALSE(device.map.find("Std::B"));
}

} // namespace zvgenapi::test
