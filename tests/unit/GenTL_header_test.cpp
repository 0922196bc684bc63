#include "GenTL/GenTL.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <type_traits>

using namespace GenTL;

namespace {

struct Row {
    const char* name;
    int64_t value;
    int64_t standard;
};

// Values of GenTL 1.5, which consumers were compiled with.
const Row values[] = {
  // GC_ERROR_LIST
    {"GC_ERR_SUCCESS",                         GC_ERR_SUCCESS,                         0     },
    {"GC_ERR_ERROR",                           GC_ERR_ERROR,                           -1001 },
    {"GC_ERR_NOT_INITIALIZED",                 GC_ERR_NOT_INITIALIZED,                 -1002 },
    {"GC_ERR_NOT_IMPLEMENTED",                 GC_ERR_NOT_IMPLEMENTED,                 -1003 },
    {"GC_ERR_RESOURCE_IN_USE",                 GC_ERR_RESOURCE_IN_USE,                 -1004 },
    {"GC_ERR_ACCESS_DENIED",                   GC_ERR_ACCESS_DENIED,                   -1005 },
    {"GC_ERR_INVALID_HANDLE",                  GC_ERR_INVALID_HANDLE,                  -1006 },
    {"GC_ERR_INVALID_ID",                      GC_ERR_INVALID_ID,                      -1007 },
    {"GC_ERR_NO_DATA",                         GC_ERR_NO_DATA,                         -1008 },
    {"GC_ERR_INVALID_PARAMETER",               GC_ERR_INVALID_PARAMETER,               -1009 },
    {"GC_ERR_IO",                              GC_ERR_IO,                              -1010 },
    {"GC_ERR_TIMEOUT",                         GC_ERR_TIMEOUT,                         -1011 },
    {"GC_ERR_ABORT",                           GC_ERR_ABORT,                           -1012 },
    {"GC_ERR_INVALID_BUFFER",                  GC_ERR_INVALID_BUFFER,                  -1013 },
    {"GC_ERR_NOT_AVAILABLE",                   GC_ERR_NOT_AVAILABLE,                   -1014 },
    {"GC_ERR_INVALID_ADDRESS",                 GC_ERR_INVALID_ADDRESS,                 -1015 },
    {"GC_ERR_BUFFER_TOO_SMALL",                GC_ERR_BUFFER_TOO_SMALL,                -1016 },
    {"GC_ERR_INVALID_INDEX",                   GC_ERR_INVALID_INDEX,                   -1017 },
    {"GC_ERR_PARSING_CHUNK_DATA",              GC_ERR_PARSING_CHUNK_DATA,              -1018 },
    {"GC_ERR_INVALID_VALUE",                   GC_ERR_INVALID_VALUE,                   -1019 },
    {"GC_ERR_RESOURCE_EXHAUSTED",              GC_ERR_RESOURCE_EXHAUSTED,              -1020 },
    {"GC_ERR_OUT_OF_MEMORY",                   GC_ERR_OUT_OF_MEMORY,                   -1021 },
    {"GC_ERR_BUSY",                            GC_ERR_BUSY,                            -1022 },
    {"GC_ERR_CUSTOM_ID",                       GC_ERR_CUSTOM_ID,                       -10000},
 // INFO_DATATYPE_LIST
    {"INFO_DATATYPE_UNKNOWN",                  INFO_DATATYPE_UNKNOWN,                  0     },
    {"INFO_DATATYPE_STRING",                   INFO_DATATYPE_STRING,                   1     },
    {"INFO_DATATYPE_STRINGLIST",               INFO_DATATYPE_STRINGLIST,               2     },
    {"INFO_DATATYPE_INT16",                    INFO_DATATYPE_INT16,                    3     },
    {"INFO_DATATYPE_UINT16",                   INFO_DATATYPE_UINT16,                   4     },
    {"INFO_DATATYPE_INT32",                    INFO_DATATYPE_INT32,                    5     },
    {"INFO_DATATYPE_UINT32",                   INFO_DATATYPE_UINT32,                   6     },
    {"INFO_DATATYPE_INT64",                    INFO_DATATYPE_INT64,                    7     },
    {"INFO_DATATYPE_UINT64",                   INFO_DATATYPE_UINT64,                   8     },
    {"INFO_DATATYPE_FLOAT64",                  INFO_DATATYPE_FLOAT64,                  9     },
    {"INFO_DATATYPE_PTR",                      INFO_DATATYPE_PTR,                      10    },
    {"INFO_DATATYPE_BOOL8",                    INFO_DATATYPE_BOOL8,                    11    },
    {"INFO_DATATYPE_SIZET",                    INFO_DATATYPE_SIZET,                    12    },
    {"INFO_DATATYPE_BUFFER",                   INFO_DATATYPE_BUFFER,                   13    },
    {"INFO_DATATYPE_PTRDIFF",                  INFO_DATATYPE_PTRDIFF,                  14    },
    {"INFO_DATATYPE_CUSTOM_ID",                INFO_DATATYPE_CUSTOM_ID,                1000  },
 // TL_CHAR_ENCODING_LIST
    {"TL_CHAR_ENCODING_ASCII",                 TL_CHAR_ENCODING_ASCII,                 0     },
    {"TL_CHAR_ENCODING_UTF8",                  TL_CHAR_ENCODING_UTF8,                  1     },
 // TL_INFO_CMD_LIST
    {"TL_INFO_ID",                             TL_INFO_ID,                             0     },
    {"TL_INFO_VENDOR",                         TL_INFO_VENDOR,                         1     },
    {"TL_INFO_MODEL",                          TL_INFO_MODEL,                          2     },
    {"TL_INFO_VERSION",                        TL_INFO_VERSION,                        3     },
    {"TL_INFO_TLTYPE",                         TL_INFO_TLTYPE,                         4     },
    {"TL_INFO_NAME",                           TL_INFO_NAME,                           5     },
    {"TL_INFO_PATHNAME",                       TL_INFO_PATHNAME,                       6     },
    {"TL_INFO_DISPLAYNAME",                    TL_INFO_DISPLAYNAME,                    7     },
    {"TL_INFO_CHAR_ENCODING",                  TL_INFO_CHAR_ENCODING,                  8     },
    {"TL_INFO_GENTL_VER_MAJOR",                TL_INFO_GENTL_VER_MAJOR,                9     },
    {"TL_INFO_GENTL_VER_MINOR",                TL_INFO_GENTL_VER_MINOR,                10    },
    {"TL_INFO_CUSTOM_ID",                      TL_INFO_CUSTOM_ID,                      1000  },
 // INTERFACE_INFO_CMD_LIST
    {"INTERFACE_INFO_ID",                      INTERFACE_INFO_ID,                      0     },
    {"INTERFACE_INFO_DISPLAYNAME",             INTERFACE_INFO_DISPLAYNAME,             1     },
    {"INTERFACE_INFO_TLTYPE",                  INTERFACE_INFO_TLTYPE,                  2     },
    {"INTERFACE_INFO_CUSTOM_ID",               INTERFACE_INFO_CUSTOM_ID,               1000  },
 // DEVICE_ACCESS_FLAGS_LIST
    {"DEVICE_ACCESS_UNKNOWN",                  DEVICE_ACCESS_UNKNOWN,                  0     },
    {"DEVICE_ACCESS_NONE",                     DEVICE_ACCESS_NONE,                     1     },
    {"DEVICE_ACCESS_READONLY",                 DEVICE_ACCESS_READONLY,                 2     },
    {"DEVICE_ACCESS_CONTROL",                  DEVICE_ACCESS_CONTROL,                  3     },
    {"DEVICE_ACCESS_EXCLUSIVE",                DEVICE_ACCESS_EXCLUSIVE,                4     },
    {"DEVICE_ACCESS_CUSTOM_ID",                DEVICE_ACCESS_CUSTOM_ID,                1000  },
 // DEVICE_ACCESS_STATUS_LIST
    {"DEVICE_ACCESS_STATUS_UNKNOWN",           DEVICE_ACCESS_STATUS_UNKNOWN,           0     },
    {"DEVICE_ACCESS_STATUS_READWRITE",         DEVICE_ACCESS_STATUS_READWRITE,         1     },
    {"DEVICE_ACCESS_STATUS_READONLY",          DEVICE_ACCESS_STATUS_READONLY,          2     },
    {"DEVICE_ACCESS_STATUS_NOACCESS",          DEVICE_ACCESS_STATUS_NOACCESS,          3     },
    {"DEVICE_ACCESS_STATUS_BUSY",              DEVICE_ACCESS_STATUS_BUSY,              4     },
    {"DEVICE_ACCESS_STATUS_OPEN_READWRITE",    DEVICE_ACCESS_STATUS_OPEN_READWRITE,    5     },
    {"DEVICE_ACCESS_STATUS_OPEN_READONLY",     DEVICE_ACCESS_STATUS_OPEN_READONLY,     6     },
    {"DEVICE_ACCESS_STATUS_CUSTOM_ID",         DEVICE_ACCESS_STATUS_CUSTOM_ID,         1000  },
 // DEVICE_INFO_CMD_LIST
    {"DEVICE_INFO_ID",                         DEVICE_INFO_ID,                         0     },
    {"DEVICE_INFO_VENDOR",                     DEVICE_INFO_VENDOR,                     1     },
    {"DEVICE_INFO_MODEL",                      DEVICE_INFO_MODEL,                      2     },
    {"DEVICE_INFO_TLTYPE",                     DEVICE_INFO_TLTYPE,                     3     },
    {"DEVICE_INFO_DISPLAYNAME",                DEVICE_INFO_DISPLAYNAME,                4     },
    {"DEVICE_INFO_ACCESS_STATUS",              DEVICE_INFO_ACCESS_STATUS,              5     },
    {"DEVICE_INFO_USER_DEFINED_NAME",          DEVICE_INFO_USER_DEFINED_NAME,          6     },
    {"DEVICE_INFO_SERIAL_NUMBER",              DEVICE_INFO_SERIAL_NUMBER,              7     },
    {"DEVICE_INFO_VERSION",                    DEVICE_INFO_VERSION,                    8     },
    {"DEVICE_INFO_TIMESTAMP_FREQUENCY",        DEVICE_INFO_TIMESTAMP_FREQUENCY,        9     },
    {"DEVICE_INFO_CUSTOM_ID",                  DEVICE_INFO_CUSTOM_ID,                  1000  },
 // ACQ_QUEUE_TYPE_LIST
    {"ACQ_QUEUE_INPUT_TO_OUTPUT",              ACQ_QUEUE_INPUT_TO_OUTPUT,              0     },
    {"ACQ_QUEUE_OUTPUT_DISCARD",               ACQ_QUEUE_OUTPUT_DISCARD,               1     },
    {"ACQ_QUEUE_ALL_TO_INPUT",                 ACQ_QUEUE_ALL_TO_INPUT,                 2     },
    {"ACQ_QUEUE_UNQUEUED_TO_INPUT",            ACQ_QUEUE_UNQUEUED_TO_INPUT,            3     },
    {"ACQ_QUEUE_ALL_DISCARD",                  ACQ_QUEUE_ALL_DISCARD,                  4     },
    {"ACQ_QUEUE_CUSTOM_ID",                    ACQ_QUEUE_CUSTOM_ID,                    1000  },
 // ACQ_START_FLAGS_LIST
    {"ACQ_START_FLAGS_DEFAULT",                ACQ_START_FLAGS_DEFAULT,                0     },
    {"ACQ_START_FLAGS_CUSTOM_ID",              ACQ_START_FLAGS_CUSTOM_ID,              1000  },
 // ACQ_STOP_FLAGS_LIST
    {"ACQ_STOP_FLAGS_DEFAULT",                 ACQ_STOP_FLAGS_DEFAULT,                 0     },
    {"ACQ_STOP_FLAGS_KILL",                    ACQ_STOP_FLAGS_KILL,                    1     },
    {"ACQ_STOP_FLAGS_CUSTOM_ID",               ACQ_STOP_FLAGS_CUSTOM_ID,               1000  },
 // STREAM_INFO_CMD_LIST
    {"STREAM_INFO_ID",                         STREAM_INFO_ID,                         0     },
    {"STREAM_INFO_NUM_DELIVERED",              STREAM_INFO_NUM_DELIVERED,              1     },
    {"STREAM_INFO_NUM_UNDERRUN",               STREAM_INFO_NUM_UNDERRUN,               2     },
    {"STREAM_INFO_NUM_ANNOUNCED",              STREAM_INFO_NUM_ANNOUNCED,              3     },
    {"STREAM_INFO_NUM_QUEUED",                 STREAM_INFO_NUM_QUEUED,                 4     },
    {"STREAM_INFO_NUM_AWAIT_DELIVERY",         STREAM_INFO_NUM_AWAIT_DELIVERY,         5     },
    {"STREAM_INFO_NUM_STARTED",                STREAM_INFO_NUM_STARTED,                6     },
    {"STREAM_INFO_PAYLOAD_SIZE",               STREAM_INFO_PAYLOAD_SIZE,               7     },
    {"STREAM_INFO_IS_GRABBING",                STREAM_INFO_IS_GRABBING,                8     },
    {"STREAM_INFO_DEFINES_PAYLOADSIZE",        STREAM_INFO_DEFINES_PAYLOADSIZE,        9     },
    {"STREAM_INFO_TLTYPE",                     STREAM_INFO_TLTYPE,                     10    },
    {"STREAM_INFO_NUM_CHUNKS_MAX",             STREAM_INFO_NUM_CHUNKS_MAX,             11    },
    {"STREAM_INFO_BUF_ANNOUNCE_MIN",           STREAM_INFO_BUF_ANNOUNCE_MIN,           12    },
    {"STREAM_INFO_BUF_ALIGNMENT",              STREAM_INFO_BUF_ALIGNMENT,              13    },
    {"STREAM_INFO_CUSTOM_ID",                  STREAM_INFO_CUSTOM_ID,                  1000  },
 // BUFFER_INFO_CMD_LIST
    {"BUFFER_INFO_BASE",                       BUFFER_INFO_BASE,                       0     },
    {"BUFFER_INFO_SIZE",                       BUFFER_INFO_SIZE,                       1     },
    {"BUFFER_INFO_USER_PTR",                   BUFFER_INFO_USER_PTR,                   2     },
    {"BUFFER_INFO_TIMESTAMP",                  BUFFER_INFO_TIMESTAMP,                  3     },
    {"BUFFER_INFO_NEW_DATA",                   BUFFER_INFO_NEW_DATA,                   4     },
    {"BUFFER_INFO_IS_QUEUED",                  BUFFER_INFO_IS_QUEUED,                  5     },
    {"BUFFER_INFO_IS_ACQUIRING",               BUFFER_INFO_IS_ACQUIRING,               6     },
    {"BUFFER_INFO_IS_INCOMPLETE",              BUFFER_INFO_IS_INCOMPLETE,              7     },
    {"BUFFER_INFO_TLTYPE",                     BUFFER_INFO_TLTYPE,                     8     },
    {"BUFFER_INFO_SIZE_FILLED",                BUFFER_INFO_SIZE_FILLED,                9     },
    {"BUFFER_INFO_WIDTH",                      BUFFER_INFO_WIDTH,                      10    },
    {"BUFFER_INFO_HEIGHT",                     BUFFER_INFO_HEIGHT,                     11    },
    {"BUFFER_INFO_XOFFSET",                    BUFFER_INFO_XOFFSET,                    12    },
    {"BUFFER_INFO_YOFFSET",                    BUFFER_INFO_YOFFSET,                    13    },
    {"BUFFER_INFO_XPADDING",                   BUFFER_INFO_XPADDING,                   14    },
    {"BUFFER_INFO_YPADDING",                   BUFFER_INFO_YPADDING,                   15    },
    {"BUFFER_INFO_FRAMEID",                    BUFFER_INFO_FRAMEID,                    16    },
    {"BUFFER_INFO_IMAGEPRESENT",               BUFFER_INFO_IMAGEPRESENT,               17    },
    {"BUFFER_INFO_IMAGEOFFSET",                BUFFER_INFO_IMAGEOFFSET,                18    },
    {"BUFFER_INFO_PAYLOADTYPE",                BUFFER_INFO_PAYLOADTYPE,                19    },
    {"BUFFER_INFO_PIXELFORMAT",                BUFFER_INFO_PIXELFORMAT,                20    },
    {"BUFFER_INFO_PIXELFORMAT_NAMESPACE",      BUFFER_INFO_PIXELFORMAT_NAMESPACE,      21    },
    {"BUFFER_INFO_DELIVERED_IMAGEHEIGHT",      BUFFER_INFO_DELIVERED_IMAGEHEIGHT,      22    },
    {"BUFFER_INFO_DELIVERED_CHUNKPAYLOADSIZE", BUFFER_INFO_DELIVERED_CHUNKPAYLOADSIZE, 23    },
    {"BUFFER_INFO_CHUNKLAYOUTID",              BUFFER_INFO_CHUNKLAYOUTID,              24    },
    {"BUFFER_INFO_FILENAME",                   BUFFER_INFO_FILENAME,                   25    },
    {"BUFFER_INFO_PIXEL_ENDIANNESS",           BUFFER_INFO_PIXEL_ENDIANNESS,           26    },
    {"BUFFER_INFO_DATA_SIZE",                  BUFFER_INFO_DATA_SIZE,                  27    },
    {"BUFFER_INFO_TIMESTAMP_NS",               BUFFER_INFO_TIMESTAMP_NS,               28    },
    {"BUFFER_INFO_DATA_LARGER_THAN_BUFFER",    BUFFER_INFO_DATA_LARGER_THAN_BUFFER,    29    },
    {"BUFFER_INFO_CONTAINS_CHUNKDATA",         BUFFER_INFO_CONTAINS_CHUNKDATA,         30    },
    {"BUFFER_INFO_CUSTOM_ID",                  BUFFER_INFO_CUSTOM_ID,                  1000  },
 // BUFFER_PART_INFO_CMD_LIST
    {"BUFFER_PART_INFO_BASE",                  BUFFER_PART_INFO_BASE,                  0     },
    {"BUFFER_PART_INFO_DATA_SIZE",             BUFFER_PART_INFO_DATA_SIZE,             1     },
    {"BUFFER_PART_INFO_DATA_TYPE",             BUFFER_PART_INFO_DATA_TYPE,             2     },
    {"BUFFER_PART_INFO_DATA_FORMAT",           BUFFER_PART_INFO_DATA_FORMAT,           3     },
    {"BUFFER_PART_INFO_DATA_FORMAT_NAMESPACE", BUFFER_PART_INFO_DATA_FORMAT_NAMESPACE, 4     },
    {"BUFFER_PART_INFO_WIDTH",                 BUFFER_PART_INFO_WIDTH,                 5     },
    {"BUFFER_PART_INFO_HEIGHT",                BUFFER_PART_INFO_HEIGHT,                6     },
    {"BUFFER_PART_INFO_XOFFSET",               BUFFER_PART_INFO_XOFFSET,               7     },
    {"BUFFER_PART_INFO_YOFFSET",               BUFFER_PART_INFO_YOFFSET,               8     },
    {"BUFFER_PART_INFO_XPADDING",              BUFFER_PART_INFO_XPADDING,              9     },
    {"BUFFER_PART_INFO_SOURCE_ID",             BUFFER_PART_INFO_SOURCE_ID,             10    },
    {"BUFFER_PART_INFO_DELIVERED_IMAGEHEIGHT", BUFFER_PART_INFO_DELIVERED_IMAGEHEIGHT, 11    },
    {"BUFFER_PART_INFO_CUSTOM_ID",             BUFFER_PART_INFO_CUSTOM_ID,             1000  },
 // PARTDATATYPE_IDS
    {"PART_DATATYPE_UNKNOWN",                  PART_DATATYPE_UNKNOWN,                  0     },
    {"PART_DATATYPE_2D_IMAGE",                 PART_DATATYPE_2D_IMAGE,                 1     },
    {"PART_DATATYPE_2D_PLANE_BIPLANAR",        PART_DATATYPE_2D_PLANE_BIPLANAR,        2     },
    {"PART_DATATYPE_2D_PLANE_TRIPLANAR",       PART_DATATYPE_2D_PLANE_TRIPLANAR,       3     },
    {"PART_DATATYPE_2D_PLANE_QUADPLANAR",      PART_DATATYPE_2D_PLANE_QUADPLANAR,      4     },
    {"PART_DATATYPE_3D_IMAGE",                 PART_DATATYPE_3D_IMAGE,                 5     },
    {"PART_DATATYPE_3D_PLANE_BIPLANAR",        PART_DATATYPE_3D_PLANE_BIPLANAR,        6     },
    {"PART_DATATYPE_3D_PLANE_TRIPLANAR",       PART_DATATYPE_3D_PLANE_TRIPLANAR,       7     },
    {"PART_DATATYPE_3D_PLANE_QUADPLANAR",      PART_DATATYPE_3D_PLANE_QUADPLANAR,      8     },
    {"PART_DATATYPE_CONFIDENCE_MAP",           PART_DATATYPE_CONFIDENCE_MAP,           9     },
    {"PART_DATATYPE_CUSTOM_ID",                PART_DATATYPE_CUSTOM_ID,                1000  },
 // PAYLOADTYPE_INFO_IDS
    {"PAYLOAD_TYPE_UNKNOWN",                   PAYLOAD_TYPE_UNKNOWN,                   0     },
    {"PAYLOAD_TYPE_IMAGE",                     PAYLOAD_TYPE_IMAGE,                     1     },
    {"PAYLOAD_TYPE_RAW_DATA",                  PAYLOAD_TYPE_RAW_DATA,                  2     },
    {"PAYLOAD_TYPE_FILE",                      PAYLOAD_TYPE_FILE,                      3     },
    {"PAYLOAD_TYPE_CHUNK_DATA",                PAYLOAD_TYPE_CHUNK_DATA,                4     },
    {"PAYLOAD_TYPE_JPEG",                      PAYLOAD_TYPE_JPEG,                      5     },
    {"PAYLOAD_TYPE_JPEG2000",                  PAYLOAD_TYPE_JPEG2000,                  6     },
    {"PAYLOAD_TYPE_H264",                      PAYLOAD_TYPE_H264,                      7     },
    {"PAYLOAD_TYPE_CHUNK_ONLY",                PAYLOAD_TYPE_CHUNK_ONLY,                8     },
    {"PAYLOAD_TYPE_DEVICE_SPECIFIC",           PAYLOAD_TYPE_DEVICE_SPECIFIC,           9     },
    {"PAYLOAD_TYPE_MULTI_PART",                PAYLOAD_TYPE_MULTI_PART,                10    },
    {"PAYLOAD_TYPE_CUSTOM_ID",                 PAYLOAD_TYPE_CUSTOM_ID,                 1000  },
 // PIXELFORMAT_NAMESPACE_IDS
    {"PIXELFORMAT_NAMESPACE_UNKNOWN",          PIXELFORMAT_NAMESPACE_UNKNOWN,          0     },
    {"PIXELFORMAT_NAMESPACE_GEV",              PIXELFORMAT_NAMESPACE_GEV,              1     },
    {"PIXELFORMAT_NAMESPACE_IIDC",             PIXELFORMAT_NAMESPACE_IIDC,             2     },
    {"PIXELFORMAT_NAMESPACE_PFNC_16BIT",       PIXELFORMAT_NAMESPACE_PFNC_16BIT,       3     },
    {"PIXELFORMAT_NAMESPACE_PFNC_32BIT",       PIXELFORMAT_NAMESPACE_PFNC_32BIT,       4     },
    {"PIXELFORMAT_NAMESPACE_CUSTOM_ID",        PIXELFORMAT_NAMESPACE_CUSTOM_ID,        1000  },
 // PIXELENDIANNESS_IDS
    {"PIXELENDIANNESS_UNKNOWN",                PIXELENDIANNESS_UNKNOWN,                0     },
    {"PIXELENDIANNESS_LITTLE",                 PIXELENDIANNESS_LITTLE,                 1     },
    {"PIXELENDIANNESS_BIG",                    PIXELENDIANNESS_BIG,                    2     },
 // PORT_INFO_CMD_LIST
    {"PORT_INFO_ID",                           PORT_INFO_ID,                           0     },
    {"PORT_INFO_VENDOR",                       PORT_INFO_VENDOR,                       1     },
    {"PORT_INFO_MODEL",                        PORT_INFO_MODEL,                        2     },
    {"PORT_INFO_TLTYPE",                       PORT_INFO_TLTYPE,                       3     },
    {"PORT_INFO_MODULE",                       PORT_INFO_MODULE,                       4     },
    {"PORT_INFO_LITTLE_ENDIAN",                PORT_INFO_LITTLE_ENDIAN,                5     },
    {"PORT_INFO_BIG_ENDIAN",                   PORT_INFO_BIG_ENDIAN,                   6     },
    {"PORT_INFO_ACCESS_READ",                  PORT_INFO_ACCESS_READ,                  7     },
    {"PORT_INFO_ACCESS_WRITE",                 PORT_INFO_ACCESS_WRITE,                 8     },
    {"PORT_INFO_ACCESS_NA",                    PORT_INFO_ACCESS_NA,                    9     },
    {"PORT_INFO_ACCESS_NI",                    PORT_INFO_ACCESS_NI,                    10    },
    {"PORT_INFO_VERSION",                      PORT_INFO_VERSION,                      11    },
    {"PORT_INFO_PORTNAME",                     PORT_INFO_PORTNAME,                     12    },
    {"PORT_INFO_CUSTOM_ID",                    PORT_INFO_CUSTOM_ID,                    1000  },
 // URL_SCHEME_IDS
    {"URL_SCHEME_LOCAL",                       URL_SCHEME_LOCAL,                       0     },
    {"URL_SCHEME_HTTP",                        URL_SCHEME_HTTP,                        1     },
    {"URL_SCHEME_FILE",                        URL_SCHEME_FILE,                        2     },
    {"URL_SCHEME_CUSTOM_ID",                   URL_SCHEME_CUSTOM_ID,                   1000  },
 // URL_INFO_CMD_LIST
    {"URL_INFO_URL",                           URL_INFO_URL,                           0     },
    {"URL_INFO_SCHEMA_VER_MAJOR",              URL_INFO_SCHEMA_VER_MAJOR,              1     },
    {"URL_INFO_SCHEMA_VER_MINOR",              URL_INFO_SCHEMA_VER_MINOR,              2     },
    {"URL_INFO_FILE_VER_MAJOR",                URL_INFO_FILE_VER_MAJOR,                3     },
    {"URL_INFO_FILE_VER_MINOR",                URL_INFO_FILE_VER_MINOR,                4     },
    {"URL_INFO_FILE_VER_SUBMINOR",             URL_INFO_FILE_VER_SUBMINOR,             5     },
    {"URL_INFO_FILE_SHA1_HASH",                URL_INFO_FILE_SHA1_HASH,                6     },
    {"URL_INFO_FILE_REGISTER_ADDRESS",         URL_INFO_FILE_REGISTER_ADDRESS,         7     },
    {"URL_INFO_FILE_SIZE",                     URL_INFO_FILE_SIZE,                     8     },
    {"URL_INFO_SCHEME",                        URL_INFO_SCHEME,                        9     },
    {"URL_INFO_FILENAME",                      URL_INFO_FILENAME,                      10    },
    {"URL_INFO_CUSTOM_ID",                     URL_INFO_CUSTOM_ID,                     1000  },
 // EVENT_TYPE_LIST
    {"EVENT_ERROR",                            EVENT_ERROR,                            0     },
    {"EVENT_NEW_BUFFER",                       EVENT_NEW_BUFFER,                       1     },
    {"EVENT_FEATURE_INVALIDATE",               EVENT_FEATURE_INVALIDATE,               2     },
    {"EVENT_FEATURE_CHANGE",                   EVENT_FEATURE_CHANGE,                   3     },
    {"EVENT_REMOTE_DEVICE",                    EVENT_REMOTE_DEVICE,                    4     },
    {"EVENT_MODULE",                           EVENT_MODULE,                           5     },
    {"EVENT_CUSTOM_ID",                        EVENT_CUSTOM_ID,                        1000  },
 // EVENT_INFO_CMD_LIST
    {"EVENT_EVENT_TYPE",                       EVENT_EVENT_TYPE,                       0     },
    {"EVENT_NUM_IN_QUEUE",                     EVENT_NUM_IN_QUEUE,                     1     },
    {"EVENT_NUM_FIRED",                        EVENT_NUM_FIRED,                        2     },
    {"EVENT_SIZE_MAX",                         EVENT_SIZE_MAX,                         3     },
    {"EVENT_INFO_DATA_SIZE_MAX",               EVENT_INFO_DATA_SIZE_MAX,               4     },
    {"EVENT_INFO_CUSTOM_ID",                   EVENT_INFO_CUSTOM_ID,                   1000  },
 // EVENT_DATA_INFO_CMD_LIST
    {"EVENT_DATA_ID",                          EVENT_DATA_ID,                          0     },
    {"EVENT_DATA_VALUE",                       EVENT_DATA_VALUE,                       1     },
    {"EVENT_DATA_NUMID",                       EVENT_DATA_NUMID,                       2     },
    {"EVENT_DATA_CUSTOM_ID",                   EVENT_DATA_CUSTOM_ID,                   1000  },
};

} // namespace

