#pragma once

#include <array>
#include <cstring>
#include <string>

#include "unit/simulator/fixtures.h"

// Register access through the C interface, and a camera of a configuration file whose registers are read and
// written by name.

namespace zvsim_test {

using Bytes = std::vector<unsigned char>;

/// What an access answered.
struct Transfer {
    uint32_t status;
    /// As the size word says.
    uint32_t size;
    /// Of a read: as many as were asked for, 0xEE where nothing was written.
    Bytes bytes;
};

template <class Call>
Transfer read_with(const Call& call, uint32_t handle, uint64_t address, uint32_t size)
{
    Transfer transfer{0, size, Bytes(size + 1, 0xEE)};
    transfer.status = call(handle, address, transfer.bytes.data(), &transfer.size);
    transfer.bytes.resize(size);
    return transfer;
}

template <class Call>
Transfer write_with(const Call& call, uint32_t handle, uint64_t address, Bytes bytes)
{
    Transfer transfer{0, static_cast<uint32_t>(bytes.size()), {}};
    bytes.push_back(0); // data() of an empty vector may be null
    transfer.status = call(handle, address, bytes.data(), &transfer.size);
    return transfer;
}

inline Transfer read_camera(uint32_t camera, uint64_t address, uint32_t size)
{
    return read_with(ZVGR_CameraReadReg, camera, address, size);
}
inline Transfer write_camera(uint32_t camera, uint64_t address, const Bytes& bytes)
{
    return write_with(ZVGR_CameraWriteReg, camera, address, bytes);
}
inline Transfer read_grabber(uint32_t grabber, uint64_t address, uint32_t size)
{
    return read_with(ZVGR_GrabberReadReg, grabber, address, size);
}
inline Transfer write_grabber(uint32_t grabber, uint64_t address, const Bytes& bytes)
{
    return write_with(ZVGR_GrabberWriteReg, grabber, address, bytes);
}

/// Big-endian, as registers are.
inline Bytes bytes_of(uint64_t number, size_t length)
{
    Bytes bytes(length);
    for (size_t at = length; at > 0; --at, number >>= 8U)
        bytes[at - 1] = static_cast<unsigned char>(number & 0xFFU);
    return bytes;
}
inline Bytes bytes_of(double number)
{
    uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bytes_of(bits, sizeof bits);
}
/// Padded with zeros.
inline Bytes bytes_of(const std::string& text, size_t length)
{
    Bytes bytes(length);
    std::copy(text.begin(), text.end(), bytes.begin());
    return bytes;
}

inline uint64_t number_from(const Bytes& bytes)
{
    uint64_t number = 0;
    for (const unsigned char byte : bytes)
        number = number << 8U | byte;
    return number;
}
/// Up to the first zero.
inline std::string text_from(const Bytes& bytes)
{
    return {bytes.begin(), std::find(bytes.begin(), bytes.end(), 0)};
}
inline double float_from(const Bytes& bytes)
{
    const uint64_t bits = number_from(bytes);
    double number = 0;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

/// A URL and what lies behind the memory that the library was given.
struct Url {
    std::array<char, zv_url_capacity + 40> memory;
    uint64_t size{zv_url_capacity};
    uint32_t status{0};

    explicit Url(uint32_t handle)
    {
        memory.fill('~');
        status = ZVGR_GetXmlUrl(handle, memory.data(), &size);
    }
    std::string text() const { return {memory.data(), strnlen(memory.data(), zv_url_capacity)}; }
    uint64_t address() const { return field(2); }
    uint32_t length() const { return static_cast<uint32_t>(field(1)); }

private:
    /// Counted from the end.
    uint64_t field(int number) const
    {
        const std::string url = text();
        size_t at = std::string::npos;
        for (; number > 0; --number)
            at = url.rfind(';', at - 1);
        return std::stoull(url.substr(at + 1), nullptr, 16);
    }
};

/// What a consumer can do with a register.
enum class Access {
    read,
    write,
    /// Buffers depend on it: written only while nothing is locked.
    write_unlocked,
    /// Takes a 1, and always reads as 0.
    command
};

/// What kind of value has the name of a register.
enum class Value { none, integer, enumeration };

struct RegisterPlace {
    const char* name;
    uint32_t address;
    uint32_t length;
    Access access{Access::read};
    Value value{Value::none};
};

/// All registers of cameras, by address.
const std::vector<RegisterPlace>& camera_registers();
/// All registers of grabbers, those of a camera for the first one.
const std::vector<RegisterPlace>& grabber_registers();
const RegisterPlace& camera_register(const std::string& name);
const RegisterPlace& grabber_register(const std::string& name);

constexpr int mono8 = 0x01080001;
constexpr int mono16 = 0x01100007;
constexpr int mono12p = 0x010C0047;
constexpr int bayer_rg8 = 0x01080009;
constexpr int yuv411 = 0x020C001E;

/// One grabber with two cameras of a sensor of 66 x 50 pixels, free-running and without a start-up delay,
/// whose pictures have no stamp. The first one has five pixel formats, the second one CoaXPress codes. The
/// first one is open, and has a queued-mode stream that nothing is queued to.
class ConfiguredCamera : public QueuedStream {
protected:
    ConfiguredCamera();

    Transfer write(const std::string& name, uint64_t value) const
    {
        const RegisterPlace& place = camera_register(name);
        return write_camera(camera, place.address, bytes_of(value, place.length));
    }
    Transfer write(const std::string& name, int value) const
    {
        return write(name, static_cast<uint64_t>(value));
    }
    Transfer write(const std::string& name, double value) const
    {
        return write_camera(camera, camera_register(name).address, bytes_of(value));
    }
    Transfer write(const std::string& name, const std::string& text) const
    {
        const RegisterPlace& place = camera_register(name);
        return write_camera(camera, place.address, bytes_of(text, place.length));
    }
    template <class Type>
    void set(const std::string& name, const Type& value) const
    {
        EXPECT_EQ(success, write(name, value).status) << name << " = " << value;
    }
    /// Expects that a value is refused, and that everything stays as it was.
    template <class Type>
    void expect_refused(const std::string& name, Type value) const
    {
        const std::vector<Bytes> before = everything();
        const Transfer written = write(name, value);
        EXPECT_NE(success, written.status) << name << " = " << value;
        EXPECT_EQ(0U, written.size) << name << " = " << value;
        EXPECT_EQ(before, everything()) << name << " = " << value;
    }
    Bytes bytes(const std::string& name) const
    {
        const RegisterPlace& place = camera_register(name);
        const Transfer read = read_camera(camera, place.address, place.length);
        EXPECT_EQ(success, read.status) << name;
        EXPECT_EQ(place.length, read.size) << name;
        return read.bytes;
    }
    uint64_t number(const std::string& name) const { return number_from(bytes(name)); }
    double real(const std::string& name) const { return float_from(bytes(name)); }
    /// Up to the zeros that pad it.
    std::string text(const std::string& name) const { return text_from(bytes(name)); }
    uint64_t grabber_number(const std::string& name, uint32_t camera_index = 0) const
    {
        const RegisterPlace& place = grabber_register(name);
        return number_from(read_grabber(grabber, place.address + 0x100 * camera_index, place.length).bytes);
    }
    /// What all registers hold that do not change by themselves.
    std::vector<Bytes> everything() const;
    /// Width, height and offsets.
    std::vector<uint64_t> picture() const
    {
        return {number("Width"), number("Height"), number("OffsetX"), number("OffsetY")};
    }
    void set_picture(int width, int height, int left, int top) const
    {
        set("Width", width);
        set("Height", height);
        set("OffsetX", left);
        set("OffsetY", top);
    }

    /// One frame of an acquisition of its own.
    std::vector<unsigned char> frame();
    /// Scans and opens everything, after a close.
    void open();
    void reopen();
};

} // namespace zvsim_test
