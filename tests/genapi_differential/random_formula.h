#pragma once

#include <string>
#include <vector>

#include "formula/Formula.h"
#include "genapi_differential/Choices.h"

namespace zvgenapi::differential {

/// A formula that uses some of the variables. It does nothing that the other library ends the process for or
/// leaves to chance: divisors are greater than 0, shifts and powers are small.
std::string random_formula(Choices& choices, formula::Arithmetic arithmetic,
                           const std::vector<std::string>& variables);

} // namespace zvgenapi::differential
