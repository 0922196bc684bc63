#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "description/Tag.h"
#include "description/TextArena.h"
#include "zvgenapi/Error.h"
#include "zvgenapi/types.h"

namespace zvgenapi {

/// The position of a node in Description::nodes.
using NodeIndex = std::uint32_t;
constexpr NodeIndex no_node = std::numeric_limits<NodeIndex>::max();

/// An element of a node as it is written.
struct Element {
    Tag tag{Tag::unknown};
    std::uint32_t line{0};
    NodeIndex target{no_node}; ///< of a reference; no_node if it leads nowhere
    std::string_view name;     ///< its attribute Name, or Index
    std::string_view text;
};

/// Elements that stand one after the other.
class Elements {
public:
    Elements() = default;
    Elements(const Element* first, const Element* last) noexcept : m_first(first), m_last(last) {}
    const Element* begin() const noexcept { return m_first; }
    const Element* end() const noexcept { return m_last; }
    std::size_t size() const noexcept { return static_cast<std::size_t>(m_last - m_first); }

private:
    const Element* m_first{nullptr};
    const Element* m_last{nullptr};
};

/// A node as it is written. An entry of a structure has the elements of the structure, too, after its own.
struct NodeText {
    NodeType type{NodeType::node};
    NameSpace name_space{NameSpace::custom};
    std::int8_t merge_priority{0};
    bool is_feature{false}; ///< reached from the category Root
    std::uint32_t line{0};
    NodeIndex owner{no_node}; ///< the enumeration of an entry, the register of a formula in its address
    std::uint32_t first{0};   ///< of its elements
    std::uint32_t last{0};    ///< behind its elements
    std::string_view name;
    std::string_view symbolic; ///< of an entry of an enumeration
};

/// What is asked about a node. Limits may depend on the value of a node whose limits depend on this one's
/// value: only a circle through the same question has no end.
enum class Aspect : std::uint8_t { value, limits, access };
constexpr std::size_t aspect_count = 3;

/// A description: what is written there, with references resolved. It never changes once it was read.
struct Description {
    DeviceInfo info;
    std::vector<NodeText> nodes;
    std::vector<Element> elements;
    std::unordered_map<std::string_view, NodeIndex> standard_names;
    std::unordered_map<std::string_view, NodeIndex> custom_names;
    std::vector<Error> problems;
    /// For every node and aspect, 0, or the position of the problem behind 1; empty if nothing goes round.
    std::vector<std::uint32_t> cycles;
    TextArena texts;

    /// The elements of a node, in the order of the description.
    Elements of(NodeIndex node) const noexcept;
    /// The first element of a node with this tag, or null.
    const Element* find(NodeIndex node, Tag tag) const noexcept;
    /// Throws the problem, if answering the question leads back to itself.
    void check_cycle(NodeIndex node, Aspect aspect) const
    {
        if (!cycles.empty() && cycles[node * aspect_count + static_cast<std::size_t>(aspect)] != 0)
            refuse_cycle(node, aspect);
    }
    [[noreturn]] void refuse_cycle(NodeIndex node, Aspect aspect) const;
    /// The node of this name, with a name space or without; no_node if there is none.
    NodeIndex find(std::string_view name) const noexcept;
};

/// Numbers as descriptions write them: decimal, or hexadecimal (0x) with up to 64 bits; nothing for another
/// text.
std::optional<std::int64_t> parse_integer(std::string_view text) noexcept;
/// The same for numbers with a fraction or an exponent, and for INF and NaN.
std::optional<double> parse_float(std::string_view text) noexcept;
/// Yes, true and 1; No, false and 0.
std::optional<bool> parse_yes_no(std::string_view text) noexcept;
/// Without the white space at both ends.
std::string_view trimmed(std::string_view text) noexcept;

} // namespace zvgenapi
