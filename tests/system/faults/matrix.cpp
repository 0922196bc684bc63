#include <algorithm>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

#include "system/faults/Life.h"
#include "system/fixture.h"

// What the built producer answers to every kind of fault of its grabbers.

using namespace GenTL;
using namespace zvsystem;

namespace {

using Answers = std::vector<std::string>;

/// A fault as the configuration file has it after `kind:`, and the lines of a consumer's life that it
/// changes.
struct FaultRow {
    const char* fault;
    Answers answers;
    Mode mode;
    Frames frames;
};

std::ostream& operator<<(std::ostream& out, const FaultRow& row) { return out << row.fault; }

constexpr Mode queued = Mode::queued;
constexpr Mode cyclic = Mode::cyclic;
constexpr auto never = Frames::never_come;

FaultRow row(const char* fault, Answers answers, Mode mode = queued, Frames frames = Frames::come)
{
    return {fault, std::move(answers), mode, frames};
}

/// What follows when there is no interface.
Answers without_interfaces()
{
    return {"TLGetNumInterfaces: 0, 0", "TLGetInterfaceInfo name: -1007, silent",
            "TLGetInterfaceInfo transport: -1007, silent", "TLOpenInterface: -1007, silent"};
}

/// What follows when the list of devices stays empty.
Answers without_devices(const char* update)
{
    return {update,
            "IFGetNumDevices: 0, 0",
            "IFGetDeviceInfo vendor: -1007, silent",
            "IFGetDeviceInfo model: -1007, silent",
            "IFGetDeviceInfo serial: -1007, silent",
            "IFGetDeviceInfo version: -1007, silent",
            "IFOpenDevice: -1007 \"IFOpenDevice - GC_ERR_INVALID_ID: Invalid device Id Device00\""};
}

/// What follows when the stream does not exist.
Answers without_stream()
{
    return {"DSGetInfo payload: -1006, silent, 0",
            "DSGetInfo alignment: -1006, silent, 0",
            "GCRegisterEvent: -1006, silent",
            "DSAnnounceBuffer: -1006, silent",
            "DSAllocAndAnnounceBuffer: -1006, silent, 0 buffers",
            "DSClose: -1006, silent"};
}

Answers with_texts(const std::string& text)
{
    Answers answers;
    for (const char* const which : {"vendor", "model", "serial", "version"})
        answers.push_back(std::string{"IFGetDeviceInfo "} + which + ": 0, '" + text + "'");
    return answers;
}

const FaultRow fault_rows[] = {
    // ---- Calls ----
    row("call-fails, function: ZVGR_StreamGetFrameIndex", {"EventGetData: 0, frame!z"}, cyclic),
    row("call-delays, function: ZVGR_CameraOpen2, time: 1 ms", {}),
    row("call-leaves-output-untouched, function: ZV_DeviceScan", without_interfaces()),
    row("call-leaves-output-untouched, function: ZV_DeviceInfo", {}),
    row("call-leaves-output-untouched, function: ZVGR_UpdateCameraList",
        without_devices("IFUpdateDeviceList: -1014 \"IFUpdateDeviceList - GC_ERR_NOT_AVAILABLE: wasn't "
                        "able to get camera info\"")),
    row("call-leaves-output-untouched, function: ZVGR_CameraInfo2", with_texts("")),
    row("call-leaves-output-untouched, function: ZVGR_CameraReadReg",
        {"GCReadPort description: 0, garbage", "GCReadPort: 0, 64 bytes, '~~~~~~'"}),
    row("call-leaves-output-untouched, function: ZVGR_CameraWriteReg",
        {"GCReadPort: 0, 64 bytes, '\\0\\0\\0\\0\\0\\0'"}),
    row("call-leaves-output-untouched, function: ZVGR_StreamCreate", without_stream()),
    row("call-leaves-output-untouched, function: ZVGR_StreamGetInfo",
        {"DSGetInfo payload: 0, 0", "DSGetInfo alignment: 0, 0"}),
    row("call-leaves-output-untouched, function: ZVGR_BufferAllocAndAnnounce",
        {"DSAllocAndAnnounceBuffer: -1004, silent, 1 buffers", "EventGetData: 0, frames: 0 then -1011"}),
    row("call-leaves-output-untouched, function: ZVGR_BufferGetInfo",
        {"DSAllocAndAnnounceBuffer: -1004, silent, 1 buffers", "EventGetData: 0, frames: 0z then -1011"}),
    row("call-leaves-output-untouched, function: ZVGR_GetXmlUrl", {"GCGetPortURLInfo: 0, ''"}),
    row("call-leaves-output-untouched, function: ZVGR_StreamCreateAndAlloc", without_stream(), cyclic),
    row("call-leaves-output-untouched, function: ZVGR_StreamGetAux", {"EventGetData: 0, framez"}, cyclic),
    // ---- Grabbers ----
    row("scan-fails", without_interfaces()),
    row("grabber-info-fails", {}),
    row("grabber-name-missing", {"TLGetInterfaceInfo name: 0, ''"}),
    row("grabber-open-fails", {"TLOpenInterface: -1005, silent"}),
    row("grabber-close-fails", {}),
    row("grabber-count-too-large", {"TLGetNumInterfaces: 0, 99"}),
    row("protocol-unknown", {}),
    row("grabber-lost, grabber: 0, when: {call: 4}",
        without_devices("IFUpdateDeviceList: -1001 \"IFUpdateDeviceList - GC_ERR_ERROR: wasn't able to "
                        "scan for cameras\"")),
    row("grabber-lost-while-streaming, when: {frame: 1}", {"EventGetData: 0, frames: 0 then -1011"}),
    // ---- Cameras ----
    row("camera-list-fails", without_devices("IFUpdateDeviceList: -1001 \"IFUpdateDeviceList - "
                                             "GC_ERR_ERROR: wasn't able to scan for cameras\"")),
    row("camera-info-fails", without_devices("IFUpdateDeviceList: -1014 \"IFUpdateDeviceList - "
                                             "GC_ERR_NOT_AVAILABLE: wasn't able to get camera info\"")),
    row("camera-open-fails", {"IFOpenDevice: -1005 \"IFOpenDevice - GC_ERR_ACCESS_DENIED, "
                              "ZVGR_CameraOpen failed: error 12294, device id=0\""}),
    row("camera-close-fails", {"DevClose: -1001, silent"}),
    row("value-not-available, name: Width", {"DSGetBufferInfo width: 0, 0"}),
    row("value-not-available, name: Height", {"DSGetBufferInfo height: 0, 0"}),
    row("value-not-available, name: PixelFormat", {"DSGetBufferInfo format: 0, 0"}),
    row("value-not-available, name: FW_Dma_Capable_QueuedBuffers_Imp", {}),
    row("value-not-available, name: FW_Dma_Capable_FrameImageId_Imp", {}),
    row("camera-count-too-large",
        without_devices("IFUpdateDeviceList: -1014 \"IFUpdateDeviceList - GC_ERR_NOT_AVAILABLE: wasn't "
                        "able to get camera info\"")),
    row("camera-texts-unterminated", with_texts("xxxxxxxxxx... of 65")),
    row("camera-texts-empty", with_texts("")),
    row("camera-texts-garbage", with_texts("\\183\\190\\1... of 60")),
    row("pixel-format-unknown", {"DSGetBufferInfo format: 0, 2147483647"}),
    row("camera-lost-while-opening", {"IFOpenDevice: -1005 \"IFOpenDevice - GC_ERR_ACCESS_DENIED, "
                                      "ZVGR_CameraOpen failed: error 12295, device id=0\""}),
    row("camera-lost-while-configuring",
        {"GCReadPort description: -1005, silent", "GCWritePort: -1005, silent, 64 bytes",
         "GCReadPort: -1005, silent, 64 bytes, '~~~~~~'", "DevOpenDataStream: -1014, silent"}),
    row("camera-lost-while-streaming, when: {frame: 1}", {"EventGetData: 0, frames: 0 then -1011"}),
    // ---- Registers ----
    row("register-read-fails",
        {"GCReadPort description: -1005, silent", "GCReadPort: -1005, silent, 64 bytes, '~~~~~~'"}),
    row("register-write-fails",
        {"GCWritePort: -1005, silent, 64 bytes", "GCReadPort: 0, 64 bytes, '\\0\\0\\0\\0\\0\\0'"}),
    row("url-fails", {"GCGetPortURLInfo: -1014, silent, ''"}),
    row("register-read-short", {"GCReadPort description: 0, short", "GCReadPort: 0, 1 bytes, 'a name'"}),
    row("register-write-short", {"GCWritePort: 0, 1 bytes"}),
    row("description-garbage", {"GCReadPort description: 0, garbage"}),
    row("description-truncated", {"GCReadPort description: 0, cut off"}),
    row("description-huge", {"GCReadPort description: 0, short"}),
    row("url-empty", {"GCGetPortURLInfo: 0, ''"}),
    row("url-garbage", {"GCGetPortURLInfo: 0, '\\1;;\\183 not a URL;zz;-1'"}),
    row("url-too-long", {"GCGetPortURLInfo: 0, 'Local:xxxx... of 259'"}),
    row("url-unterminated", {"GCGetPortURLInfo: 0, 'Local:xxxx... of 260'"}),
    // ---- Streams ----
    row("stream-create-fails", {"DevOpenDataStream: -1014, silent"}, cyclic),
    row("stream-create-fails", {"DevOpenDataStream: -1014, silent"}),
    row("stream-delete-fails", {}),
    row("stream-info-fails", {"DSGetInfo payload: 0, 0", "DSGetInfo alignment: 0, 16"}),
    row("announce-fails",
        {"DSAnnounceBuffer: -1004, silent", "DSAllocAndAnnounceBuffer: -1004, silent, 0 buffers"}),
    row("revoke-fails", {}),
    row("queue-fails", {"EventGetData: 0, frames: then -1011"}, queued, never),
    row("buffer-info-fails",
        {"DSAllocAndAnnounceBuffer: -1004, silent, 1 buffers", "EventGetData: 0, frames: 0z then -1011"}),
    row("ring-frame-missing", {"EventGetData: 0, frame!"}, cyclic),
    row("frame-record-fails", {"EventGetData: 0, framez"}, cyclic),
    row("callback-register-fails", {"EventGetData: 0, -1011"}, cyclic, never),
    row("callback-register-fails", {"EventGetData: 0, frames: then -1011"}),
    row("payload-size-wrong", {"DSGetInfo payload: 0, 4096"}),
    row("payload-size-zero", {"DSGetInfo payload: 0, 0"}),
    // ---- Frames ----
    row("start-fails", {"DSStartAcquisition: -1004, silent"}),
    row("stop-fails", {}),
    row("acquisition-never-starts", {"EventGetData: 0, frames: then -1011"}, queued, never),
    row("acquisition-never-starts", {"EventGetData: 0, -1011"}, cyclic, never),
    row("acquisition-ends-early, when: {frame: 1}", {"EventGetData: 0, frames: 0 then -1011"}),
    row("frame-dropped, when: {frame: 1}", {"EventGetData: 0, frames: 0 2 3 4 then -1011"}),
    row("frame-late, time: 1 ms", {}),
    row("frame-duplicated, when: {frame: 1}", {"EventGetData: 0, frames: 0 1 1< 2 then -1011"}),
    row("frames-out-of-order, when: {frame: 1}", {"EventGetData: 0, frames: 0 2 1< 3 then -1011"}),
    row("frame-id-wrong, when: {frame: 1}", {"EventGetData: 0, frames: 0 1001 2 3 then -1011"}),
    row("frame-id-jumps, when: {frame: 1}", {"EventGetData: 0, frames: 0 1001 1002 1003 then -1011"}),
    row("timestamp-zero, when: {frame: 1}", {"EventGetData: 0, frames: 0 1z 2 3 then -1011"}),
    row("timestamp-backwards, when: {frame: 1}", {"EventGetData: 0, frames: 0 1< 2 3 then -1011"}),
    row("timestamp-jumps, ticks: -25000000, when: {frame: 1}",
        {"EventGetData: 0, frames: 0 1< 2 3 then -1011"}),
    row("frame-truncated, when: {frame: 1}", {"EventGetData: 0, frames: 0 1! 2 3 then -1011"}),
    row("frame-corrupted, when: {frame: 1}", {"EventGetData: 0, frames: 0 1! 2 3 then -1011"}),
    row("callback-stalls, time: 1 ms", {}),
    row("callback-missing, when: {frame: 1}", {"EventGetData: 0, frames: 0 2 3 then -1011"}),
};

std::string name_of_row(const testing::TestParamInfo<FaultRow>& row)
{
    const std::string name = std::regex_replace(row.param.fault, std::regex{"[^A-Za-z0-9]+"}, "_");
    return name + (row.param.mode == cyclic ? "_in_cyclic_mode" : "");
}

constexpr const char* grabbers = R"(demo_grabber: false
grabbers:
- name: First
  cameras:
  - &camera {model: Small, serial: A-1, sensor_width: 64, sensor_height: 48, rate: free-running, start_up: 0 ms}
  - {model: Small, serial: A-2, sensor_width: 64, sensor_height: 48, rate: free-running, start_up: 0 ms}
- name: Second
  protocol: CameraLinkHS
  cameras: [*camera]
- name: Hidden
)";

