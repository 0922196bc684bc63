#pragma once

#include <string>
#include <vector>

#include "system/consumer/Functions.h"
#include "system/consumer/Surroundings.h"

namespace zvsystem {

/// Whether the acquisition will end, so that the consumer can wait for that.
enum class Frames { come, never_come };

/// The whole life of a consumer, from the scan to the end, or as far as it gets. What the producer answers at
/// each step becomes a line such as
///     IFOpenDevice: -1005 "IFOpenDevice - ..."
///     IFGetNumDevices: 0, 2
/// with the code, the last-error text if the step failed, and the value. The lines are the same in every run:
/// nothing in them depends on time. Fails the running test if memory beyond a buffer is touched.
std::vector<std::string> live(const Functions& gentl, Mode mode, Frames frames);

} // namespace zvsystem
