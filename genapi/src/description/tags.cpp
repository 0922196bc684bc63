#include "description/tags.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>

#include "zvgenapi/Error.h"

namespace zvgenapi {

namespace {

constexpr std::size_t most_attributes = 256;

struct Bracket {
    std::string_view start;
    std::string_view end;
};
// What may contain anything, and has no attributes.
constexpr Bracket brackets[] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}};

// Encodings in which ASCII stands for itself.
constexpr std::string_view encodings[] = {"utf-8", "us-ascii", "ascii", "iso-8859-", "windows-125"};

std::string lower_case(std::string_view text)
{
    std::string result(text);
    for (char& letter : result)
        letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    return result;
}

/// The value of encoding="..." in the first line; empty if there is none.
std::string declared_encoding(std::string_view xml)
{
    const std::string_view declaration =
        xml.substr(0, 5) == "<?xml" ? xml.substr(0, xml.find("?>")) : std::string_view();
    const std::size_t place = declaration.find("encoding");
    const std::size_t start = declaration.find_first_of("\"'", place);
    if (place == std::string_view::npos || start == std::string_view::npos)
        return {};
    return lower_case(
        declaration.substr(start + 1, declaration.find(declaration[start], start + 1) - start - 1));
}

void check_encoding(std::string_view xml)
{
    if (xml.substr(0, 3) == "\xEF\xBB\xBF")
        xml.remove_prefix(3);
    const std::string encoding = declared_encoding(xml);
    const bool is_known =
        encoding.empty() ||
        std::any_of(std::begin(encodings), std::end(encodings),
                    [&](std::string_view known) { return encoding.compare(0, known.size(), known) == 0; });
    const std::string_view begin = xml.substr(0, 4);
    if (!is_known || begin.find('\0') != std::string_view::npos || begin.substr(0, 2) == "\xFE\xFF" ||
        begin.substr(0, 2) == "\xFF\xFE" || begin.substr(0, 2) == "\x4C\x6F")
        throw Error(ErrorKind::description, "its encoding is not UTF-8, or one like it");
}

/// Where the tag at this place ends.
std::size_t end_of_tag(std::string_view xml, std::size_t place)
{
    std::size_t attributes = 0;
    char quote = '\0';
    for (; place < xml.size(); ++place) {
        const char letter = xml[place];
        if (quote != '\0') {
            quote = letter == quote ? '\0' : quote;
            continue;
        }
        if (letter == '"' || letter == '\'')
            quote = letter;
        else if (letter == '>')
            break;
        else if (letter == '=' && ++attributes > most_attributes)
            throw Error(ErrorKind::limit,
                        "an element has more than " + std::to_string(most_attributes) + " attributes", {},
                        static_cast<int>(1 + std::count(xml.begin(), xml.begin() + place, '\n')));
    }
    return place;
}

} // namespace

void check_tags(std::string_view xml)
{
    check_encoding(xml);
    for (std::size_t place = xml.find('<'); place != std::string_view::npos; place = xml.find('<', place)) {
        const std::string_view rest = xml.substr(place);
        const auto* const bracket =
            std::find_if(std::begin(brackets), std::end(brackets),
                         [&](const Bracket& one) { return rest.substr(0, one.start.size()) == one.start; });
        place = bracket == std::end(brackets) ? end_of_tag(xml, place)
                                              : xml.find(bracket->end, place + bracket->start.size());
        if (place == std::string_view::npos)
            return; // the parser says what is wrong
    }
}

} // namespace zvgenapi
