#include "system/faults/matrix.h"

#include <cctype>

namespace zvsystem {

namespace {

constexpr Mode queued = Mode::queued;
constexpr Mode cyclic = Mode::cyclic;
constexpr auto never = Life::Frames::never_come;

/// What follows when the list of devices stays empty.
std::vector<std::string> without_devices(const std::string& update)
{
    return {update,
            "IFGetNumDevices: 0, 0",
            "IFGetDeviceInfo vendor: -1007, silent",
            "IFGetDeviceInfo model: -1007, silent",
            "IFGetDeviceInfo serial: -1007, silent",
            "IFGetDeviceInfo version: -1007, silent",
            "IFOpenDevice: -1007 \"IFOpenDevice - GC_ERR_INVALID_ID: Invalid device Id Device00\""};
}

} // namespace

std::vector<FaultRow> fault_rows()
{
    const std::vector<std::string> without_interfaces{
        "TLGetNumInterfaces: 0, 0", "TLGetInterfaceInfo name: -1007, silent",
        "TLGetInterfaceInfo transport: -1007, silent", "TLOpenInterface: -1007, silent"};
    return {
        {"call-fails, function: ZVGR_StreamGetFrameIndex",          {"EventGetData: 0, frame!0"},                                     cyclic},
        {"call-delays, function: ZVGR_CameraOpen2, time: 1 ms",                                                         {}                                                                    },
        {"call-leaves-output-untouched, function: ZV_DeviceScan",                                                         without_interfaces},
        {"call-leaves-output-untouched, function: ZV_DeviceInfo",                                                         {}                                                                    },
        {"call-leaves-output-untouched, function: ZVGR_UpdateCameraList",
         without_devices("IFUpdateDeviceList: -1014 \"IFUpdateDeviceList - GC_ERR_NOT_AVAILABLE: wasn't able "
                         "to get camera info\"")},
        {"call-leaves-output-untouched, function: ZVGR_CameraInfo2",
         {"IFGetDeviceInfo vendor: 0, ''", "IFGetDeviceInfo model: 0, ''", "IFGetDeviceInfo serial: 0, ''",
          "IFGetDeviceInfo version: 0, ''"}                                                                         },
        {"call-leaves-output-untouched, function: ZVGR_CameraReadReg",
         {"GCReadPort description: 0, garbage", "GCReadPort: 0, 64 bytes, '~~~~~~'"}},
        {"call-leaves-output-untouched, function: ZVGR_CameraWriteReg",
         {"GCReadPort: 0, 64 bytes, '\\0\\0\\0\\0\\0\\0'"}                                                                        },
        {"call-leaves-output-untouched, function: ZVGR_StreamCreate",
         {"DSGetInfo payload: -1006, silent, 0", "DSGetInfo alignment: -1006, silent, 0",
          "GCRegisterEvent: -1006, silent", "DSAnnounceBuffer: -1006, silent",
          "DSAllocAndAnnounceBuffer: -1006, silent, 0 buffers", "DSClose: -1006, silent"}},
        {"call-leaves-output-untouched, function: ZVGR_StreamGetInfo",
         {"DSGetInfo payload: 0, 0", "DSGetInfo alignment: 0, 0"}                                                                       },
        {"call-leaves-output-untouched, function: ZVGR_BufferAllocAndAnnounce",
         {"DSAllocAndAnnounceBuffer: -1004, silent, 1 buffers", "EventGetData: 0, frames: 0 then -1011"}},
        {"call-leaves-output-untouched, function: ZVGR_BufferGetInfo",
         {"DSAllocAndAnnounceBuffer: -1004, silent, 1 buffers", "EventGetData: 0, frames: 00 then -1011"}                                                                                },
        {"call-leaves-output-untouched, function: ZVGR_GetXmlUrl",                                                         {"GCGetPortURLInfo: 0, ''"}},
        {"call-leaves-output-untouched, function: ZVGR_StreamCreateAndAlloc",
         {"DSGetInfo payload: -1006, silent, 0", "DSGetInfo alignment: -1006, silent, 0",
          "GCRegisterEvent: -1006, silent", "DSAnnounceBuffer: -1006, silent",
          "DSAllocAndAnnounceBuffer: -1006, silent, 0 buffers", "DSClose: -1006, silent"},
         cyclic},
        {"call-leaves-output-untouched, function: ZVGR_StreamGetAux",                                                    {"EventGetData: 0, frame0"},                                                                                                                    cyclic},
        {"scan-fails",without_interfaces},
        {"grabber-info-fails",                                              {}                                                                                                                 },
        {"grabber-name-missing",                                      {"TLGetInterfaceInfo name: 0, ''"}                                                      },
        {"grabber-open-fails",                                    {"TLOpenInterface: -1005, silent"}                            },
        {"grabber-close-fails",                                      {}                                },
        {"camera-list-fails",                                     without_devices("IFUpdateDeviceList: -1001 \"IFUpdateDeviceList - "
                                              "GC_ERR_ERROR: wasn't able to scan for cameras\"")                                                             },
        {"camera-info-fails",                                       without_devices("IFUpdateDeviceList: -1014 \"IFUpdateDeviceList - "
                                              "GC_ERR_NOT_AVAILABLE: wasn't able to get camera info\"")       },
        {"camera-open-fails",
         {"IFOpenDevice: -1005 \"IFOpenDevice - GC_ERR_ACCESS_DENIED, ZVGR_CameraOpen failed: error 12294, "
          "device id=0\""}},
        {"camera-close-fails",                                       {"DevClose: -1001, silent"}                                                                                                          },
        {"stream-create-fails",                                      {"DevOpenDataStream: -1014, silent"},                                     cyclic},
        {"stream-create-fails",                                     {"DevOpenDataStream: -1014, silent"}                           },
        {"stream-delete-fails",                                                         {}                                                                                                    },
        {"stream-info-fails",                                                         {"DSGetInfo payload: 0, 0", "DSGetInfo alignment: 0, 16"}                                                                         },
        {"announce-fails",
         {"DSAnnounceBuffer: -1004, silent", "DSAllocAndAnnounceBuffer: -1004, silent, 0 buffers"}  },
        {"revoke-fails",                                                         {}                                },
        {"queue-fails",                                                         {"EventGetData: 0, frames: then -1011"},                                                                                                          queued, never},
        {"buffer-info-fails",
         {"DSAllocAndAnnounceBuffer: -1004, silent, 1 buffers", "EventGetData: 0, frames: 00 then -1011"}                                                                            },
        {"ring-frame-missing",                                                   {"EventGetData: 0, frame!"},     cyclic},
        {"frame-record-fails",                                       {"EventGetData: 0, frame0"},                            cyclic},
        {"start-fails",                                      {"DSStartAcquisition: -1004, silent"}                        },
        {"stop-fails",                                                         {}                                                                                                     },
        {"callback-register-fails",                                                   {"EventGetData: 0, -1011"},                                                                                        cyclic, never},
        {"callback-register-fails",{"EventGetData: 0, frames: then -1011"}                      },
        {"register-read-fails",
         {"GCReadPort description: -1005, silent", "GCReadPort: -1005, silent, 64 bytes, '~~~~~~'"}},
        {"register-write-fails",
         {"GCWritePort: -1005, silent, 64 bytes", "GCReadPort: 0, 64 bytes, '\\0\\0\\0\\0\\0\\0'"}},
        {"value-not-available, name: Width",                                                         {"DSGetBufferInfo width: 0, 0"}                                                                                                },
        {"value-not-available, name: Height",                                                         {"DSGetBufferInfo height: 0, 0"}                                                                              },
        {"value-not-available, name: PixelFormat",                                                         {"DSGetBufferInfo format: 0, 0"}                                                                                                                                          },
        {"value-not-available, name: FW_Dma_Capable_QueuedBuffers_Imp",                                                         {}                                                                                                                                        },
        {"value-not-available, name: FW_Dma_Capable_FrameImageId_Imp",                                                         {}},
        {"url-fails",                                                         {"GCGetPortURLInfo: -1014, silent, ''"}   },
        {"grabber-count-too-large",                                                         {"TLGetNumInterfaces: 0, 99"}},
        {"protocol-unknown",                                                         {}},
        {"camera-count-too-large",                                                         without_devices("IFUpdateDeviceList: -1014 \"IFUpdateDeviceList - "
                                                   "GC_ERR_NOT_AVAILABLE: wasn't able to get camera info\"")                                                                                                                        },
        {"camera-texts-unterminated",
         {"IFGetDeviceInfo vendor: 0, 'xxxxxxxxxx... of 65'",
          "IFGetDeviceInfo model: 0, 'xxxxxxxxxx... of 65'",
          "IFGetDeviceInfo serial: 0, 'xxxxxxxxxx... of 65'",
          "IFGetDeviceInfo version: 0, 'xxxxxxxxxx... of 65'"}                                                                                             },
        {"camera-texts-empty",
         {"IFGetDeviceInfo vendor: 0, ''", "IFGetDeviceInfo model: 0, ''", "IFGetDeviceInfo serial: 0, ''",
          "IFGetDeviceInfo version: 0, ''"}                                                                                                                                                                                     },
        {"camera-texts-garbage",
         {"IFGetDeviceInfo vendor: 0, '\\183\\190\\1... of 60'",
          "IFGetDeviceInfo model: 0, '\\183\\190\\1... of 60'",
          "IFGetDeviceInfo serial: 0, '\\183\\190\\1... of 60'",
          "IFGetDeviceInfo version: 0, '\\183\\190\\1... of 60'"}                                                                                                                                                                            },
        {"register-read-short",                                                         {"GCReadPort description: 0, short", "GCReadPort: 0, 1 bytes, 'a name'"}},
        {"register-write-short",                                                         {"GCWritePort: 0, 1 bytes"}        },
        {"description-garbage",                                                         {"GCReadPort description: 0, garbage"}},
        {"description-truncated",                                                         {"GCReadPort description: 0, cut off"}},
        {"description-huge",                                                         {"GCReadPort description: 0, short"}                                                                                                                             },
        {"url-empty",                                                         {"GCGetPortURLInfo: 0, ''"}                                                                                            },
        {"url-garbage",                                                         {"GCGetPortURLInfo: 0, '\\1;;\\183 not a URL;zz;-1'"}                                                                                                                                                                                    },
        {"url-too-long",                                                         {"GCGetPortURLInfo: 0, 'Local:xxxx... of 259'"}                                                                                                                                                                               },
        {"url-unterminated",                                                         {"GCGetPortURLInfo: 0, 'Local:xxxx... of 260'"}},
        {"payload-size-wrong",                                                         {"DSGetInfo payload: 0, 4096"}                },
        {"payload-size-zero",                                                         {"DSGetInfo payload: 0, 0"}},
        {"pixel-format-unknown",                                                         {"DSGetBufferInfo format: 0, 2147483647"}},
        {"camera-lost-while-opening",
         {"IFOpenDevice: -1005 \"IFOpenDevice - GC_ERR_ACCESS_DENIED, ZVGR_CameraOpen failed: error 12295, "
          "device id=0\""}                                                                                                                    },
        {"camera-lost-while-configuring",
         {"GCReadPort description: -1005, silent", "GCWritePort: -1005, silent, 64 bytes",
          "GCReadPort: -1005, silent, 64 bytes, '~~~~~~'", "DevOpenDataStream: -1014, silent"}                                                                                      },
        {"camera-lost-while-streaming, when: {frame: 1}",                                                         {"EventGetData: 0, frames: 0 then -1011"}                                                                                                                                                                            },
        {"grabber-lost, grabber: 0, when: {call: 4}",
         without_devices("IFUpdateDeviceList: -1001 \"IFUpdateDeviceList - GC_ERR_ERROR: wasn't able to scan "
                         "for cameras\"")                                                                                                                                                                      },
        {"grabber-lost-while-streaming, when: {frame: 1}",                                                         {"EventGetData: 0, frames: 0 then -1011"}},
        {"acquisition-never-starts",                                                         {"EventGetData: 0, frames: then -1011"},queued, never},
        {"acquisition-never-starts",                                                         {"EventGetData: 0, -1011"},cyclic, never},
        {"acquisition-ends-early, when: {frame: 1}",                                                         {"EventGetData: 0, frames: 0 then -1011"}},
        {"frame-dropped, when: {frame: 1}",                                                         {"EventGetData: 0, frames: 0 2 3 4 then -1011"}                                                                                                                         },
        {"frame-late, time: 1 ms",                                                   {}                                                                                                                         },
        {"frame-duplicated, when: {frame: 1}",                                {"EventGetData: 0, frames: 0 1 1< 2 then -1011"}             },
        {"frames-out-of-order, when: {frame: 1}",                                                    {"EventGetData: 0, frames: 0 2 1< 3 then -1011"}                                                                                                                   },
        {"frame-id-wrong, when: {frame: 1}",{"EventGetData: 0, frames: 0 1001 2 3 then -1011"}                                                                                                                    },
        {"frame-id-jumps, when: {frame: 1}",{"EventGetData: 0, frames: 0 1001 1002 1003 then -1011"}},
        {"timestamp-zero, when: {frame: 1}",     {"EventGetData: 0, frames: 0 10 2 3 then -1011"}},
        {"timestamp-backwards, when: {frame: 1}",{"EventGetData: 0, frames: 0 1< 2 3 then -1011"}                            },
        {"timestamp-jumps, ticks: -25000000, when: {frame: 1}",
         {"EventGetData: 0, frames: 0 1< 2 3 then -1011"}},
        {"frame-truncated, when: {frame: 1}",                                                {"EventGetData: 0, frames: 0 1! 2 3 then -1011"}},
        {"frame-corrupted, when: {frame: 1}",                                                {"EventGetData: 0, frames: 0 1! 2 3 then -1011"}                                                                                                                                                                                                                       },
        {"callback-stalls, time: 1 ms",     {}                                                                                                                         },
        {"callback-missing, when: {frame: 1}",                                {"EventGetData: 0, frames: 0 2 3 then -1011"}                                                                   },
    };
}

std::string name_of_row(const testing::TestParamInfo<FaultRow>& row)
{
    std::string name;
    bool is_start = true;
    for (const char* c = row.param.fault; *c != '\0'; ++c) {
        const auto letter = static_cast<unsigned char>(*c);
        if (std::isalnum(letter) != 0)
            name += static_cast<char>(is_start ? std::toupper(letter) : letter);
        is_start = std::isalnum(letter) == 0;
    }
    return name + (row.param.mode == cyclic ? "InCyclicMode" : "");
}

} // namespace zvsystem
