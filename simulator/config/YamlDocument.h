#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zvsim {

/// What is wrong with a text: lines such as "grabbers.yaml:12: ...; allowed: ...". The first ones are kept,
/// the others are counted.
class YamlErrors {
public:
    static constexpr size_t most = 20;

    explicit YamlErrors(std::string file) : m_file{std::move(file)} {}

    /// `line` counts from 1; 0: the file as a whole. `allowed` may be empty.
    void add(int line, const std::string& wrong, const std::string& allowed = {});
    size_t count() const { return m_count; }
    bool is_empty() const { return m_count == 0; }
    /// The kept ones, and a last line that says how many more there are.
    std::vector<std::string> lines() const;

private:
    std::string m_file;
    std::vector<std::string> m_lines;
    size_t m_count{0};
};

/// One value of the text.
struct YamlNode {
    enum class Kind { nothing, scalar, list, map };

    Kind kind{Kind::nothing};
    bool is_quoted{false};
    int line{0};
    /// Values in it and itself, aliases followed.
    size_t size{1};
    /// Of a scalar.
    std::string text;
    /// Of a list.
    std::vector<const YamlNode*> items;
    /// Of a map; keys are scalars, each once.
    std::vector<std::pair<const YamlNode*, const YamlNode*>> entries;
};

/// The values of one text. Immutable.
class YamlDocument {
public:
    static constexpr size_t largest_text = size_t{1} << 20U;
    static constexpr size_t most_values = 100000;
    static constexpr size_t deepest = 32;

    /// Reports into `errors` what is not valid YAML, or exceeds a limit; the root is then nothing.
    YamlDocument(std::string_view text, YamlErrors& errors);
    YamlDocument(const YamlDocument&) = delete;
    YamlDocument& operator=(const YamlDocument&) = delete;

    const YamlNode& root() const { return *m_root; }

private:
    friend class YamlTreeBuilder;

    std::deque<YamlNode> m_nodes;
    const YamlNode* m_root;
};

/// A text for a message: in quotes, shortened, and without characters that would spoil a log line.
std::string in_quotes(std::string_view text);

} // namespace zvsim
