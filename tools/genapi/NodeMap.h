#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "genapi/Feature.h"
#include "genapi/details.h"
#include "gentl/Registers.h"

namespace zvgentl::tool {

/// The features of a port, according to its description. Nothing is cached: every answer is the device's
/// current one. All functions throw std::runtime_error that says what to do, or why the port refused. One
/// thread.
class NodeMap {
public:
    /// `registers` must live as long as the object.
    NodeMap(const std::string& description, const Registers& registers);
    ~NodeMap();
    NodeMap(const NodeMap&) = delete;
    NodeMap& operator=(const NodeMap&) = delete;

    /// The categories and features below a category, in the description's order.
    std::vector<TreeEntry> tree(const std::string& category = "Root") const;

    /// Everything about a feature. What cannot be read is left out, and Feature::problem says why.
    Feature describe(const std::string& name) const;

    /// The same, with what only a description of one feature shows. Throws if there is no such feature.
    FeatureDetails details(const std::string& name) const;

    Value get(const std::string& name) const;
    /// The same as `zvgentl` writes it.
    std::string get_text(const std::string& name) const;

    /// Writes a value after checking it against access, limits and entries.
    void set(const std::string& name, const std::string& text) const;

    /// Executes a command and waits until the device says that it is done.
    void execute(const std::string& name, std::chrono::milliseconds timeout) const;

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace zvgentl::tool
