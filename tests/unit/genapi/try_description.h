#pragma once

#include <string>

namespace zvgenapi {

/// Loads bytes of any kind as a description, with small limits, asks every node everything, writes to it, and
/// asks again. Error is a good answer; anything else that is thrown reaches the caller. Returns whether it
/// could be loaded.
bool try_description(const std::string& bytes);

} // namespace zvgenapi
