#pragma once

#include <string_view>

#include "simulator/Devices.h"
#include "simulator/features/RegisterSpace.h"

// The registers of a camera: a table with one row each.

namespace zvsim {

/// What a write works on until the whole of it is accepted.
struct CameraEdit {
    const CameraDevice& device;
    CameraState state;
};

using CameraRow = RegisterRow<CameraDevice, CameraEdit>;

/// All rows, by address. Also used by everything else that knows features by name.
struct CameraRows {
    const CameraRow* first;
    size_t count;
    const CameraRow* begin() const { return first; }
    const CameraRow* end() const { return first + count; }
};
CameraRows camera_rows();
/// Null for an unknown name.
const CameraRow* find_camera_row(std::string_view name);

/// The registers and the description of a camera.
class CameraSpace final : public RegisterSpace {
public:
    explicit CameraSpace(CameraDevice& device);

    void commit() override;

private:
    std::optional<RegisterPlace> find(uint64_t address) const override;
    void load(const RegisterPlace& place, unsigned char* bytes) const override;
    bool store(const RegisterPlace& place, const unsigned char* bytes) override;
    const std::string& description() const override;

    CameraDevice& m_device;
    CameraEdit m_edit;
};

} // namespace zvsim
