#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "zvgenapi/Error.h"
#include "zvgenapi/Limits.h"
#include "zvgenapi/Node.h"
#include "zvgenapi/Port.h"
#include "zvgenapi/handles.h"
#include "zvgenapi/types.h"

namespace zvgenapi {

/// Ends a call-back when it is destroyed. From then on it is not started again; a call that another thread is
/// inside may still be running. Must not outlive its map.
class Subscription {
public:
    Subscription() = default;
    /// Used by the library only.
    Subscription(Core* core, std::uint64_t id) noexcept : m_core(core), m_id(id) {}
    ~Subscription();
    Subscription(Subscription&& other) noexcept;
    Subscription& operator=(Subscription&& other) noexcept;
    Subscription(const Subscription&) = delete;
    Subscription& operator=(const Subscription&) = delete;

private:
    Core* m_core{nullptr};
    std::uint64_t m_id{0};
};

/// The nodes of a device by its description. It owns everything that its handles show.
///
/// Threads: one map may be used from several threads. Each call takes the map's lock; ports are called under
/// it, call-backs after the outermost call has let go of it, in the thread of that call. Ports and call-backs
/// may use the map. Moving and destroying a map is for one thread alone.
class NodeMap {
public:
    /// Reads a description: XML, or a zip archive that holds one. Neither entities nor document types are
    /// used, and nothing else is read. Throws Error if the text is not a description, or exceeds the limits.
    /// Faults of single nodes, such as cycles, do not stop it: `problems` lists them, and the nodes answer
    /// with them.
    static NodeMap load(const void* bytes, std::size_t size, const Limits& limits = {});
    static NodeMap load(const std::string& bytes, const Limits& limits = {});

    ~NodeMap();
    NodeMap(NodeMap&& other) noexcept;
    NodeMap& operator=(NodeMap&& other) noexcept;
    NodeMap(const NodeMap&) = delete;
    NodeMap& operator=(const NodeMap&) = delete;

    /// Lets the port node of this name, "Device" as a rule, use `port`, which must outlive the map or the
    /// next connection. Throws unknown_node or wrong_type.
    void connect(const std::string& port_name, Port& port);
    /// Registers of the port are not available from now on.
    void disconnect(const std::string& port_name);

    /// The node of this name; an empty handle if there is none. "Std::Width" and "Cust::Width" name the name
    /// space; without it, the standard one is looked at first.
    Node find(const std::string& name) const;
    /// The same, but throws unknown_node with the nearest names.
    Node get(const std::string& name) const;
    /// The category called Root; an empty handle if there is none.
    Node root() const;
    /// All nodes, in the order of the description.
    std::size_t size() const noexcept;
    Node at(std::size_t index) const;

    const DeviceInfo& info() const noexcept;
    /// The faults that were found while loading: cycles, references that lead nowhere, names given twice.
    const std::vector<Error>& problems() const noexcept;

    /// Forgets what is known of all registers.
    void invalidate();
    /// To be called from time to time: nodes with a PollingTime whose time has come are read again at the
    /// next query.
    void poll(std::chrono::milliseconds elapsed);
    /// Calls `call_back` after every change that the node may show: of its value, its limits or its access
    /// mode, because this or another node was written, or was invalidated.
    [[nodiscard]] Subscription on_change(const Node& node, std::function<void(Node)> call_back);

private:
    explicit NodeMap(std::unique_ptr<Core> core) noexcept;

    std::unique_ptr<Core> m_core;
};

} // namespace zvgenapi
