#pragma once

#include <iterator>
#include <string>

// The templates of the register descriptions, as the build embeds them. What stands between two @ depends on
// the model.

namespace zvsim {

std::string camera_template();
std::string grabber_template();

} // namespace zvsim
