#pragma once

#include "GenTL/GenTL.h"

#include "api/InfoTable.h"
#include "api/producer_info.h"
#include "port/Port.h"

namespace zvgentl {

/// What a port says about itself, the same for every kind of module: also that it can be written and has both
/// byte orders, whether that is true or not.
inline constexpr InfoRow<Port> port_info[] = {
    {GenTL::PORT_INFO_ID, [](const Port& port) { return InfoValue::string(port.getId()); }},
    {GenTL::PORT_INFO_VENDOR, [](const Port&) { return producer_value<GenTL::TL_INFO_VENDOR>(); }},
    {GenTL::PORT_INFO_MODEL, [](const Port&) { return producer_value<GenTL::TL_INFO_MODEL>(); }},
    {GenTL::PORT_INFO_TLTYPE, [](const Port&) { return producer_value<GenTL::TL_INFO_TLTYPE>(); }},
    {GenTL::PORT_INFO_MODULE, [](const Port& port) { return InfoValue::string(port.kind_name()); }},
    {GenTL::PORT_INFO_LITTLE_ENDIAN, [](const Port&) { return InfoValue::bool8(true); }},
    {GenTL::PORT_INFO_BIG_ENDIAN, [](const Port&) { return InfoValue::bool8(true); }},
    {GenTL::PORT_INFO_ACCESS_READ, [](const Port&) { return InfoValue::bool8(true); }},
    {GenTL::PORT_INFO_ACCESS_WRITE, [](const Port&) { return InfoValue::bool8(true); }},
    {GenTL::PORT_INFO_ACCESS_NA, [](const Port&) { return InfoValue::bool8(false); }},
    {GenTL::PORT_INFO_ACCESS_NI, [](const Port&) { return InfoValue::bool8(false); }},
    {GenTL::PORT_INFO_VERSION, [](const Port&) { return InfoValue::string("1.0"); }},
    {GenTL::PORT_INFO_PORTNAME, [](const Port&) { return InfoValue::string("Device"); }},
};

} // namespace zvgentl
