#include "api/producer_info.h"

#include "platform/module_path.h"

namespace zvgentl {

std::string producer_version()
{
    constexpr int major = 6;
    constexpr int minor = 3;
    constexpr int patch = 3;
    return std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(patch);
}

std::string producer_path()
{
    return platform::module_path().value_or("<installdir>/Common/Bin/ZVGRLibGenTL.cti");
}

} // namespace zvgentl