TEST(GenTLHeader, HasTheValuesOfTheStandard)
{
    std::set<std::string> names;
    for (const Row& row : values) {
        EXPECT_EQ(row.standard, row.value) << row.name;
        EXPECT_TRUE(names.insert(row.name).second) << row.name << " stands in the table twice";
    }
}

TEST(GenTLHeader, HasTypesOfTheStandardsWidth)
{
    EXPECT_TRUE((std::is_same_v<GC_ERROR, int32_t>));
    EXPECT_TRUE((std::is_same_v<bool8_t, uint8_t>));
    EXPECT_EQ(4U, sizeof(INFO_DATATYPE));
    EXPECT_EQ(4U, sizeof(EVENT_TYPE));
    EXPECT_EQ(4U, sizeof(ACQ_QUEUE_TYPE));
    EXPECT_EQ(8U, sizeof(PIXELFORMAT_NAMESPACE_ID));
    EXPECT_EQ(sizeof(void*), sizeof(BUFFER_HANDLE));
    EXPECT_EQ(UINT64_MAX, GENTL_INFINITE);
    EXPECT_EQ(nullptr, static_cast<void*>(GENTL_INVALID_HANDLE));
}

TEST(GenTLHeader, PacksItsRecords)
{
    EXPECT_EQ(24U, sizeof(PORT_REGISTER_STACK_ENTRY));
    EXPECT_EQ(8U, offsetof(PORT_REGISTER_STACK_ENTRY, pBuffer));
    EXPECT_EQ(16U, offsetof(PORT_REGISTER_STACK_ENTRY, Size));
    EXPECT_EQ(16U, sizeof(EVENT_NEW_BUFFER_DATA));
    EXPECT_EQ(8U, offsetof(EVENT_NEW_BUFFER_DATA, pUserPointer));
    EXPECT_EQ(24U, sizeof(SINGLE_CHUNK_DATA));
    EXPECT_EQ(1U, alignof(SINGLE_CHUNK_DATA));
}

