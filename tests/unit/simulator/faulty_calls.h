#pragma once

#include <array>
#include <cstdint>
#include <ostream>

#include "zvgr/ZVGRLib.h"

// One good call of every exported function that answers a status.

namespace zvsim_test {

/// Everything that a call may be about, open and idle.
struct Situation {
    uint32_t grabber{ZV_NO_HANDLE};
    uint32_t camera{ZV_NO_HANDLE};
    uint32_t stream{ZV_NO_HANDLE};
    /// A cyclic-mode stream of the same camera.
    uint32_t ring{ZV_NO_HANDLE};
    uint64_t buffer{0};
};

/// Where a call writes its results to: filled with 0xEE, but for what it must find there.
struct Outputs {
    Outputs() { bytes.fill(0xEE); }
    bool are_untouched() const
    {
        std::array<unsigned char, 512> expected{};
        expected.fill(0xEE);
        return bytes == expected && size == asked;
    }

    std::array<unsigned char, 512> bytes;
    /// Of a register.
    uint32_t size{4};
    uint32_t asked{4};
};

struct StatusCall {
    const char* function;
    /// Of the fault that makes it fail.
    const char* kind;
    uint32_t (*call)(const Situation& situation, Outputs& outputs);
    /// How often a situation's making has called it.
    uint32_t calls_before;
    /// How often it has called any function of the kind.
    uint32_t calls_of_kind;
    /// Has output parameters.
    bool writes{false};
    /// Cannot be repeated once it has been carried out.
    bool ends_for_good{false};
};

extern const std::array<StatusCall, 26> status_calls;

inline std::ostream& operator<<(std::ostream& out, const StatusCall& call) { return out << call.function; }

} // namespace zvsim_test
