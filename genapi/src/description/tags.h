#pragma once

#include <string_view>

namespace zvgenapi {

/// Looks at a text before the XML parser gets it: the parser compares every attribute of a tag with all
/// others, so that a tag with a million of them would take it hours. Throws Error: limit for a tag with too
/// many attributes, description for an encoding in which tags could not be seen.
void check_tags(std::string_view xml);

} // namespace zvgenapi
