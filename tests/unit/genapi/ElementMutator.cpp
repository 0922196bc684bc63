#include "unit/genapi/ElementMutator.h"

#include <algorithm>
#include <iterator>
#include <sstream>

namespace zvgenapi {

namespace {

constexpr std::size_t most_changes = 5;

constexpr std::string_view texts[] = {"0",
                                      "1",
                                      "-1",
                                      "8",
                                      "63",
                                      "64",
                                      "65536",
                                      "0x7FFFFFFFFFFFFFFF",
                                      "0xFFFFFFFFFFFFFFFF",
                                      "-9223372036854775808",
                                      "99999999999999999999",
                                      "1e300",
                                      "nan",
                                      "",
                                      "x",
                                      "Yes",
                                      "RO",
                                      "WO",
                                      "NoCache",
                                      "BigEndian",
                                      "Signed",
                                      "FROM",
                                      "1 / 0",
                                      "A ** A ** A",
                                      "TO &lt;&lt; 63"};

constexpr std::string_view tags[] = {
    "pValue",     "pMin",          "pMax",          "pInc",         "pIsLocked",
    "pAddress",   "pIndex",        "pLength",       "pIsAvailable", "pValueCopy",
    "pVariable",  "pInvalidator",  "pSelected",     "pPort",        "pIsImplemented",
    "pFeature",   "pValueDefault", "pValueIndexed", "pAlias",       "Value",
    "Address",    "Length",        "LSB",           "MSB",          "Min",
    "Max",        "Inc",           "Formula",       "FormulaTo",    "FormulaFrom",
    "Expression", "ValueIndexed",  "Bit",           "Sign",         "ImposedAccessMode",
    "Unknown",    "PollingTime",   "OnValue",       "CommandValue", "pCommandValue"};

} // namespace

ElementMutator::ElementMutator(unsigned int seed, const std::string& description) : m_mutator(seed, {})
{
    std::istringstream stream(description);
    for (std::string line; std::getline(stream, line); m_lines.push_back(line)) {
        const std::size_t name = line.find(" Name=\"");
        if (name != std::string::npos)
            m_names.push_back(line.substr(name + 7, line.find('"', name + 7) - name - 7));
        const std::size_t start = line.find('<');
        const std::size_t end = line.find("</");
        const std::size_t bracket = line.find('>');
        if (start == std::string::npos || end == std::string::npos || start == end || bracket > end)
            continue;
        const std::size_t tag_end = std::min(bracket, line.find(' ', start));
        m_elements.push_back(
            {m_lines.size(), line.substr(0, start), line.substr(start + 1, tag_end - start - 1),
             line.substr(tag_end, bracket - tag_end), line.substr(bracket + 1, end - bracket - 1)});
    }
}

std::string ElementMutator::mutate()
{
    std::vector<std::string> lines = m_lines;
    for (std::size_t i = m_mutator.below(most_changes) + 1; i > 0; --i) {
        const Element& element = m_mutator.one_of(m_elements);
        const std::string& source = m_lines[m_mutator.one_of(m_elements).line];
        switch (m_mutator.below(6)) {
        case 0:
            lines[element.line].clear();
            break;
        case 1:
            lines[element.line] += "\n" + lines[element.line];
            break;
        case 2:
            lines[element.line] += "\n" + source;
            break;
        default:
            lines[element.line] = changed(element);
            break;
        }
    }
    std::string text;
    for (const auto& line : lines)
        text += line + "\n";
    return text;
}

std::string ElementMutator::changed(Element element)
{
    switch (m_mutator.below(4)) {
    case 0:
        element.text = texts[m_mutator.below(std::size(texts))];
        break;
    case 1:
        element.text = m_mutator.one_of(m_names);
        break;
    case 2:
        element.tag = tags[m_mutator.below(std::size(tags))];
        break;
    default:
        element.tag = tags[m_mutator.below(std::size(tags))];
        element.text = m_mutator.one_of(m_names);
        break;
    }
    return element.indentation + "<" + element.tag + element.attributes + ">" + element.text + "</" +
           element.tag + ">";
}

} // namespace zvgenapi
