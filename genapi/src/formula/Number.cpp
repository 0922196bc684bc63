#include "formula/Number.h"

#include "formula/FormulaError.h"
#include "formula/arithmetic.h"

namespace zvgenapi::formula {

std::int64_t Number::to_integer() const
{
    if (m_is_integer)
        return m_integer;
    try {
        return checked_integer(*this);
    } catch (const NoResult& problem) {
        throw FormulaError(Fault::value, problem.reason);
    }
}

} // namespace zvgenapi::formula
