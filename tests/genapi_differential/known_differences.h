#pragma once

#include "genapi_differential/Subject.h"
#include "zvgenapi/handles.h"

namespace zvgenapi::differential {

/// Why the answers of the two libraries to a question about a node may differ. A null pointer if they may
/// not.
const char* reason_for_difference(const Node& node, Question question, const Answer& ours,
                                  const Answer& theirs);

/// The same for what was written: whether it was accepted, and the registers afterwards.
const char* reason_for_difference(const Node& node, const Setting& setting, const Answer& ours,
                                  const Answer& theirs);

} // namespace zvgenapi::differential
