#pragma once

#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "system/consumer/Surroundings.h"
#include "system/faults/Life.h"

namespace zvsystem {

/// A fault as it stands in the configuration file behind `kind:`, and the lines of a consumer's life that it
/// changes.
struct FaultRow {
    const char* fault;
    std::vector<std::string> answers;
    Mode mode{Mode::queued};
    Life::Frames frames{Life::Frames::come};
};

inline std::ostream& operator<<(std::ostream& out, const FaultRow& row) { return out << row.fault; }

std::vector<FaultRow> fault_rows();

/// The name of a test: letters and digits of the fault.
std::string name_of_row(const testing::TestParamInfo<FaultRow>& row);

} // namespace zvsystem
