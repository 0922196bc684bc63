#pragma once

#include <cstdint>
#include <string>

namespace zvgenapi::differential {

/// How much was compared, so that a test can tell that it was not too little.
struct Comparison {
    std::size_t values{0};   ///< answers that both libraries gave
    std::size_t writes{0};   ///< that both libraries accepted
    std::size_t known{0};    ///< answers that may differ
    std::size_t failures{0}; ///< differences that the test has reported
};

/// Loads a description in both libraries over registers of the same random contents, compares what they say
/// about every node, writes the same random values to both, and compares again. Differences that are not in
/// the table of the known ones are failures of the test, with `title`, the node and the question.
Comparison compare(const std::string& description, std::uint32_t seed, const std::string& title);

} // namespace zvgenapi::differential
