#pragma once

#include <string>

#include "GenTL/GenTL.h"

#include "api/InfoTable.h"

namespace zvgentl {

/// "6.3.3", composed from the version's numbers.
std::string producer_version();

/// The full path of the file that this library was loaded from, or a fixed text when the system does not know
/// it.
std::string producer_path();

/// What the library says of itself, to GCGetInfo and TLGetInfo alike.
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

/// What only GCGetInfo answers.
inline constexpr InfoRow<> standard_version_info[] = {
    {GenTL::TL_INFO_GENTL_VER_MAJOR, [] { return InfoValue::uint32(GenTLMajorVersion); }},
    {GenTL::TL_INFO_GENTL_VER_MINOR, [] { return InfoValue::uint32(GenTLMinorVersion); }},
};

} // namespace zvgentl
