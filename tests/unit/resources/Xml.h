#pragma once

#include <string>
#include <vector>

// A register description in plain texts, so that a test can compare it as a whole.

namespace zvtest {

/// The elements and comments below the root, one line each, two blanks deeper than their parent:
/// `Category Name="Root": text`. Fails the test when the text is not well-formed.
std::vector<std::string> outline_of(const std::string& xml);

/// The declaration and the tag of the root, with one blank for all white space in a row.
std::string head_of(const std::string& xml);
/// The same as both descriptions have it.
std::string expected_head(const std::string& model, const std::string& tool_tip);

/// A file of the repository, byte for byte.
std::string resource(const std::string& name);

} // namespace zvtest
