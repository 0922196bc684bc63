#pragma once

#include <string>

#include "nodes/Core.h"

namespace zvgenapi {

/// Throws an Error about a node; the line is that of the element, or of the node.
[[noreturn]] void fail(const Core& core, NodeIndex node, ErrorKind kind, const std::string& message,
                       const Element* element = nullptr);

/// A step towards an answer: the object exists for as long as a question about a node is being answered.
/// Throws where questions go round, or where they take too many steps.
class Step {
public:
    Step(Core& core, NodeIndex node, Aspect aspect);
    ~Step() { --m_core.query.depth; }
    Step(const Step&) = delete;
    Step& operator=(const Step&) = delete;

private:
    Core& m_core;
};

/// Counts work that takes as long as `count` elements or bytes to look at as steps of the query. Throws limit
/// if there are none left.
void take_steps(Core& core, NodeIndex node, std::size_t count);

/// What a reference leads to. Throws if it leads nowhere.
NodeIndex target_of(const Core& core, NodeIndex node, const Element& element);
/// The whole number that the element writes. Throws if it is none.
std::int64_t integer_in(const Core& core, NodeIndex node, const Element& element);
/// The number that the element writes.
double float_in(const Core& core, NodeIndex node, const Element& element);
/// The text of the first element with this tag; empty if there is none.
std::string_view text_in(const Core& core, NodeIndex node, Tag tag) noexcept;

/// The whole number nearest to a value. Throws if there is none.
std::int64_t nearest_integer(const Core& core, NodeIndex node, const Number& value);
/// The whole number that is left without the fraction. Throws if there is none.
std::int64_t whole_part(const Core& core, NodeIndex node, const Number& value);

bool is_register(NodeType type) noexcept;
/// Registers that are read as numbers.
bool is_number_register(NodeType type) noexcept;
InterfaceType interface_of(NodeType type) noexcept;

} // namespace zvgenapi
