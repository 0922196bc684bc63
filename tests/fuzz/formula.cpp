#include <cstddef>
#include <cstdint>
#include <string>

#include "unit/genapi/formula/try_formula.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    zvgenapi::formula::try_formula(text, zvgenapi::formula::Arithmetic::integer);
    zvgenapi::formula::try_formula(text, zvgenapi::formula::Arithmetic::floating);
    return 0;
}
