#include "modules/settings.h"

#include <tuple>

#include "zvlog/ZVSettings.h"

namespace zvgentl {

uint32_t read(const PlainSetting& setting)
{
    return ZVSettings::InitInteger(zv_feature_integer, setting.key, setting.default_value,
                                   setting.description);
}

std::optional<uint32_t> read(const OverrideSetting& setting)
{
    constexpr uint32_t unset = 0xFFFFFFFF;
    uint32_t value = unset;
    // The value says whether the key was stored.
    std::ignore =
        ZVSettings::Get(zv_scope_machine, zv_feature_integer, setting.key, value, unset, true, nullptr);
    return value == unset ? std::nullopt : std::optional(value);
}

} // namespace zvgentl
