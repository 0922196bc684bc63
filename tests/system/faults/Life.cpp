#include "system/faults/Life.h"

#include <algorithm>
#include <array>
#include <utility>

#include <gtest/gtest.h>

#include "zvgr/FrameStamp.h"

#include "system/fixture.h"

namespace zvsystem {

using namespace GenTL;

namespace {

constexpr uint64_t scan_timeout_ms = 1000;
constexpr uint64_t short_wait_ms = 10; // where nothing comes, however long the wait
constexpr uint64_t long_wait_ms = 60000;
constexpr uint64_t frames_wanted = 4;
constexpr size_t buffers_of_producer = 4;
constexpr size_t frame_size = size_t{64} * 48;
constexpr size_t guard_size = 4096;
constexpr unsigned char guard = 0xA5;
constexpr uint64_t user_id_address = 0x1100;
constexpr size_t largest_description = size_t{1} << 22U;

/// Bytes other than printable ASCII as numbers.
std::string printable(const std::string& text)
{
    std::string shown;
    for (const char c : text) {
        if (c >= ' ' && c <= '~')
            shown += c;
        else
            shown += "\\" + std::to_string(static_cast<unsigned char>(c));
    }
    return shown;
}

/// The beginning and the length of a long text.
std::string shortened(const std::string& text)
{
    return text.size() <= 40 ? text : text.substr(0, 10) + "... of " + std::to_string(text.size());
}

std::string what_is(const std::string& description, size_t length)
{
    if (description.size() != length)
        return "short";
    if (description.rfind("<?xml", 0) != 0)
        return "garbage";
    return description.find("</RegisterDescription>") != std::string::npos ? "whole" : "cut off";
}

class Life {
public:
    Life(const Functions& gentl, Mode mode, Frames frames) : m_gentl{gentl}, m_mode{mode}, m_frames{frames} {}

    std::vector<std::string> live()
    {
        if (note("TLOpen", m_gentl.TLOpen(&m_system))) {
            m_last_error = last_error();
            list_interfaces();
            if (note("TLOpenInterface", m_gentl.TLOpenInterface(m_system, "FG0", &m_interface)))
                use_interface();
            note("TLClose", m_gentl.TLClose(m_system));
        }
        return m_lines;
    }

private:
    bool note(const std::string& step, GC_ERROR code, const std::string& value = {})
    {
        std::string line = step + ": " + std::to_string(code);
        if (code != GC_ERR_SUCCESS) {
            const std::string text = last_error();
            line += text == m_last_error ? ", silent" : " \"" + text + "\"";
            m_last_error = text;
        }
        m_lines.push_back(line + (value.empty() ? "" : ", " + value));
        return code == GC_ERR_SUCCESS;
    }

    std::string last_error() const
    {
        std::array<char, 1024> text{};
        size_t size = text.size();
        GC_ERROR code = GC_ERR_SUCCESS;
        EXPECT_EQ(GC_ERR_SUCCESS, m_gentl.GCGetLastError(&code, text.data(), &size));
        return text.data();
    }

    /// What a typed query gives; `which` are its arguments before the outputs.
    template <class Query, class... Which>
    void note_text(const std::string& step, const Query& query, Which... which)
    {
        std::array<char, 1024> text{};
        size_t size = text.size();
        INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
        const GC_ERROR code = query(which..., &type, text.data(), &size);
        note(step, code, code == GC_ERR_SUCCESS ? "'" + shortened(printable(text.data())) + "'" : "");
    }
    template <class Query, class... Which>
    std::pair<GC_ERROR, uint64_t> number(const Query& query, Which... which) const
    {
        uint64_t value = 0; // little-endian: narrower types fill the low bytes
        size_t size = sizeof value;
        INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
        const GC_ERROR code = query(which..., &type, &value, &size);
        return {code, value};
    }
    void note_stream(const std::string& step, STREAM_INFO_CMD command)
    {
        const auto [code, value] = number(m_gentl.DSGetInfo, m_stream, command);
        note(step, code, std::to_string(value));
    }
    uint64_t of_buffer(BUFFER_HANDLE buffer, BUFFER_INFO_CMD command) const
    {
        const auto [code, value] = number(m_gentl.DSGetBufferInfo, m_stream, buffer, command);
        EXPECT_EQ(GC_ERR_SUCCESS, code);
        return value;
    }
    template <class Count>
    void note_count(const std::string& step, const Count& query, void* module)
    {
        uint32_t count = 0;
        const GC_ERROR code = query(module, &count);
        note(step, code, std::to_string(count));
    }

    void list_interfaces()
    {
        note("TLUpdateInterfaceList", m_gentl.TLUpdateInterfaceList(m_system, nullptr, scan_timeout_ms));
        note_count("TLGetNumInterfaces", m_gentl.TLGetNumInterfaces, m_system);
        const auto query = m_gentl.TLGetInterfaceInfo;
        note_text("TLGetInterfaceInfo name", query, m_system, "FG0", INTERFACE_INFO_DISPLAYNAME);
        note_text("TLGetInterfaceInfo transport", query, m_system, "FG0", INTERFACE_INFO_TLTYPE);
    }