TEST(GenTLHeader, NamesTheTransportLayersAsTheStandardDoes)
{
    EXPECT_STREQ("Mixed", TLTypeMixedName);
    EXPECT_STREQ("GEV", TLTypeGEVName);
    EXPECT_STREQ("CL", TLTypeCLName);
    EXPECT_STREQ("CXP", TLTypeCXPName);
    EXPECT_STREQ("CLHS", TLTypeCLHSName);
    EXPECT_STREQ("U3V", TLTypeU3VName);
    EXPECT_STREQ("IIDC", TLTypeIIDCName);
    EXPECT_STREQ("UVC", TLTypeUVCName);
    EXPECT_STREQ("Ethernet", TLTypeETHERNETName);
    EXPECT_STREQ("PCI", TLTypePCIName);
    EXPECT_STREQ("Custom", TLTypeCustomName);
}

TEST(GenTLHeader, HasAPointerTypeWithTheSignatureOfEachFunction)
{
    EXPECT_TRUE((std::is_same_v<PGCInitLib, decltype(&GCInitLib)>));
    EXPECT_TRUE((std::is_same_v<PGCCloseLib, decltype(&GCCloseLib)>));
    EXPECT_TRUE((std::is_same_v<PGCGetInfo, decltype(&GCGetInfo)>));
    EXPECT_TRUE((std::is_same_v<PGCGetLastError, decltype(&GCGetLastError)>));
    EXPECT_TRUE((std::is_same_v<PGCReadPort, decltype(&GCReadPort)>));
    EXPECT_TRUE((std::is_same_v<PGCWritePort, decltype(&GCWritePort)>));
    EXPECT_TRUE((std::is_same_v<PGCReadPortStacked, decltype(&GCReadPortStacked)>));
    EXPECT_TRUE((std::is_same_v<PGCWritePortStacked, decltype(&GCWritePortStacked)>));
    EXPECT_TRUE((std::is_same_v<PGCGetPortURL, decltype(&GCGetPortURL)>));
    EXPECT_TRUE((std::is_same_v<PGCGetNumPortURLs, decltype(&GCGetNumPortURLs)>));
    EXPECT_TRUE((std::is_same_v<PGCGetPortURLInfo, decltype(&GCGetPortURLInfo)>));
    EXPECT_TRUE((std::is_same_v<PGCGetPortInfo, decltype(&GCGetPortInfo)>));
    EXPECT_TRUE((std::is_same_v<PGCRegisterEvent, decltype(&GCRegisterEvent)>));
    EXPECT_TRUE((std::is_same_v<PGCUnregisterEvent, decltype(&GCUnregisterEvent)>));
    EXPECT_TRUE((std::is_same_v<PEventGetData, decltype(&EventGetData)>));
    EXPECT_TRUE((std::is_same_v<PEventGetDataInfo, decltype(&EventGetDataInfo)>));
    EXPECT_TRUE((std::is_same_v<PEventGetInfo, decltype(&EventGetInfo)>));
    EXPECT_TRUE((std::is_same_v<PEventFlush, decltype(&EventFlush)>));
    EXPECT_TRUE((std::is_same_v<PEventKill, decltype(&EventKill)>));
    EXPECT_TRUE((std::is_same_v<PTLOpen, decltype(&TLOpen)>));
    EXPECT_TRUE((std::is_same_v<PTLClose, decltype(&TLClose)>));
    EXPECT_TRUE((std::is_same_v<PTLGetInfo, decltype(&TLGetInfo)>));
    EXPECT_TRUE((std::is_same_v<PTLGetNumInterfaces, decltype(&TLGetNumInterfaces)>));
    EXPECT_TRUE((std::is_same_v<PTLGetInterfaceID, decltype(&TLGetInterfaceID)>));
    EXPECT_TRUE((std::is_same_v<PTLGetInterfaceInfo, decltype(&TLGetInterfaceInfo)>));
    EXPECT_TRUE((std::is_same_v<PTLOpenInterface, decltype(&TLOpenInterface)>));
    EXPECT_TRUE((std::is_same_v<PTLUpdateInterfaceList, decltype(&TLUpdateInterfaceList)>));
    EXPECT_TRUE((std::is_same_v<PIFClose, decltype(&IFClose)>));
    EXPECT_TRUE((std::is_same_v<PIFGetInfo, decltype(&IFGetInfo)>));
    EXPECT_TRUE((std::is_same_v<PIFGetNumDevices, decltype(&IFGetNumDevices)>));
    EXPECT_TRUE((std::is_same_v<PIFGetDeviceID, decltype(&IFGetDeviceID)>));
    EXPECT_TRUE((std::is_same_v<PIFUpdateDeviceList, decltype(&IFUpdateDeviceList)>));
    EXPECT_TRUE((std::is_same_v<PIFGetDeviceInfo, decltype(&IFGetDeviceInfo)>));
    EXPECT_TRUE((std::is_same_v<PIFOpenDevice, decltype(&IFOpenDevice)>));
    EXPECT_TRUE((std::is_same_v<PIFGetParentTL, decltype(&IFGetParentTL)>));
    EXPECT_TRUE((std::is_same_v<PDevGetPort, decltype(&DevGetPort)>));
    EXPECT_TRUE((std::is_same_v<PDevGetNumDataStreams, decltype(&DevGetNumDataStreams)>));
    EXPECT_TRUE((std::is_same_v<PDevGetDataStreamID, decltype(&DevGetDataStreamID)>));
    EXPECT_TRUE((std::is_same_v<PDevOpenDataStream, decltype(&DevOpenDataStream)>));
    EXPECT_TRUE((std::is_same_v<PDevGetInfo, decltype(&DevGetInfo)>));
    EXPECT_TRUE((std::is_same_v<PDevClose, decltype(&DevClose)>));
    EXPECT_TRUE((std::is_same_v<PDevGetParentIF, decltype(&DevGetParentIF)>));
    EXPECT_TRUE((std::is_same_v<PDSAnnounceBuffer, decltype(&DSAnnounceBuffer)>));
    EXPECT_TRUE((std::is_same_v<PDSAllocAndAnnounceBuffer, decltype(&DSAllocAndAnnounceBuffer)>));
    EXPECT_TRUE((std::is_same_v<PDSFlushQueue, decltype(&DSFlushQueue)>));
    EXPECT_TRUE((std::is_same_v<PDSStartAcquisition, decltype(&DSStartAcquisition)>));
    EXPECT_TRUE((std::is_same_v<PDSStopAcquisition, decltype(&DSStopAcquisition)>));
    EXPECT_TRUE((std::is_same_v<PDSGetInfo, decltype(&DSGetInfo)>));
    EXPECT_TRUE((std::is_same_v<PDSGetBufferID, decltype(&DSGetBufferID)>));
    EXPECT_TRUE((std::is_same_v<PDSClose, decltype(&DSClose)>));
    EXPECT_TRUE((std::is_same_v<PDSRevokeBuffer, decltype(&DSRevokeBuffer)>));
    EXPECT_TRUE((std::is_same_v<PDSQueueBuffer, decltype(&DSQueueBuffer)>));
    EXPECT_TRUE((std::is_same_v<PDSGetBufferInfo, decltype(&DSGetBufferInfo)>));
    EXPECT_TRUE((std::is_same_v<PDSGetBufferChunkData, decltype(&DSGetBufferChunkData)>));
    EXPECT_TRUE((std::is_same_v<PDSGetParentDev, decltype(&DSGetParentDev)>));
    EXPECT_TRUE((std::is_same_v<PDSGetNumBufferParts, decltype(&DSGetNumBufferParts)>));
    EXPECT_TRUE((std::is_same_v<PDSGetBufferPartInfo, decltype(&DSGetBufferPartInfo)>));
}
