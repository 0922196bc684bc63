/// \file faulty_calls.h
/// One good call of every exported function that answers a status.
#pragma once

#include "zvgr/ZVGRLib.h"

#include <array>
#include <cstdint>
#include <ostream>

namespace zvsim_test {

/// Everything that a call may be about, open and idle.
struct Situation {
    uint32_t grabber = ZV_NO_HANDLE;
    uint32_t camera = ZV_NO_HANDLE;
    uint32_t stream = ZV_NO_HANDLE;
    uint32_t ring = ZV_NO_HANDLE; ///< A cyclic-mode stream of the same camera.
    uint64_t buffer = 0;
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
    uint32_t size = 4; ///< Of a register.
    uint32_t asked = 4;
};

struct StatusCall {
    const char* function;
    const char* kind; ///< Of the fault that makes it fail.
    uint32_t (*call)(const Situation& situation, Outputs& outputs);
    uint32_t calls_before;      ///< How often a situation's making has called it.
    uint32_t calls_of_kind;     ///< How often it has called any function of the kind.
    bool writes = false;        ///< Has output parameters.
    bool ends_for_good = false; ///< Cannot be repeated once it has been carried out.
};

extern const std::array<StatusCall, 26> status_calls;

inline std::ostream& operator<<(std::ostream& out, const StatusCall& call) { return out << call.function; }

} // namespace zvsim_test
