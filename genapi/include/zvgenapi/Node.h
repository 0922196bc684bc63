#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "zvgenapi/types.h"

namespace zvgenapi {

class Core;

/// A handle to a node: copied freely, valid as long as its map. A default-made handle is empty; of an empty
/// one, only the comparison and `operator bool` may be used. Every function may be called from any thread,
/// and throws Error, or what the port throws. Functions that answer a property of the description (names,
/// texts, lists) never read the device.
class Node {
public:
    Node() = default;
    /// Used by the library only.
    Node(Core* core, std::uint32_t index) noexcept : m_core(core), m_index(index) {}

    explicit operator bool() const noexcept { return m_core != nullptr; }
    friend bool operator==(const Node& one, const Node& other) noexcept
    {
        return one.m_core == other.m_core && one.m_index == other.m_index;
    }
    friend bool operator!=(const Node& one, const Node& other) noexcept { return !(one == other); }

    /// The name, unique within its name space. That of an entry of an enumeration is
    /// EnumEntry_Enumeration_Entry.
    std::string name() const;
    /// The name with its name space: "Std::Width" or "Cust::Width".
    std::string full_name() const;
    NameSpace name_space() const;
    NodeType type() const;
    InterfaceType interface_type() const;
    /// Its position in the map, below NodeMap::size().
    std::size_t index() const noexcept { return m_index; }
    /// The line of the description that it starts in.
    int line() const;

    /// The text for users; the name, if the description has none.
    std::string display_name() const;
    std::string tool_tip() const;
    std::string description() const;
    std::string docu_url() const;
    /// ImposedVisibility, if it is given and more restrictive; Beginner if nothing is given.
    Visibility visibility() const;
    /// That of the registers which it reads: the least of them.
    Caching caching() const;
    /// Milliseconds after which its value should be read again; -1 if there is no such time.
    std::int64_t polling_time() const;
    /// Of an event that the device sends; empty for most nodes.
    std::string event_id() const;
    bool is_deprecated() const;
    /// Whether the category Root lists it, or a category below that.
    bool is_feature() const;
    /// Whether it belongs to the settings that are stored in files.
    bool is_streamable() const;

    /// Another node for the same; empty for most nodes.
    Node alias() const;
    Node cast_alias() const;
    /// The node that tells why a write failed; empty for most nodes.
    Node error_node() const;
    /// The nodes whose meaning this one chooses, and those that choose this one's.
    std::vector<Node> selected() const;
    std::vector<Node> selecting() const;
    /// The nodes whose change makes this one's value unknown.
    std::vector<Node> invalidators() const;
    /// The nodes that this one refers to, in the order of the description; each once. References that lead
    /// nowhere are left out.
    std::vector<Node> children() const;
    /// The contents of its Extension elements, as XML.
    std::vector<std::string> extensions() const;
    /// The text of its first element of this name, such as "Address"; nothing if there is none.
    std::optional<std::string> property(const std::string& element) const;
    /// The texts of all its elements of this name.
    std::vector<std::string> properties(const std::string& element) const;

    /// What may be done with it at the moment.
    AccessMode access() const;
    bool is_implemented() const { return access() != AccessMode::NI; }
    bool is_available() const { return access() > AccessMode::NA; }
    bool is_readable() const { return zvgenapi::is_readable(access()); }
    bool is_writable() const { return zvgenapi::is_writable(access()); }
    /// Whether it could be written if pIsLocked, of it or of a node that stores its value, were not true.
    bool is_locked() const;

    /// The value as text: a number as its representation wants it, true or false, an entry, a text, pairs of
    /// hexadecimal digits for a register.
    std::string to_string(UseCache use_cache = UseCache::yes) const;
    /// Writes a value from its text; hexadecimal numbers (0x) and addresses are understood.
    void from_string(const std::string& text, Verify verify = Verify::yes);

    /// Forgets what is known of the registers that the node reads.
    void invalidate();

    /// Whether the node can be used as a Handle, which is one of the classes of handles.h.
    template <class Handle>
    bool is() const
    {
        return m_core != nullptr && Handle::fits(*this);
    }
    /// The node as another handle; throws wrong_type if it does not have the interface.
    template <class Handle>
    Handle as() const
    {
        if (!is<Handle>())
            refuse_type(Handle::interface_name);
        return Handle(*this);
    }
    /// The node as another handle, or an empty one.
    template <class Handle>
    Handle try_as() const
    {
        return is<Handle>() ? Handle(*this) : Handle();
    }

protected:
    Core* m_core{nullptr};
    std::uint32_t m_index{0};

private:
    [[noreturn]] void refuse_type(const char* wanted) const;
};

} // namespace zvgenapi