    void use_interface()
    {
        list_devices();
        if (note("IFOpenDevice",
                 m_gentl.IFOpenDevice(m_interface, "Device00", DEVICE_ACCESS_CONTROL, &m_device)))
            use_device();
        note("IFClose", m_gentl.IFClose(m_interface));
    }

    void list_devices()
    {
        note("IFUpdateDeviceList", m_gentl.IFUpdateDeviceList(m_interface, nullptr, scan_timeout_ms));
        note_count("IFGetNumDevices", m_gentl.IFGetNumDevices, m_interface);
        const auto query = m_gentl.IFGetDeviceInfo;
        note_text("IFGetDeviceInfo vendor", query, m_interface, "Device00", DEVICE_INFO_VENDOR);
        note_text("IFGetDeviceInfo model", query, m_interface, "Device00", DEVICE_INFO_MODEL);
        note_text("IFGetDeviceInfo serial", query, m_interface, "Device00", DEVICE_INFO_SERIAL_NUMBER);
        note_text("IFGetDeviceInfo version", query, m_interface, "Device00", DEVICE_INFO_VERSION);
    }

    void use_device()
    {
        if (note("DevGetPort", m_gentl.DevGetPort(m_device, &m_port)))
            use_port();
        if (note("DevOpenDataStream", m_gentl.DevOpenDataStream(m_device, "Stream000", &m_stream)))
            use_stream();
        note("DevClose", m_gentl.DevClose(m_device));
    }

    void use_port()
    {
        std::array<char, 300> url{};
        size_t size = url.size();
        INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
        const GC_ERROR code = m_gentl.GCGetPortURLInfo(m_port, 0, URL_INFO_URL, &type, url.data(), &size);
        const std::string text = url.data();
        // Address and length belong to a version of the description and are not looked at here.
        const bool is_usual = text.rfind("Local:", 0) == 0 && std::count(text.begin(), text.end(), ';') == 2;
        note("GCGetPortURLInfo", code, is_usual ? "usual" : "'" + shortened(printable(text)) + "'");
        if (is_usual)
            read_description(text);
        std::array<char, 64> id{"a name"};
        size = id.size();
        const GC_ERROR written = m_gentl.GCWritePort(m_port, user_id_address, id.data(), &size);
        note("GCWritePort", written, std::to_string(size) + " bytes");
        id.fill('~');
        size = id.size();
        const GC_ERROR read = m_gentl.GCReadPort(m_port, user_id_address, id.data(), &size);
        note("GCReadPort", read,
             std::to_string(size) + " bytes, '" + printable(std::string{id.data(), 6}) + "'");
    }

    void read_description(const std::string& url)
    {
        const size_t address = url.find(';') + 1;
        const size_t length = std::stoull(url.substr(url.rfind(';') + 1), nullptr, 16);
        std::string bytes(std::min(length, largest_description), '\0');
        size_t size = bytes.size();
        const GC_ERROR code =
            m_gentl.GCReadPort(m_port, std::stoull(url.substr(address), nullptr, 16), bytes.data(), &size);
        bytes.resize(std::min(size, bytes.size()));
        note("GCReadPort description", code, code == GC_ERR_SUCCESS ? what_is(bytes, length) : "");
    }

    void use_stream()
    {
        note_stream("DSGetInfo payload", STREAM_INFO_PAYLOAD_SIZE);
        note_stream("DSGetInfo alignment", STREAM_INFO_BUF_ALIGNMENT);
        note("GCRegisterEvent", m_gentl.GCRegisterEvent(m_stream, EVENT_NEW_BUFFER, &m_event));
        announce();
        if (!m_buffers.empty()) {
            acquire();
            GC_ERROR revoked = GC_ERR_SUCCESS;
            for (const BUFFER_HANDLE buffer : m_buffers)
                revoked = std::min(revoked, m_gentl.DSRevokeBuffer(m_stream, buffer, nullptr, nullptr));
            note("DSRevokeBuffer", revoked);
        }
        EXPECT_TRUE(std::all_of(m_memory.begin() + frame_size, m_memory.end(), [](unsigned char byte) {
            return byte == guard;
        })) << "memory behind a buffer was written";
        note("DSClose", m_gentl.DSClose(m_stream));
    }

