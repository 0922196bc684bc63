#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "description/Description.h"
#include "description/references.h"
#include "zvgenapi/Node.h"

namespace zvgenapi {

/// Who wants to be told of changes of which nodes.
class CallBacks {
public:
    using Function = std::function<void(Node)>;
    struct Entry {
        NodeIndex node;
        Function function;
    };

    std::uint64_t add(NodeIndex node, Function function);
    void remove(std::uint64_t id) noexcept { m_entries.erase(id); }
    bool is_empty() const noexcept { return m_entries.empty(); }
    /// The entry with this number, unless it was removed.
    std::optional<Entry> find(std::uint64_t id) const;

    /// Those that a change of these nodes, or of what depends on them, is of interest to.
    std::vector<std::uint64_t> interested(const Description& description,
                                          const std::vector<NodeIndex>& changed);

private:
    std::uint64_t m_last_id{0};
    std::map<std::uint64_t, Entry> m_entries;
    ReverseReferences m_dependents; // made when the first call-back is added
    bool m_has_dependents{false};
};

} // namespace zvgenapi
