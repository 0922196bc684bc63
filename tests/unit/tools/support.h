#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "zvgentl/CommandLine.h"

namespace zvgentl::test {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// What an action throws; "no error" when it does not.
inline std::string error_of(const std::function<void()>& action)
{
    try {
        action();
    } catch (const std::exception& reason) {
        return reason.what();
    }
    return "no error";
}

/// What a run of the whole program, in this process, left behind.
struct Ended {
    int code;
    std::string output;
    std::string errors;
};

inline Ended run_program_with(std::vector<const char*> words)
{
    words.insert(words.begin(), "zvgentl");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int code = tool::run_program(static_cast<int>(words.size()), words.data());
    const std::string output = testing::internal::GetCapturedStdout();
    return {code, output, testing::internal::GetCapturedStderr()};
}

} // namespace zvgentl::test
