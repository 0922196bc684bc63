#pragma once

#include <string>

// The little that a consumer without a parser makes sure of in a register description.

namespace zvclient {

/// Ends the client unless the text is one whole register description: every element closed where it must be.
void need_whole_description(const std::string& text);

/// What the description says of a node ("Address" of "WidthRegister"), the first of them; empty when it says
/// nothing, or when there is no such node.
std::string property_of(const std::string& text, const std::string& node, const std::string& property);

} // namespace zvclient
