#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace zvgenapi {

/// Changes texts at random; the same seed makes the same changes on every system.
class Mutator {
public:
    /// `pieces` are inserted as a whole: what means something in the kind of text that is tested.
    Mutator(unsigned int seed, std::vector<std::string_view> pieces);

    /// A number below the limit, which must not be 0.
    std::size_t below(std::size_t limit);

    /// One of these, which must not be empty.
    template <class Values>
    const auto& one_of(const Values& values)
    {
        return values[below(values.size())];
    }

    /// A text with a few changes: bytes, pieces, parts that are left out, repeated, or taken from another
    /// text.
    std::string mutate(const std::string& text, const std::string& other);

private:
    void change(std::string& text, const std::string& other);

    std::mt19937 m_random;
    std::vector<std::string_view> m_pieces;
};

} // namespace zvgenapi
