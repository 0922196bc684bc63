#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace zvsim {

/// How a register's value is stored in its bytes; numbers are big-endian.
enum class RegisterKind {
    integer,
    enumeration,
    boolean,
    /// Executed by the value 1; reads 0, for it is done when the write returns.
    command,
    /// IEEE 754, 64 bit.
    floating,
    /// Padded with zeros; without a terminator when it fills the register.
    text,
};

/// What a register holds: an integer for all kinds but floating and text. Nothing: the feature does not exist
/// here, the register reads zeros.
using RegisterValue = std::variant<std::monostate, int64_t, double, std::string>;

/// Whether a register refuses writes while the camera acquires or a consumer has locked its parameters.
enum class Locking { never, while_streaming };

/// One register. `Subject` is what it reads from, `Edit` what it writes to: an accepted write of several
/// registers takes effect as a whole.
template <class Subject, class Edit>
struct RegisterRow {
    /// Of the feature in the description.
    const char* name;
    uint32_t address;
    uint32_t length;
    RegisterKind kind;
    Locking locking;
    RegisterValue (*read)(const Subject& subject);
    /// False refuses an illegal value. Null: read-only.
    bool (*write)(Edit& edit, const RegisterValue& value);
};

/// The bytes of a value.
void encode(const RegisterValue& value, RegisterKind kind, unsigned char* bytes, size_t length);
RegisterValue decode(RegisterKind kind, const unsigned char* bytes, size_t length);

/// The longest register.
constexpr size_t longest_register = 64;

/// The place of one register. Registers are a multiple of four bytes long and lie at multiples of four.
struct RegisterPlace {
    uint64_t address;
    size_t length;
    /// For the class that found it.
    const void* row;
    /// The repetition of the row, for registers that exist several times.
    size_t block;
};

/// All registers of a piece of hardware, for the length of one access.
class RegisterSpace {
public:
    RegisterSpace() = default;
    RegisterSpace(const RegisterSpace&) = delete;
    RegisterSpace& operator=(const RegisterSpace&) = delete;
    virtual ~RegisterSpace() = default;

    /// Reads `size` bytes from `address` on, fewer when the registers end before; how many, or 0 when there
    /// is no register at the address.
    uint32_t read(uint64_t address, unsigned char* bytes, uint32_t size) const;
    /// Writes, the same way; 0 also when one of the registers refuses. Nothing has changed before commit().
    uint32_t write(uint64_t address, const unsigned char* bytes, uint32_t size);
    /// Makes what was written take effect.
    virtual void commit() = 0;
    /// Whether anything is there.
    bool is_mapped(uint64_t address) const;

protected:
    virtual std::optional<RegisterPlace> find(uint64_t address) const = 0;
    virtual void load(const RegisterPlace& place, unsigned char* bytes) const = 0;
    virtual bool store(const RegisterPlace& place, const unsigned char* bytes) = 0;
    /// The text that is served from description_address on.
    virtual const std::string& description() const = 0;
};

/// Where every description lies: far above all registers.
constexpr uint32_t description_address = 0x10000000;

} // namespace zvsim
