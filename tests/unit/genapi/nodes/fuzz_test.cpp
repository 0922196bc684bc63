#include <string>

#include "unit/genapi/ElementMutator.h"
#include "unit/genapi/support.h"
#include "unit/genapi/try_description.h"

namespace zvgenapi::test {

namespace {

/// A small description with a node of every kind.
std::string small_description()
{
    return description_of(
        reg("R", "8") + integer("A", "<pValue>R</pValue><Max>100</Max>") +
        integer("B", "<Value>1</Value><pMax>K</pMax><pIsLocked>C</pIsLocked>") +
        integer("C", "<Value>0</Value>") +
        formula("K", variable("X", "A") + variable("Y.Max", "A"), "X + Y.Max") +
        node("Enumeration", "E", "<EnumEntry Name=\"One\"><Value>1</Value></EnumEntry><pValue>M</pValue>") +
        node("MaskedIntReg", "M", place("4", 4) + "<LSB>1</LSB><MSB>5</MSB>") +
        node("Converter", "V",
             "<FormulaTo>FROM * 2</FormulaTo><FormulaFrom>TO / 2</FormulaFrom><pValue>F</pValue>") +
        node("FloatReg", "F", place("16", 4)) + node("StringReg", "S", place("32", 8)) +
        node("String", "T", "<pValue>S</pValue>") + node("Boolean", "O", "<pValue>R</pValue>") +
        node("Command", "D", "<pValue>R</pValue><CommandValue>1</CommandValue>") + "<StructReg>" +
        place("64", 4) + "<StructEntry Name=\"P\"><Bit>3</Bit></StructEntry></StructReg>" +
        integer(
            "I",
            "<pIndex>C</pIndex><pValueIndexed Index=\"0\">A</pValueIndexed><ValueDefault>3</ValueDefault>") +
        node("Register", "G",
             "<IntSwissKnife>" + variable("X", "C") + "<Formula>X * 4</Formula></IntSwissKnife>" +
                 place("128", 4)) +
        node("Category", "Root", "<pFeature>A</pFeature>") + "<Port Name=\"Device\"/>");
}

/// The same with every element in a line of its own.
std::string in_lines(std::string text)
{
    for (std::size_t at = text.find("><"); at != std::string::npos; at = text.find("><", at))
        text.insert(at + 1, "\n");
    return text;
}

} // namespace

TEST(NodeFuzz, EveryKindOfNodeAnswersOrRefuses)
{
    ASSERT_TRUE(try_description(small_description()));
    ElementMutator mutator(2025, in_lines(small_description()));
    int descriptions = 0;
    for (int i = 0; i < 600; ++i)
        descriptions += try_description(mutator.mutate()) ? 1 : 0;
    EXPECT_LT(300, descriptions);
}

} // namespace zvgenapi::test
