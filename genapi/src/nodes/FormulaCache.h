#pragma once

#include <unordered_map>
#include <utility>
#include <vector>

#include "description/Description.h"
#include "description/cycles.h"
#include "formula/Formula.h"

namespace zvgenapi {

/// A formula that was compiled, and what its variables stand for.
struct CompiledFormula {
    struct Bound {
        const Element* element; // a pVariable; null: FROM or TO
        Variable variable;
    };
    formula::Formula formula;
    std::vector<Bound> variables; // by the index that the formula knows them by
};

/// Formulas are compiled when they are first used.
using FormulaCache = std::unordered_map<const Element*, CompiledFormula>;

} // namespace zvgenapi
