#include "simulator/features/GrabberRegisters.h"

#include <algorithm>
#include <iterator>

#include "zvgr/ZVGRLib.h"

#include "simulator/features/Description.h"

namespace zvsim {

namespace {

using Subject = GrabberSubject;
using Value = RegisterValue;

constexpr auto integer = RegisterKind::integer;
constexpr auto enumeration = RegisterKind::enumeration;
constexpr auto command = RegisterKind::command;
constexpr auto text = RegisterKind::text;
constexpr auto never = Locking::never;
constexpr bool (*read_only)(GrabberEdit&, const Value&) = nullptr;

constexpr int64_t channel_idle = 1; // any number but that of "grabbing"

template <class Number>
Value number(Number value)
{
    return static_cast<int64_t>(value);
}

/// What a camera says, where there is one.
template <class Read>
Value of_camera(const Subject& subject, const Read& read)
{
    return subject.camera != nullptr ? Value{read(*subject.camera)} : Value{};
}

Value serial_of(const Subject& subject)
{
    return of_camera(subject, [](const CameraDevice& camera) { return camera.model().serial_number; });
}

Value model_of(const Subject& subject)
{
    return of_camera(subject, [](const CameraDevice& camera) { return camera.model().model; });
}

Value interface_type(const Subject& subject)
{
    const uint32_t protocol = subject.grabber.model().protocol;
    const bool is_known = protocol == zv_protocol_clhs || protocol == zv_protocol_gev;
    return is_known ? number(protocol) : number(zv_protocol_cxp);
}

Value link_state(const Subject& subject)
{
    return number(subject.camera != nullptr && subject.camera->is_connected());
}

Value channel_state(const Subject& subject)
{
    const bool is_grabbing = subject.camera != nullptr && subject.camera->is_acquiring();
    return is_grabbing ? number(zv_channel_grabbing) : channel_idle;
}

Value delivered(const Subject& subject)
{
    return of_camera(subject,
                     [](const CameraDevice& camera) { return number(camera.statistics().delivered); });
}

Value lost(const Subject& subject)
{
    return of_camera(subject, [](const CameraDevice& camera) { return number(camera.statistics().lost); });
}

/// Geometry, where the grabber reports it: otherwise consumers ask the camera.
Value width(const Subject& subject)
{
    if (!subject.grabber.model().reports_geometry)
        return {};
    return of_camera(subject, [](const CameraDevice& camera) { return number(camera.settings().width); });
}

Value height(const Subject& subject)
{
    if (!subject.grabber.model().reports_geometry)
        return {};
    return of_camera(subject, [](const CameraDevice& camera) { return number(camera.settings().height); });
}

Value segments(const Subject& subject)
{
    return subject.grabber.model().reports_geometry ? number(subject.grabber.model().segments_per_buffer)
                                                    : Value{};
}

bool reset_statistics(GrabberEdit& edit, const Value& value)
{
    if (std::get<int64_t>(value) != 1)
        return false;
    if (edit.camera != nullptr)
        edit.resets.push_back(edit.camera);
    return true;
}

// By address. The names, lengths and addresses are those of grabber.xml.
// clang-format off
constexpr GrabberRow rows[] = {
    {"InterfaceVendorName",   0x1000, 64, text,        never, [](const Subject&) -> Value { return std::string{grabber_vendor}; },                    read_only},
    {"InterfaceModelName",    0x1040, 64, text,        never, [](const Subject& s) -> Value { return grabber_model_name(s.grabber.model()); },        read_only},
    {"InterfaceDisplayName",  0x1080, 64, text,        never, [](const Subject& s) -> Value { return s.grabber.model().display_name; },               read_only},
    {"InterfaceIndex",        0x10C0, 4,  integer,     never, [](const Subject& s) { return number(s.grabber.index()); },                             read_only},
    {"InterfaceType",         0x10C4, 4,  enumeration, never, interface_type,                                                                         read_only},
    {"CameraCount",           0x10C8, 4,  integer,     never, [](const Subject& s) { return number(s.grabber.cameras().size()); },                    read_only},
    {"GeometryIsReported",    0x10CC, 4,  integer,     never, [](const Subject& s) { return number(s.grabber.model().reports_geometry); },            read_only},

    {"CameraModelName",       0x2000, 64, text,        never, model_of,                                                                               read_only},
    {"CameraSerialNumber",    0x2040, 64, text,        never, serial_of,                                                                              read_only},
    {"CameraLinkState",       0x2080, 4,  enumeration, never, link_state,                                                                             read_only},
    {"CameraChannelState",    0x2084, 4,  enumeration, never, channel_state,                                                                          read_only},
    {"CameraFramesDelivered", 0x2088, 8,  integer,     never, delivered,                                                                              read_only},
    {"CameraFramesLost",      0x2090, 8,  integer,     never, lost,                                                                                   read_only},
    {"CameraStatisticsReset", 0x2098, 4,  command,     never, [](const Subject&) { return number(0); },                                               reset_statistics},
    {"Width",                 0x209C, 4,  integer,     never, width,                                                                                  read_only},
    {"Height",                0x20A0, 4,  integer,     never, height,                                                                                 read_only},
    {"SegmentsPerBuffer",     0x20A4, 4,  integer,     never, segments,                                                                               read_only},
};
// clang-format on

const GrabberRow& row_of(const RegisterPlace& place) { return *static_cast<const GrabberRow*>(place.row); }

bool is_repeated(const GrabberRow& row) { return row.address >= camera_block_address; }

} // namespace

std::string grabber_model_name(const GrabberModel& model)
{
    const char* transport = "CXP";
    if (model.protocol == zv_protocol_clhs)
        transport = "CLHS";
    else if (model.protocol == zv_protocol_gev)
        transport = "GEV";
    return std::string{"Software Grabber "} + transport + "-" + std::to_string(model.cameras.size());
}

size_t camera_blocks(const GrabberModel& model) { return std::max<size_t>(model.cameras.size(), 1); }

GrabberRows grabber_rows() { return {rows, std::size(rows)}; }

const GrabberRow* find_grabber_row(std::string_view name)
{
    const auto* const found = std::find_if(std::begin(rows), std::end(rows),
                                           [name](const GrabberRow& row) { return row.name == name; });
    return found != std::end(rows) ? found : nullptr;
}

void GrabberSpace::commit()
{
    for (CameraDevice* const camera : m_edit.resets)
        camera->reset_statistics();
}

std::optional<RegisterPlace> GrabberSpace::find(uint64_t address) const
{
    uint64_t block = 0;
    if (address >= camera_block_address)
        block = (address - camera_block_address) / camera_block_stride;
    if (block >= camera_blocks(m_device.model()))
        return std::nullopt;
    const uint64_t shift = block * camera_block_stride;
    for (const GrabberRow& row : rows) {
        if (address - shift >= row.address && address - shift - row.address < row.length)
            return RegisterPlace{row.address + shift, row.length, &row, static_cast<size_t>(block)};
    }
    return std::nullopt;
}

CameraDevice* GrabberSpace::camera_of(const RegisterPlace& place) const
{
    const auto& cameras = m_device.cameras();
    return is_repeated(row_of(place)) && place.block < cameras.size() ? cameras[place.block].get() : nullptr;
}

void GrabberSpace::load(const RegisterPlace& place, unsigned char* bytes) const
{
    const GrabberRow& row = row_of(place);
    encode(row.read({m_device, camera_of(place)}), row.kind, bytes, row.length);
}

bool GrabberSpace::store(const RegisterPlace& place, const unsigned char* bytes)
{
    const GrabberRow& row = row_of(place);
    if (row.write == nullptr)
        return false;
    m_edit.camera = camera_of(place);
    return row.write(m_edit, decode(row.kind, bytes, row.length));
}

const std::string& GrabberSpace::description() const { return m_device.description().text; }

} // namespace zvsim
