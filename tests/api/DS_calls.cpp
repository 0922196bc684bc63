#include "api/DS_calls.h"

#include <algorithm>
#include <ostream>

namespace zvtest {

namespace {

uint8_t pixels[64];
int owner;
constexpr size_t alloc_size = 128;

std::string with_handles(const char* text, DS_HANDLE stream, BUFFER_HANDLE buffer)
{
    return text + low_hex(stream) + ", buffer handle=0x" + low_hex(buffer);
}

} // namespace

StreamOutputs::StreamOutputs() { value.fill(0xA5); }

bool StreamOutputs::are_untouched() const
{
    const StreamOutputs fresh;
    return buffer == fresh.buffer && device == fresh.device && memory == fresh.memory && user == fresh.user &&
           parts == fresh.parts && type == fresh.type && value == fresh.value && size == fresh.size &&
           chunks == fresh.chunks;
}

std::ostream& operator<<(std::ostream& out, const StreamFunction& function) { return out << function.name; }

const std::vector<StreamFunction> stream_functions = {
    {"DSAnnounceBuffer", Priority::debug,
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs& out) {
         return DSAnnounceBuffer(stream, pixels, sizeof pixels, &owner, &out.buffer);
     },
     [](DS_HANDLE stream, BUFFER_HANDLE, const StreamOutputs&) {
         return "Enter DSAnnounceBuffer, stream handle=0x" + low_hex(stream) + ", requested buffer=0x" +
                low_hex(pixels) + ", size=64, private=0x" + low_hex(&owner);
     }},
    {"DSAllocAndAnnounceBuffer", Priority::debug,
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs& out) {
         return DSAllocAndAnnounceBuffer(stream, alloc_size, &owner, &out.buffer);
     },
     [](DS_HANDLE stream, BUFFER_HANDLE, const StreamOutputs&) {
         return "Enter DSAllocAndAnnounceBuffer, stream handle=0x" + low_hex(stream) +
                ", size=128, private=0x" + low_hex(&owner);
     }},
    {"DSRevokeBuffer", Priority::information,
     [](DS_HANDLE stream, BUFFER_HANDLE buffer, StreamOutputs& out) {
         return DSRevokeBuffer(stream, buffer, &out.memory, &out.user);
     },
     [](DS_HANDLE stream, BUFFER_HANDLE buffer, const StreamOutputs& out) {
         return with_handles("Enter DSRevokeBuffer, stream handle=0x", stream, buffer) + ", user buffer=0x" +
                low_hex(out.memory);
     }},
    {"DSQueueBuffer", Priority::trace,
     [](DS_HANDLE stream, BUFFER_HANDLE buffer, StreamOutputs&) { return DSQueueBuffer(stream, buffer); },
     [](DS_HANDLE stream, BUFFER_HANDLE buffer, const StreamOutputs&) {
         return with_handles("Enter DSQueueBuffer, stream handle=0x", stream, buffer);
     }},
    {"DSFlushQueue", Priority::debug,
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs&) {
         return DSFlushQueue(stream, ACQ_QUEUE_ALL_DISCARD);
     },
     [](DS_HANDLE stream, BUFFER_HANDLE, const StreamOutputs&) {
         return "Enter DSFlushQueue, stream handle=0x" + hex16(stream) + ", operation=4";
     }},
    {"DSGetBufferID", Priority::information,
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs& out) {
         return DSGetBufferID(stream, 0, &out.buffer);
     },
     [](DS_HANDLE, BUFFER_HANDLE, const StreamOutputs&) { return std::string("Enter DSGetBufferID"); }},
    {"DSClose", Priority::information,
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs&) { return DSClose(stream); },
     [](DS_HANDLE, BUFFER_HANDLE, const StreamOutputs&) { return std::string("Enter DSClose"); }},
    {"DSGetParentDev", Priority::information,
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs& out) { return DSGetParentDev(stream, &out.device); },
     [](DS_HANDLE, BUFFER_HANDLE, const StreamOutputs&) { return std::string("Enter DSGetParentDev"); }},
    {"DSStartAcquisition", Priority::information,
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs&) { return DSStartAcquisition(stream, 0x1F, 17); },
     [](DS_HANDLE stream, BUFFER_HANDLE, const StreamOutputs&) {
         return "Enter DSStartAcquisition, stream handle=0x" + low_hex(stream) + ", flags=0x1F, frames=17";
     }},
    {"DSStopAcquisition", Priority::information,
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs&) { return DSStopAcquisition(stream, 0x2E); },
     [](DS_HANDLE, BUFFER_HANDLE, const StreamOutputs&) {
         return std::string("Enter DSStopAcquisition, flags=0x2E");
     }},
    {"DSGetInfo", Priority::debug,
     [](DS_HANDLE stream, BUFFER_HANDLE, StreamOutputs& out) {
         return DSGetInfo(stream, STREAM_INFO_NUM_CHUNKS_MAX, &out.type, out.value.data(), &out.size);
     },
     [](DS_HANDLE stream, BUFFER_HANDLE, const StreamOutputs&) {
         return "Enter DSGetInfo, stream handle=0x" + hex16(stream) + ", iInfoCmd=11";
     }},
    {"DSGetBufferInfo", Priority::trace,
     [](DS_HANDLE stream, BUFFER_HANDLE buffer, StreamOutputs& out) {
         return DSGetBufferInfo(stream, buffer, BUFFER_INFO_SIZE, &out.type, out.value.data(), &out.size);
     },
     [](DS_HANDLE stream, BUFFER_HANDLE buffer, const StreamOutputs&) {
         return with_handles("Enter DSGetBufferInfo, info=1, stream handle=0x", stream, buffer);
     }},
    {"DSGetNumBufferParts", Priority::debug,
     [](DS_HANDLE stream, BUFFER_HANDLE buffer, StreamOutputs& out) {
         return DSGetNumBufferParts(stream, buffer, &out.parts);
     },
     [](DS_HANDLE, BUFFER_HANDLE, const StreamOutputs&) { return std::string("Enter DSGetNumBufferParts"); }},
    {"DSGetBufferPartInfo", Priority::debug,
     [](DS_HANDLE stream, BUFFER_HANDLE buffer, StreamOutputs& out) {
         return DSGetBufferPartInfo(stream, buffer, 0, BUFFER_PART_INFO_DATA_SIZE, &out.type,
                                    out.value.data(), &out.size);
     },
     [](DS_HANDLE, BUFFER_HANDLE, const StreamOutputs&) { return std::string("Enter DSGetBufferPartInfo"); }},
    {"DSGetBufferChunkData", Priority::information,
     [](DS_HANDLE stream, BUFFER_HANDLE buffer, StreamOutputs& out) {
         return DSGetBufferChunkData(stream, buffer, nullptr, &out.chunks);
     },
     [](DS_HANDLE, BUFFER_HANDLE, const StreamOutputs&) {
         return std::string("Enter DSGetBufferChunkData");
     }},
};

std::vector<StreamFunction> stream_checking_functions()
{
    std::vector<StreamFunction> checking = stream_functions;
    checking.erase(std::remove_if(checking.begin(), checking.end(),
                                  [](const StreamFunction& function) {
                                      return std::string(function.name) == "DSGetBufferChunkData";
                                  }),
                   checking.end());
    return checking;
}

} // namespace zvtest
