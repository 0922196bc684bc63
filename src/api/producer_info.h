#pragma once

#include <string>

#include "GenTL/GenTL.h"

#include "api/InfoTable.h"
#include "platform/process.h"

namespace zvgentl {

/// "6.3.3", composed from the version's numbers.
inline std::string producer_version()
{
    constexpr int major = 6;
    constexpr int minor = 3;
    constexpr int patch = 3;
    return std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(patch);
}

/// The full path of the file that this library was loaded from, or a fixed text when the system does not know
/// it.
inline std::string producer_path()
{
    return platform::module_path().value_or("<installdir>/Common/Bin/ZVGRLibGenTL.cti");
}

/// What the library says about itself, both to GCGetInfo and to TLGetInfo.
inline constexpr InfoRow<> producer_info[] = {
    {GenTL::TL_INFO_ID, [] { return InfoValue::string("GenTL_1.5"); }},
    {GenTL::TL_INFO_VENDOR, [] { return InfoValue::string("ZEVA Electronics Ltd."); }},
    {GenTL::TL_INFO_MODEL, [] { return InfoValue::string("GenTL Producer"); }},
    {GenTL::TL_INFO_VERSION, [] { return InfoValue::string(producer_version()); }},
    {GenTL::TL_INFO_TLTYPE, [] { return InfoValue::string(TLTypeMixedName); }},
    {GenTL::TL_INFO_NAME, [] { return InfoValue::string("ZVGRLibGenTL.cti"); }},
    {GenTL::TL_INFO_PATHNAME, [] { return InfoValue::string(producer_path()); }},
    {GenTL::TL_INFO_DISPLAYNAME, [] { return InfoValue::string("ZEVA Electronics GenTL Producer"); }},
    {GenTL::TL_INFO_CHAR_ENCODING, [] { return InfoValue::int32(GenTL::TL_CHAR_ENCODING_ASCII); }},
};

/// The answer to one of these commands.
template <int32_t command>
InfoValue producer_value()
{
    constexpr const InfoRow<>* row = find_row(producer_info, command);
    static_assert(row != nullptr, "the producer answers this command");
    return row->value();
}

/// What only GCGetInfo answers.
inline constexpr InfoRow<> standard_version_info[] = {
    {GenTL::TL_INFO_GENTL_VER_MAJOR, [] { return InfoValue::uint32(GenTLMajorVersion); }},
    {GenTL::TL_INFO_GENTL_VER_MINOR, [] { return InfoValue::uint32(GenTLMinorVersion); }},
};

} // namespace zvgentl