class FaultMatrix : public testing::TestWithParam<FaultRow> {
protected:
    /// A consumer's life with these faults.
    Answers life_with(const std::string& faults, Frames frames = Frames::come)
    {
        static int lives = 0; // another text each time, so that each life counts its calls from the start
        const GrabberFile file{"# " + std::to_string(++lives) + "\n" + grabbers + faults};
        return live(m_producer.functions(), GetParam().mode, frames);
    }

private:
    Surroundings& m_surroundings{
        surroundings_in(GetParam().mode)}; // before the producer looks for its settings
    Producer m_producer{producer_file};
};

/// The lines of a life that a healthy one does not have.
Answers differences(const Answers& life, const Answers& healthy)
{
    Answers different;
    std::copy_if(life.begin(), life.end(), std::back_inserter(different), [&](const std::string& line) {
        return std::find(healthy.begin(), healthy.end(), line) == healthy.end();
    });
    return different;
}

TEST_P(FaultMatrix, TheProducerAnswersSurvivesAndWorksAgain)
{
    const FaultRow& row = GetParam();
    const auto log = surroundings().folder() / "calls.log";
    const std::string fault = row.fault;
    const auto healthy = life_with("faults: []");
    const auto faulty =
        life_with("call_log: " + log.string() + "\nfaults: [{kind: " + fault + "}]", row.frames);
    EXPECT_EQ(row.answers, differences(faulty, healthy));
    EXPECT_EQ(healthy, life_with("faults: []"));
    EXPECT_NE(std::string::npos, contents(log).find("fault " + fault.substr(0, fault.find(','))))
        << "the fault did not happen";
}

INSTANTIATE_TEST_SUITE_P(Faults, FaultMatrix, testing::ValuesIn(fault_rows), name_of_row);

} // namespace
