#include "api/producer_info.h"

#include <string>

#include "GenTL/GenTL.h"

#include "platform/process.h"

namespace zvgentl {

using namespace GenTL;

namespace {

/// "6.3.3", composed from the version's numbers.
std::string producer_version()
{
    constexpr int major = 6;
    constexpr int minor = 3;
    constexpr int patch = 3;
    return std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(patch);
}

/// The full path of the file that this library was loaded from, or a fixed text when the system does not know
/// it.
std::string producer_path()
{
    return platform::module_path().value_or("<installdir>/Common/Bin/ZVGRLibGenTL.cti");
}

constexpr InfoRow<> producer_info[] = {
    {TL_INFO_ID, [] { return InfoValue::string("GenTL_1.5"); }},
    {TL_INFO_VENDOR, [] { return InfoValue::string(producer_vendor); }},
    {TL_INFO_MODEL, [] { return InfoValue::string(producer_model); }},
    {TL_INFO_VERSION, [] { return InfoValue::string(producer_version()); }},
    {TL_INFO_TLTYPE, [] { return InfoValue::string(TLTypeMixedName); }},
    {TL_INFO_NAME, [] { return InfoValue::string("ZVGRLibGenTL.cti"); }},
    {TL_INFO_PATHNAME, [] { return InfoValue::string(producer_path()); }},
    {TL_INFO_DISPLAYNAME, [] { return InfoValue::string("ZEVA Electronics GenTL Producer"); }},
    {TL_INFO_CHAR_ENCODING, [] { return InfoValue::int32(TL_CHAR_ENCODING_ASCII); }},
};

} // namespace

const InfoRow<>* find_producer_info(int32_t command) noexcept { return find_row(producer_info, command); }

} // namespace zvgentl
