#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "zvgenapi/Node.h"
#include "zvgenapi/types.h"

namespace zvgenapi {

/// A whole number: Integer, IntReg, MaskedIntReg, StructEntry, IntSwissKnife, IntConverter. Unsigned numbers
/// of 8 bytes above the largest std::int64_t are read as negative ones.
class Integer : public Node {
public:
    static constexpr const char* interface_name = "IInteger";
    static bool fits(const Node& node);
    Integer() = default;
    explicit Integer(const Node& node) noexcept : Node(node) {}

    /// With Verify::yes, throws range if what the device says is not within the limits.
    std::int64_t value(UseCache use_cache = UseCache::yes, Verify verify = Verify::no) const;
    void set(std::int64_t value, Verify verify = Verify::yes);
    std::int64_t minimum() const;
    std::int64_t maximum() const;
    /// At least 1. Steps count from the minimum.
    std::int64_t increment() const;
    /// In the order of the description; empty if every value within the limits may be written.
    std::vector<std::int64_t> valid_values() const;
    Representation representation() const;
    std::string unit() const;
    /// Narrows the limits, for this map only; limits that are wider than the device's have no effect.
    void impose_minimum(std::int64_t value);
    void impose_maximum(std::int64_t value);
};

/// A number: Float, FloatReg, SwissKnife, Converter.
class Float : public Node {
public:
    static constexpr const char* interface_name = "IFloat";
    static bool fits(const Node& node);
    Float() = default;
    explicit Float(const Node& node) noexcept : Node(node) {}

    /// With Verify::yes, throws range if what the device says is not within the limits.
    double value(UseCache use_cache = UseCache::yes, Verify verify = Verify::no) const;
    /// Throws range for NaN, too. Increments are the device's to round to.
    void set(double value, Verify verify = Verify::yes);
    double minimum() const;
    double maximum() const;
    bool has_increment() const;
    /// 0 if there is none.
    double increment() const;
    std::vector<double> valid_values() const;
    Representation representation() const;
    std::string unit() const;
    DisplayNotation display_notation() const;
    /// Digits that are worth showing; 6 if the description says nothing.
    std::int64_t display_precision() const;
    void impose_minimum(double value);
    void impose_maximum(double value);
};

class Boolean : public Node {
public:
    static constexpr const char* interface_name = "IBoolean";
    static bool fits(const Node& node);
    Boolean() = default;
    explicit Boolean(const Node& node) noexcept : Node(node) {}

    /// Whether the number below is the OnValue.
    bool value(UseCache use_cache = UseCache::yes) const;
    void set(bool value, Verify verify = Verify::yes);
};

class Command : public Node {
public:
    static constexpr const char* interface_name = "ICommand";
    static bool fits(const Node& node);
    Command() = default;
    explicit Command(const Node& node) noexcept : Node(node) {}

    /// Starts it. It does not wait.
    void execute(Verify verify = Verify::yes);
    /// Looks every few milliseconds whether the device has finished it. Throws time_out if it has not after
    /// this time. The map's lock is free between the looks.
    void wait(std::chrono::milliseconds timeout) const;
    /// Whether the device has finished it; true if the device does not say. Always reads the device.
    bool is_done() const;
};

class EnumEntry : public Node {
public:
    static constexpr const char* interface_name = "IEnumEntry";
    static bool fits(const Node& node);
    EnumEntry() = default;
    explicit EnumEntry(const Node& node) noexcept : Node(node) {}

    std::int64_t value() const;
    /// NumericValue, or the value if there is none.
    double numeric_value() const;
    /// The name among the entries of its enumeration, such as "Mono8".
    std::string symbolic() const;
    bool is_self_clearing() const;
};

class Enumeration : public Node {
public:
    static constexpr const char* interface_name = "IEnumeration";
    static bool fits(const Node& node);
    Enumeration() = default;
    explicit Enumeration(const Node& node) noexcept : Node(node) {}

    /// All entries in the order of the description, whether they can be chosen at the moment or not.
    std::vector<EnumEntry> entries() const;
    /// Those that are implemented and available at the moment.
    std::vector<EnumEntry> available_entries() const;
    /// The entry by its symbolic name, or by its value; an empty handle if there is none.
    EnumEntry entry(const std::string& symbolic) const;
    EnumEntry entry(std::int64_t value) const;
    /// The entry of the present value; an empty handle if no entry has it.
    EnumEntry current(UseCache use_cache = UseCache::yes) const;
    /// The present value as a number.
    std::int64_t value(UseCache use_cache = UseCache::yes) const;
    /// The name of the present entry; throws value if no entry has the present value.
    std::string symbolic(UseCache use_cache = UseCache::yes) const;
    /// Throws range if there is no such entry, and access if it is not available at the moment.
    void set(std::int64_t value, Verify verify = Verify::yes);
    void set(const std::string& symbolic, Verify verify = Verify::yes);
};

class String : public Node {
public:
    static constexpr const char* interface_name = "IString";
    static bool fits(const Node& node);
    String() = default;
    explicit String(const Node& node) noexcept : Node(node) {}

    /// Of a register, what comes before the first zero byte.
    std::string value(UseCache use_cache = UseCache::yes) const;
    /// Of a register, the rest is filled with zero bytes.
    void set(const std::string& value, Verify verify = Verify::yes);
    /// In bytes.
    std::int64_t max_length() const;
};

/// Bytes at an address: Register, StringReg, IntReg, MaskedIntReg, StructEntry, FloatReg.
class Register : public Node {
public:
    static constexpr const char* interface_name = "IRegister";
    static bool fits(const Node& node);
    Register() = default;
    explicit Register(const Node& node) noexcept : Node(node) {}

    /// In bytes, never 0.
    std::int64_t length() const;
    std::uint64_t address() const;
    std::vector<unsigned char> read(UseCache use_cache = UseCache::yes) const;
    /// Throws value unless there are as many bytes as the register is long.
    void write(const std::vector<unsigned char>& bytes, Verify verify = Verify::yes);
    /// The node of the port that it is reached through.
    Node port() const;
};

class Category : public Node {
public:
    static constexpr const char* interface_name = "ICategory";
    static bool fits(const Node& node);
    Category() = default;
    explicit Category(const Node& node) noexcept : Node(node) {}

    /// The features and categories that it lists, in the order of the description. References that lead
    /// nowhere are left out.
    std::vector<Node> features() const;
};

class PortNode : public Node {
public:
    static constexpr const char* interface_name = "IPort";
    static bool fits(const Node& node);
    PortNode() = default;
    explicit PortNode(const Node& node) noexcept : Node(node) {}

    bool is_connected() const;
    /// Of a port to the chunks of a buffer; empty for others.
    std::string chunk_id() const;
    /// Reads and writes without a register; throws port if none is connected. Caches are told of a write.
    void read(std::uint64_t address, void* data, std::size_t size) const;
    void write(std::uint64_t address, const void* data, std::size_t size);
};

} // namespace zvgenapi
