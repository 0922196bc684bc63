#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <arv.h>

#include "genapi/Feature.h"
#include "genapi/NodeGraph.h"
#include "gentl/Registers.h"

namespace zvgentl::tool {

struct ReleaseObject {
    void operator()(gpointer object) const noexcept { g_object_unref(object); }
};

/// Collects the failure of one call of the library.
class Failure {
public:
    Failure() = default;
    ~Failure() { g_clear_error(&m_error); }
    Failure(const Failure&) = delete;
    Failure& operator=(const Failure&) = delete;

    operator GError**() noexcept { return &m_error; }
    /// Throws std::runtime_error if the call failed.
    void check() const;
    /// The same, but a missing element of the description is not a failure. Whether the call succeeded.
    bool succeeded() const;

private:
    GError* m_error{nullptr};
};

/// The parser's nodes, and what the parser leaves to its user: whether a node can be evaluated at all, and
/// what may be done with it at the moment.
class Nodes {
public:
    Nodes(const std::string& description, const Registers& registers);

    const NodeGraph& graph() const noexcept { return m_graph; }

    /// A node that is safe to evaluate. Throws std::runtime_error if there is none, or it is not.
    ArvGcNode* usable(const std::string& name) const;
    FeatureKind kind(const std::string& name) const;
    Access access(const std::string& name) const;
    /// The value of a node as a whole number, whatever its kind.
    std::int64_t whole_number(const std::string& name) const;
    /// The names of the entries of an enumeration that can be chosen now.
    std::vector<std::string> available_entries(const std::string& enumeration) const;

private:
    void collect_references(const GraphNode& node);
    bool is_constant(const GraphNode& node) const;
    ArvGcNode* find(const std::string& name) const;
    void check_lengths(const GraphNode& node, std::set<const GraphNode*>& seen) const;
    void restrict_to(Access& access, const GraphNode& node) const;
    void apply_conditions(Access& access, const GraphNode& node) const;
    bool is_on(const GraphNode& node, const char* tag, bool otherwise) const;

    NodeGraph m_graph;
    std::map<std::string, std::string> m_unusable;
    std::set<std::string> m_referred; // nodes that the value of another one depends on
    bool m_has_variable_lengths{false};
    std::unique_ptr<ArvDevice, ReleaseObject> m_device; // the node map refers to it
    std::unique_ptr<ArvGc, ReleaseObject> m_map;
};

} // namespace zvgentl::tool
