#include <cstddef>
#include <cstdint>
#include <string>

#include "unit/genapi/try_description.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    zvgenapi::try_description(std::string(reinterpret_cast<const char*>(data), size));
    return 0;
}
