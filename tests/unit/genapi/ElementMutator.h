#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "unit/genapi/Mutator.h"

namespace zvgenapi {

/// Changes the innermost elements of a description, one of which is in each line, so that it stays
/// well-formed XML.
class ElementMutator {
public:
    ElementMutator(unsigned int seed, const std::string& description);

    /// The description with a few changes: texts, names of elements, references to other nodes, elements that
    /// are left out, repeated or moved.
    std::string mutate();

private:
    /// An innermost element of a line.
    struct Element {
        std::size_t line;
        std::string indentation;
        std::string tag;
        std::string attributes;
        std::string text;
    };

    std::string changed(Element element);

    Mutator m_mutator;
    std::vector<std::string> m_lines;
    std::vector<Element> m_elements;
    std::vector<std::string> m_names; ///< of nodes
};

} // namespace zvgenapi
