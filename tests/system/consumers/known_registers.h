#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// The registers of the software grabbers and cameras, as a consumer knows them that has no parser of
// register descriptions.

namespace zvclient {

enum class RegisterType { text, integer, floating, command };

struct KnownRegister {
    const char* feature;
    std::uint64_t address;
    std::size_t length;
    RegisterType type;
    /// A value that it takes while those before it have theirs; null: it is read only.
    const char* sample;
};

/// The registers of one kind of module, in the order in which they are written.
class KnownRegisters {
public:
    KnownRegisters() = default;
    template <std::size_t Count>
    explicit KnownRegisters(const KnownRegister (&rows)[Count]) : m_begin{rows}, m_end{rows + Count}
    {
    }

    const KnownRegister* begin() const { return m_begin; }
    const KnownRegister* end() const { return m_end; }

    /// Ends the client when there is none of that name.
    const KnownRegister& at(const std::string& feature) const;

private:
    const KnownRegister* m_begin{nullptr};
    const KnownRegister* m_end{nullptr};
};

/// Those of the module whose features begin with this category. Ends the client when it is an unknown one.
KnownRegisters registers_below(const std::string& category);

/// The number of a feature's entry, null when it is not known. Pixel formats have two: one by PFNC and one
/// by CoaXPress.
struct KnownEntry {
    const char* feature;
    const char* name;
    std::uint64_t number;
    std::uint64_t coaxpress_number;
};
const KnownEntry* find_entry(const std::string& feature, const std::string& name);

} // namespace zvclient
