#include "unit/simulator/faulty_calls.h"

#include <cstring>

namespace zvsim_test {

namespace {

constexpr uint64_t user_id_register = 0x1100;
constexpr uint64_t grabber_register = 0x2098; // resets statistics
constexpr uint64_t url_space = 260;
unsigned char consumer_memory[100];

void ignore_buffer(uint64_t /*buffer*/, void* /*context*/) {}
void ignore_frame(void* /*context*/, uint32_t /*stream*/) {}

/// Output parameters lie in the bytes, so that whatever is written shows.
template <class Type>
Type* in(Outputs& outputs)
{
    return reinterpret_cast<Type*>(outputs.bytes.data());
}

uint32_t scan(const Situation&, Outputs& outputs) { return ZV_DeviceScan(in<uint32_t>(outputs)); }

uint32_t grabber_info(const Situation&, Outputs& outputs)
{
    ZvDeviceInfo info;
    std::memset(&info, 0xEE, sizeof(info));
    info.version = 3;
    const uint32_t status = ZV_DeviceInfo(0, &info);
    std::memset(&info.version, 0xEE, sizeof(info.version));
    std::memcpy(outputs.bytes.data(), &info, sizeof(info));
    return status;
}

uint32_t close(const Situation& now, Outputs&) { return ZVGR_Close(now.grabber); }

uint32_t list(const Situation& now, Outputs& outputs)
{
    uint32_t count = outputs.asked;
    const uint32_t status = ZVGR_UpdateCameraList(now.grabber, in<uint32_t>(outputs), &count);
    outputs.size = count;
    return status;
}

uint32_t camera_info(const Situation& now, Outputs& outputs)
{
    ZvCameraInfo info;
    std::memset(&info, 0xEE, sizeof(info));
    info.version = 0;
    const uint32_t status = ZVGR_CameraInfo2(now.camera, &info);
    std::memset(&info.version, 0xEE, sizeof(info.version));
    std::memcpy(outputs.bytes.data(), &info, sizeof(info));
    return status;
}

uint32_t open(const Situation& now, Outputs&) { return ZVGR_CameraOpen2(now.camera, nullptr); }
uint32_t close_camera(const Situation& now, Outputs&) { return ZVGR_CameraClose(now.camera); }

uint32_t read_grabber(const Situation& now, Outputs& outputs)
{
    return ZVGR_GrabberReadReg(now.grabber, grabber_register, outputs.bytes.data(), &outputs.size);
}

uint32_t write_grabber(const Situation& now, Outputs& outputs)
{
    const unsigned char one[4] = {0, 0, 0, 1};
    return ZVGR_GrabberWriteReg(now.grabber, grabber_register, one, &outputs.size);
}

uint32_t read_camera(const Situation& now, Outputs& outputs)
{
    return ZVGR_CameraReadReg(now.camera, user_id_register, outputs.bytes.data(), &outputs.size);
}

uint32_t write_camera(const Situation& now, Outputs& outputs)
{
    return ZVGR_CameraWriteReg(now.camera, user_id_register, "new", &outputs.size);
}

uint32_t create(const Situation& now, Outputs& outputs)
{
    return ZVGR_StreamCreate(now.camera, in<uint32_t>(outputs), 0);
}

uint32_t create_ring(const Situation& now, Outputs& outputs)
{
    return ZVGR_StreamCreateAndAlloc(now.camera, in<uint32_t>(outputs), 4, 0);
}

uint32_t delete_stream(const Situation& now, Outputs&) { return ZVGR_StreamDelete(now.stream); }

uint32_t stream_info(const Situation& now, Outputs& outputs)
{
    return ZVGR_StreamGetInfo(now.stream, zv_stream_payload_now, in<uint64_t>(outputs));
}

uint32_t record(const Situation& now, Outputs& outputs)
{
    return ZVGR_StreamGetAux(now.ring, 0, in<ZvFrameAux>(outputs));
}

uint32_t announce(const Situation& now, Outputs& outputs)
{
    return ZVGR_BufferAnnounce(now.stream, consumer_memory, sizeof(consumer_memory), nullptr,
                               in<uint64_t>(outputs));
}

uint32_t allocate(const Situation& now, Outputs& outputs)
{
    return ZVGR_BufferAllocAndAnnounce(now.stream, 100, nullptr, in<uint64_t>(outputs));
}

uint32_t revoke(const Situation& now, Outputs&) { return ZVGR_BufferRevoke(now.stream, now.buffer); }
uint32_t queue(const Situation& now, Outputs&) { return ZVGR_BufferToQueue(now.buffer, zv_queue_input); }

uint32_t buffer_info(const Situation& now, Outputs& outputs)
{
    return ZVGR_BufferGetInfo(now.buffer, zv_buffer_address, in<uint64_t>(outputs));
}

uint32_t start(const Situation& now, Outputs&)
{
    return ZVGR_CameraStartAcquire_GenTL(now.camera, now.stream, 0);
}

uint32_t stop(const Situation& now, Outputs&) { return ZVGR_CameraStopAcquire_GenTL(now.camera); }

uint32_t register_frame(const Situation& now, Outputs&)
{
    return ZVGR_CameraCallbackRegister(now.camera, ignore_frame, nullptr);
}

uint32_t register_buffer(const Situation& now, Outputs&)
{
    return ZVGR_StreamBufferCallbackRegister(now.stream, ignore_buffer, nullptr);
}

uint32_t url(const Situation& now, Outputs& outputs)
{
    uint64_t size = url_space;
    const uint32_t status = ZVGR_GetXmlUrl(now.camera, in<char>(outputs), &size);
    outputs.size = size == url_space ? outputs.asked : 0;
    return status;
}

} // namespace

const std::array<StatusCall, 26> status_calls{
    {{"ZV_DeviceScan", "scan-fails", scan, 1, 1, true},
     {"ZV_DeviceInfo", "grabber-info-fails", grabber_info, 0, 0, true},
     {"ZVGR_Close", "grabber-close-fails", close, 0, 0, false, true},
     {"ZVGR_UpdateCameraList", "camera-list-fails", list, 1, 1, true},
     {"ZVGR_CameraInfo2", "camera-info-fails", camera_info, 0, 0, true},
     {"ZVGR_CameraOpen2", "camera-open-fails", open, 1, 1},
     {"ZVGR_CameraClose", "camera-close-fails", close_camera, 0, 0, false, true},
     {"ZVGR_GrabberReadReg", "register-read-fails", read_grabber, 0, 0, true},
     {"ZVGR_GrabberWriteReg", "register-write-fails", write_grabber, 0, 0, true},
     {"ZVGR_CameraReadReg", "register-read-fails", read_camera, 0, 0, true},
     {"ZVGR_CameraWriteReg", "register-write-fails", write_camera, 0, 0, true},
     {"ZVGR_StreamCreate", "stream-create-fails", create, 1, 2, true},
     {"ZVGR_StreamCreateAndAlloc", "stream-create-fails", create_ring, 1, 2, true},
     {"ZVGR_StreamDelete", "stream-delete-fails", delete_stream, 0, 0, false, true},
     {"ZVGR_StreamGetInfo", "stream-info-fails", stream_info, 0, 0, true},
     {"ZVGR_StreamGetAux", "frame-record-fails", record, 0, 0, true},
     {"ZVGR_BufferAnnounce", "announce-fails", announce, 0, 1, true},
     {"ZVGR_BufferAllocAndAnnounce", "announce-fails", allocate, 1, 1, true},
     {"ZVGR_BufferRevoke", "revoke-fails", revoke, 0, 0, false, true},
     {"ZVGR_BufferToQueue", "queue-fails", queue, 0, 0},
     {"ZVGR_BufferGetInfo", "buffer-info-fails", buffer_info, 0, 0, true},
     {"ZVGR_CameraStartAcquire_GenTL", "start-fails", start, 0, 0},
     {"ZVGR_CameraStopAcquire_GenTL", "stop-fails", stop, 0, 0},
     {"ZVGR_CameraCallbackRegister", "callback-register-fails", register_frame, 0, 0},
     {"ZVGR_StreamBufferCallbackRegister", "callback-register-fails", register_buffer, 0, 0},
     {"ZVGR_GetXmlUrl", "url-fails", url, 0, 0, true}}};

} // namespace zvsim_test