    void announce()
    {
        m_memory.assign(frame_size + guard_size, guard);
        BUFFER_HANDLE buffer = nullptr;
        if (note("DSAnnounceBuffer",
                 m_gentl.DSAnnounceBuffer(m_stream, m_memory.data(), frame_size, nullptr, &buffer)))
            m_buffers.push_back(buffer);
        GC_ERROR announced = GC_ERR_SUCCESS;
        for (size_t i = 0; i < buffers_of_producer; ++i) {
            const GC_ERROR code = m_gentl.DSAllocAndAnnounceBuffer(m_stream, frame_size, nullptr, &buffer);
            announced = std::min(announced, code);
            if (code == GC_ERR_SUCCESS)
                m_buffers.push_back(buffer);
        }
        note("DSAllocAndAnnounceBuffer", announced, std::to_string(m_buffers.size()) + " buffers");
        if (m_buffers.empty())
            return;
        for (const auto& [what, command] :
             {std::pair{"width", BUFFER_INFO_WIDTH}, std::pair{"height", BUFFER_INFO_HEIGHT},
              std::pair{"format", BUFFER_INFO_PIXELFORMAT}})
            note(std::string{"DSGetBufferInfo "} + what, GC_ERR_SUCCESS,
                 std::to_string(of_buffer(m_buffers.back(), command)));
    }

    // In queued mode the camera is started before there is a buffer: a frame that arrives before the start
    // has returned may be lost.
    void acquire()
    {
        const auto queue_all = [this] {
            GC_ERROR queued = GC_ERR_SUCCESS;
            for (const BUFFER_HANDLE buffer : m_buffers)
                queued = std::min(queued, m_gentl.DSQueueBuffer(m_stream, buffer));
            note("DSQueueBuffer", queued);
        };
        const bool is_queued = m_mode == Mode::queued;
        if (!is_queued)
            queue_all();
        const uint64_t frames =
            is_queued ? std::min<uint64_t>(frames_wanted, m_buffers.size()) : GENTL_INFINITE;
        if (!note("DSStartAcquisition",
                  m_gentl.DSStartAcquisition(m_stream, ACQ_START_FLAGS_DEFAULT, frames)))
            return;
        if (is_queued)
            queue_all();
        note("EventGetData", GC_ERR_SUCCESS, is_queued ? frames_in_queued_mode() : frames_in_cyclic_mode());
        note("DSStopAcquisition", m_gentl.DSStopAcquisition(m_stream, ACQ_STOP_FLAGS_DEFAULT));
    }

    std::string frames_in_queued_mode()
    {
        if (m_frames == Frames::come && !eventually([this] {
                return number(m_gentl.DSGetInfo, m_stream, STREAM_INFO_IS_GRABBING).second == 0;
            }))
            return "no end";
        std::string frames = "frames:";
        for (;;) {
            EVENT_NEW_BUFFER_DATA data{};
            size_t size = sizeof data;
            const GC_ERROR code = m_gentl.EventGetData(m_event, &data, &size, short_wait_ms);
            if (code != GC_ERR_SUCCESS)
                return frames + " then " + std::to_string(code);
            frames += ' ' + std::to_string(of_buffer(data.BufferHandle, BUFFER_INFO_FRAMEID)) +
                      mark_of(data.BufferHandle);
        }
    }

    /// Only one frame, without its number, which depends on when it was taken.
    std::string frames_in_cyclic_mode()
    {
        EVENT_NEW_BUFFER_DATA data{};
        size_t size = sizeof data;
        const uint64_t wait = m_frames == Frames::come ? long_wait_ms : short_wait_ms;
        const GC_ERROR code = m_gentl.EventGetData(m_event, &data, &size, wait);
        return code == GC_ERR_SUCCESS ? "frame" + mark_of(data.BufferHandle) : std::to_string(code);
    }

    /// "!" for a damaged frame, "z" for a time stamp of zero, "<" for one that is not after the one before.
    std::string mark_of(BUFFER_HANDLE buffer)
    {
        const uint64_t timestamp = of_buffer(buffer, BUFFER_INFO_TIMESTAMP);
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the query hands the address out as a number
        const auto* const memory = reinterpret_cast<const void*>(of_buffer(buffer, BUFFER_INFO_BASE));
        const auto stamp = zvgr::read_stamp(memory, frame_size);
        std::string mark = stamp && stamp->checksum_ok ? "" : "!";
        if (timestamp == 0)
            mark += 'z';
        else if (timestamp <= m_last_timestamp)
            mark += '<';
        m_last_timestamp = timestamp;
        return mark;
    }

    const Functions& m_gentl;
    const Mode m_mode;
    const Frames m_frames;
    TL_HANDLE m_system{nullptr};
    IF_HANDLE m_interface{nullptr};
    DEV_HANDLE m_device{nullptr};
    PORT_HANDLE m_port{nullptr};
    DS_HANDLE m_stream{nullptr};
    EVENT_HANDLE m_event{nullptr};
    std::vector<BUFFER_HANDLE> m_buffers;
    std::vector<unsigned char> m_memory; // a buffer of the consumer's own, and the memory behind it
    uint64_t m_last_timestamp{0};
    std::string m_last_error;
    std::vector<std::string> m_lines;
};

} // namespace

std::vector<std::string> live(const Functions& gentl, Mode mode, Frames frames)
{
    return Life{gentl, mode, frames}.live();
}

} // namespace zvsystem
