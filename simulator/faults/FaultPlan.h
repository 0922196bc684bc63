/// \file FaultPlan.h
/// What goes wrong on purpose, and when. Plain values, made once by the configuration.
#pragma once

namespace zvsim {

struct FaultPlan {};

} // namespace zvsim
