#pragma once

#include <string_view>

#include "simulator/Devices.h"
#include "simulator/features/RegisterSpace.h"

// The registers of a grabber: a table with one row each, those of a camera once for each camera.

namespace zvsim {

constexpr const char* grabber_vendor = "ZEVA Electronics";
std::string grabber_model_name(const GrabberModel& model);

/// What a grabber's feature is read from. Rows that are about a camera find one here, unless the grabber has
/// none.
struct GrabberSubject {
    const GrabberDevice& grabber;
    const CameraDevice* camera;
};

/// What a write works on until the whole of it is accepted.
struct GrabberEdit {
    /// Those whose counters are reset.
    std::vector<CameraDevice*> resets;
    /// The one that the present register is about.
    CameraDevice* camera{nullptr};
};

using GrabberRow = RegisterRow<GrabberSubject, GrabberEdit>;

constexpr uint32_t camera_block_address = 0x2000;
constexpr uint32_t camera_block_stride = 0x100;
/// How often the registers of a camera exist: also once where there is no camera.
size_t camera_blocks(const GrabberModel& model);

/// All rows, by address; those from camera_block_address on are repeated.
struct GrabberRows {
    const GrabberRow* first;
    size_t count;
    const GrabberRow* begin() const { return first; }
    const GrabberRow* end() const { return first + count; }
};
GrabberRows grabber_rows();
/// Null for an unknown name.
const GrabberRow* find_grabber_row(std::string_view name);

/// The registers and the description of a grabber.
class GrabberSpace final : public RegisterSpace {
public:
    explicit GrabberSpace(const GrabberDevice& device) : m_device{device} {}

    void commit() override;

private:
    std::optional<RegisterPlace> find(uint64_t address) const override;
    void load(const RegisterPlace& place, unsigned char* bytes) const override;
    bool store(const RegisterPlace& place, const unsigned char* bytes) override;
    const std::string& description() const override;
    CameraDevice* camera_of(const RegisterPlace& place) const;

    const GrabberDevice& m_device;
    GrabberEdit m_edit;
};

} // namespace zvsim
