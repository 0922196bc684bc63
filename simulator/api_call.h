#pragma once

#include <exception>

#include "simulator/Log.h"
#include "simulator/faults/HookedCall.h"

// The frame around the body of every exported function.

namespace zvsim {

/// Runs the body of the exported function of this name. No exception leaves it: one is logged and turned into
/// the function's failure value.
template <class Result, class Body>
Result api_call(const char* function, Result failure, const Body& body) noexcept
{
    try {
        return body();
    } catch (const std::exception& problem) {
        log_failed_call(function, problem.what());
    } catch (...) {
        log_failed_call(function, "unknown exception");
    }
    return failure;
}

/// The same for a call that faults can happen to. Without faults and call log it costs one branch.
template <class Result, class Body>
Result api_call(const Call& call, Result failure, const Body& body) noexcept
{
    return api_call(row_of(call.function).name, failure, [&]() -> Result {
        if (!HookedCall::is_needed())
            return body();
        return HookedCall{call}.carry_out(failure, body);
    });
}

} // namespace zvsim
