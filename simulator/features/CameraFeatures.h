#pragma once

#include "simulator/features/CameraRegisters.h"

// What writing a camera's features does. Each function answers false when the value is not legal; the edit
// is then given up.

namespace zvsim {

bool write_user_id(CameraEdit& edit, const RegisterValue& value);
bool latch_timestamp(CameraEdit& edit, const RegisterValue& value);

bool write_width(CameraEdit& edit, const RegisterValue& value);
bool write_height(CameraEdit& edit, const RegisterValue& value);
bool write_offset_x(CameraEdit& edit, const RegisterValue& value);
bool write_offset_y(CameraEdit& edit, const RegisterValue& value);
/// Sizes and offsets that the new format does not allow become the next smaller ones that it does.
bool write_pixel_format(CameraEdit& edit, const RegisterValue& value);
bool write_test_pattern(CameraEdit& edit, const RegisterValue& value);

bool write_acquisition_mode(CameraEdit& edit, const RegisterValue& value);
bool write_frame_count(CameraEdit& edit, const RegisterValue& value);
/// Frames come and go with the stream of the grabber library; the camera's own commands change nothing.
bool execute_nothing(CameraEdit& edit, const RegisterValue& value);
bool write_frame_rate(CameraEdit& edit, const RegisterValue& value);
bool write_frame_rate_enable(CameraEdit& edit, const RegisterValue& value);
bool write_exposure_time(CameraEdit& edit, const RegisterValue& value);
bool write_gain(CameraEdit& edit, const RegisterValue& value);

bool write_trigger_selector(CameraEdit& edit, const RegisterValue& value);
/// Triggers that still wait for their frame are forgotten.
bool write_trigger_mode(CameraEdit& edit, const RegisterValue& value);
bool write_trigger_source(CameraEdit& edit, const RegisterValue& value);
bool write_trigger_activation(CameraEdit& edit, const RegisterValue& value);
/// One frame, if the camera acquires and waits for software triggers.
bool execute_trigger(CameraEdit& edit, const RegisterValue& value);

bool write_parameter_lock(CameraEdit& edit, const RegisterValue& value);

} // namespace zvsim
