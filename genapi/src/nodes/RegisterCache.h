#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "description/Description.h"

namespace zvgenapi {

/// Where a register is at the moment.
struct Location {
    NodeIndex port{no_node};
    std::uint64_t address{0};
    std::uint64_t length{0}; // at least 1; the register ends before the last address

    friend bool operator==(const Location& one, const Location& other) noexcept
    {
        return one.port == other.port && one.address == other.address && one.length == other.length;
    }
    bool overlaps(const Location& other) const noexcept
    {
        return port == other.port && address <= other.address + (other.length - 1) &&
               other.address <= address + (length - 1);
    }
};

/// What is known of the contents of registers, by node. Bytes count only for the location that they were read
/// from.
class RegisterCache {
public:
    RegisterCache(std::size_t nodes, std::uint64_t most_bytes) : m_slots(nodes, 0), m_bytes_left(most_bytes)
    {
    }

    /// The bytes of the node's register; null if they are not known.
    const std::string* find(NodeIndex node, const Location& location) const noexcept;
    void put(NodeIndex node, const Location& location, const std::string& bytes);
    /// Whether there was something to forget.
    bool forget(NodeIndex node) noexcept;
    /// Forgets all that overlaps with the location, and appends the nodes to `forgotten`.
    void forget_overlapping(const Location& location, std::vector<NodeIndex>& forgotten);
    void clear() noexcept;
    /// The nodes that something is known of.
    std::vector<NodeIndex> nodes() const;

private:
    struct Entry {
        NodeIndex node;
        Location location;
        std::string bytes;
    };

    std::vector<std::uint32_t> m_slots; // by node: the position of its entry behind 1, or 0
    std::vector<Entry> m_entries;
    std::uint64_t m_bytes_left;
};

} // namespace zvgenapi
