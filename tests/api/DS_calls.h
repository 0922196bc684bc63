#pragma once

#include <array>
#include <iosfwd>
#include <string>
#include <vector>

#include "support/fixtures.h"

// The functions of the stream family as one table, for what all of them have in common.

namespace zvtest {

/// Everything that a function of the family could write. What was written shows against the pattern.
class StreamOutputs {
public:
    StreamOutputs();
    bool are_untouched() const;

    BUFFER_HANDLE buffer{untouched<BUFFER_HANDLE>()};
    DEV_HANDLE device{untouched<DEV_HANDLE>()};
    void* memory{untouched<void*>()};
    void* user{untouched<void*>()};
    uint32_t parts{untouched<uint32_t>()};
    INFO_DATATYPE type{untouched<INFO_DATATYPE>()};
    std::array<uint8_t, 16> value;
    size_t size{16};
    size_t chunks{untouched<size_t>()};
};

/// One function, called with arguments that would do, and the line that it enters with.
struct StreamFunction {
    const char* name;
    Priority traffic; // of enter and exit lines
    GC_ERROR (*call)(DS_HANDLE stream, BUFFER_HANDLE buffer, StreamOutputs& out);
    std::string (*enter)(DS_HANDLE stream, BUFFER_HANDLE buffer, const StreamOutputs& out);
};

std::ostream& operator<<(std::ostream& out, const StreamFunction& function);

/// The whole family.
extern const std::vector<StreamFunction> stream_functions;
/// Those that check their stream handle: all but DSGetBufferChunkData.
std::vector<StreamFunction> stream_checking_functions();

/// A test's name for a row: the function's.
template <class ParamInfo>
std::string name_of_function(const ParamInfo& info)
{
    return info.param.name;
}

} // namespace zvtest
