#include "simulator/config/YamlDocument.h"

#include <algorithm>
#include <map>
#include <sstream>

#include <yaml-cpp/eventhandler.h>
#include <yaml-cpp/exceptions.h>
#include <yaml-cpp/mark.h>
#include <yaml-cpp/parser.h>

namespace zvsim {

namespace {

/// Why a text is not read any further.
struct Refusal {
    int line;
    std::string wrong;
    std::string allowed;
};

int line_of(const YAML::Mark& mark) { return mark.is_null() ? 0 : mark.line + 1; }

bool is_control(char character)
{
    const auto code = static_cast<unsigned char>(character);
    return (code < 0x20 && character != '\t' && character != '\n' && character != '\r') || code == 0x7F;
}

} // namespace

void YamlErrors::add(int line, const std::string& wrong, const std::string& allowed)
{
    const std::string place = line > 0 ? m_file + ":" + std::to_string(line) : m_file;
    std::string text = place + ": " + wrong;
    if (!allowed.empty())
        text += (wrong.back() == '?' ? " Allowed: " : "; allowed: ") + allowed;
    // What an alias repeats is read more than once.
    if (std::find(m_lines.begin(), m_lines.end(), text) != m_lines.end())
        return;
    if (m_count++ < most)
        m_lines.push_back(std::move(text));
}

std::vector<std::string> YamlErrors::lines() const
{
    std::vector<std::string> lines = m_lines;
    if (m_count > most)
        lines.push_back(m_file + ": " + std::to_string(m_count - most) + " more errors");
    return lines;
}

/// Builds the tree from the parser's events. What yaml-cpp would build itself has neither the limits nor a
/// check for repeated keys.
class YamlTreeBuilder : public YAML::EventHandler {
public:
    explicit YamlTreeBuilder(YamlDocument& document) : m_document{document} {}

    void OnDocumentStart(const YAML::Mark& mark) override
    {
        if (m_has_document)
            throw Refusal{line_of(mark), "a second document begins here", "one document per file"};
        m_has_document = true;
    }
    void OnDocumentEnd() override {}

    void OnNull(const YAML::Mark& mark, YAML::anchor_t anchor) override
    {
        YamlNode& node = make(YamlNode::Kind::nothing, mark, anchor);
        if (!m_open.empty() && m_open.back().key != nullptr)
            node.line = m_open.back().key->line; // the mark is where the parser saw that nothing comes
        place(node);
    }
    void OnScalar(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor,
                  const std::string& value) override
    {
        refuse_tag(mark, tag);
        YamlNode& node = make(YamlNode::Kind::scalar, mark, anchor);
        node.text = value;
        node.is_quoted = tag == "!";
        place(node);
    }
    void OnAlias(const YAML::Mark& mark, YAML::anchor_t anchor) override
    {
        const YamlNode& node = *m_anchors.at(anchor);
        const auto is_same = [&node](const Open& open) { return open.node == &node; };
        if (std::any_of(m_open.begin(), m_open.end(), is_same))
            throw Refusal{line_of(mark), "a value contains itself", "an alias of a complete value"};
        place(node);
    }

    void OnSequenceStart(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor,
                         YAML::EmitterStyle::value /*style*/) override
    {
        refuse_tag(mark, tag);
        open(make(YamlNode::Kind::list, mark, anchor));
    }
    void OnSequenceEnd() override { close(); }
    void OnMapStart(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor,
                    YAML::EmitterStyle::value /*style*/) override
    {
        refuse_tag(mark, tag);
        open(make(YamlNode::Kind::map, mark, anchor));
    }
    void OnMapEnd() override { close(); }

private:
    struct Open {
        YamlNode* node;
        const YamlNode* key;
    };

    static void refuse_tag(const YAML::Mark& mark, const std::string& tag)
    {
        if (!tag.empty() && tag != "?" && tag != "!")
            throw Refusal{line_of(mark), "a value has the tag " + in_quotes(tag), "values without tags"};
    }

    YamlNode& make(YamlNode::Kind kind, const YAML::Mark& mark, YAML::anchor_t anchor)
    {
        YamlNode& node = m_document.m_nodes.emplace_back();
        node.kind = kind;
        node.line = line_of(mark);
        if (anchor != 0)
            m_anchors[anchor] = &node;
        return node;
    }

