#pragma once

#include "nodes/Core.h"

namespace zvgenapi {

/// The value of a SwissKnife, or of one of a converter's formulas; `input` is what the variable FROM, of
/// FormulaTo, or TO, of FormulaFrom, stands for. Throws Error (formula, ...).
Number evaluate(Core& core, NodeIndex node, Tag formula, const Number& input = {});

} // namespace zvgenapi
