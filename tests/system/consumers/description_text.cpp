#include "system/consumers/description_text.h"

#include <cstddef>
#include <vector>

#include "system/consumers/client.h"

namespace zvclient {

namespace {

constexpr std::size_t npos = std::string::npos;

/// The text of a tag that begins at a place, without its brackets; comments and declarations are tags too.
std::string tag_at(const std::string& text, std::size_t begin)
{
    const bool is_comment = text.compare(begin, 4, "<!--") == 0;
    const std::size_t end = is_comment ? text.find("-->", begin) : text.find('>', begin);
    need_true(end != npos, "the description ends within a tag");
    return text.substr(begin + 1, end + (is_comment ? 2 : 0) - begin - 1);
}

std::string first_word(const std::string& tag) { return tag.substr(0, tag.find_first_of(" \t\r\n/")); }

} // namespace

void need_whole_description(const std::string& text)
{
    need_true(text.compare(0, 5, "<?xml") == 0, "the description is no XML");
    std::vector<std::string> open;
    std::string root;
    for (std::size_t at = text.find('<'); at != npos; at = text.find('<', at + 1)) {
        const std::string tag = tag_at(text, at);
        at += tag.size();
        need_true(!tag.empty(), "the description has a tag without a name");
        if (tag.front() == '?' || tag.front() == '!')
            continue;
        if (tag.front() == '/') {
            need_true(!open.empty() && open.back() == tag.substr(1), "the description closes " + tag);
            open.pop_back();
            continue;
        }
        need_true(!open.empty() || root.empty(), "the description has two roots");
        if (open.empty())
            root = first_word(tag);
        if (tag.back() != '/')
            open.push_back(first_word(tag));
    }
    need_true(open.empty(), "the description does not close " + (open.empty() ? "" : open.back()));
    need_true(root == "RegisterDescription", "the description is a " + root);
}

std::string property_of(const std::string& text, const std::string& node, const std::string& property)
{
    const std::size_t name = text.find(" Name=\"" + node + '"');
    if (name == npos)
        return "";
    const std::size_t kind = text.rfind('<', name) + 1;
    const std::size_t end = text.find("</" + text.substr(kind, name - kind) + '>', name);
    const std::string opening = '<' + property + '>';
    const std::size_t begin = text.find(opening, name);
    if (begin == npos || begin > end)
        return "";
    const std::size_t value = begin + opening.size();
    return text.substr(value, text.find('<', value) - value);
}

} // namespace zvclient
