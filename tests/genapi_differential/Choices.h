#pragma once

#include <cstddef>
#include <cstdint>
#include <random>

namespace zvgenapi::differential {

/// Random choices that the same seed repeats on every system.
class Choices {
public:
    explicit Choices(std::uint32_t seed) : m_random(seed) {}

    /// A number below the limit, which must not be 0.
    std::size_t below(std::size_t limit) { return m_random() % limit; }
    /// True that many times of a hundred.
    bool percent(std::size_t share) { return below(100) < share; }
    std::uint64_t bits() { return std::uint64_t{m_random()} << 32U | m_random(); }
    /// Both limits included.
    std::int64_t between(std::int64_t low, std::int64_t high)
    {
        const std::uint64_t span = static_cast<std::uint64_t>(high) - static_cast<std::uint64_t>(low) + 1;
        return static_cast<std::int64_t>(static_cast<std::uint64_t>(low) +
                                         (span == 0 ? bits() : bits() % span));
    }
    /// One of an array or a vector, which must not be empty.
    template <class Values>
    auto& one_of(Values& values)
    {
        return values[below(std::size(values))];
    }

private:
    std::mt19937 m_random;
};

} // namespace zvgenapi::differential