    void open(YamlNode& node)
    {
        if (m_open.size() == YamlDocument::deepest)
            throw Refusal{node.line, "values are nested too deeply",
                          "up to " + std::to_string(YamlDocument::deepest) + " levels"};
        m_open.push_back({&node, nullptr});
    }

    void close()
    {
        const YamlNode& node = *m_open.back().node;
        m_open.pop_back();
        place(node);
    }

    void place(const YamlNode& node)
    {
        if (m_open.empty()) {
            m_document.m_root = &node;
            return;
        }
        Open& parent = m_open.back();
        // Aliases count as what they refer to: a few lines can expand to billions of values.
        parent.node->size += node.size;
        if (parent.node->size > YamlDocument::most_values)
            throw Refusal{node.line, "there are too many values",
                          "up to " + std::to_string(YamlDocument::most_values) + ", with aliases expanded"};
        if (parent.node->kind == YamlNode::Kind::list)
            parent.node->items.push_back(&node);
        else if (parent.key == nullptr)
            parent.key = &checked_key(*parent.node, node);
        else
            parent.node->entries.emplace_back(std::exchange(parent.key, nullptr), &node);
    }

    const YamlNode& checked_key(const YamlNode& map, const YamlNode& key) const
    {
        if (key.kind != YamlNode::Kind::scalar)
            throw Refusal{key.line > 0 ? key.line : map.line, "a key is not a text",
                          "keys that are single words"};
        // Keys of a map are few: a map with more of them than a section knows is refused here.
        if (map.entries.size() == most_keys)
            throw Refusal{key.line, "a section has too many keys", "up to " + std::to_string(most_keys)};
        for (const auto& entry : map.entries) {
            if (entry.first->text == key.text)
                throw Refusal{key.line,
                              "the key " + in_quotes(key.text) + " is already used on line " +
                                  std::to_string(entry.first->line),
                              "each key once"};
        }
        return key;
    }

    static constexpr size_t most_keys = 100;

    YamlDocument& m_document;
    std::vector<Open> m_open;
    std::map<YAML::anchor_t, const YamlNode*> m_anchors;
    bool m_has_document{false};
};

namespace {

/// Control characters have no place in a text, and some would end it early without a message.
void refuse_binary(std::string_view text)
{
    if (text.size() > YamlDocument::largest_text)
        throw Refusal{0, "the file is larger than 1 MiB", "up to 1 MiB"};
    const auto* const found = std::find_if(text.begin(), text.end(), is_control);
    if (found == text.end())
        return;
    const auto line = static_cast<int>(std::count(text.begin(), found, '\n')) + 1;
    throw Refusal{line,
                  "character " + std::to_string(int{static_cast<unsigned char>(*found)}) + " is not text",
                  "YAML in UTF-8"};
}

} // namespace

YamlDocument::YamlDocument(std::string_view text, YamlErrors& errors)
{
    try {
        m_root = &m_nodes.emplace_back();
        refuse_binary(text);
        std::istringstream stream{std::string{text}};
        YAML::Parser parser{stream};
        YamlTreeBuilder builder{*this};
        while (parser.HandleNextDocument(builder)) {
        }
        return;
    } catch (const Refusal& refusal) {
        errors.add(refusal.line, refusal.wrong, refusal.allowed);
    } catch (const YAML::Exception& problem) {
        errors.add(line_of(problem.mark), "not valid YAML: " + problem.msg);
    }
    m_root = &m_nodes.emplace_back();
}

std::string in_quotes(std::string_view text)
{
    constexpr size_t longest = 80;
    constexpr const char* digits = "0123456789ABCDEF";
    std::string result{'"'};
    for (const char character : text.substr(0, longest)) {
        const auto code = static_cast<unsigned char>(character);
        if (code >= 0x20 && code < 0x7F)
            result += character;
        else
            result.append("\\x").append(1, digits[code >> 4U]).append(1, digits[code & 15U]);
    }
    return result + (text.size() > longest ? "...\"" : "\"");
}

} // namespace zvsim
