#pragma once

#include <string>

namespace zvgentl {

/// The common base of everything that a handle can name. Module classes are final with this one base, so a
/// handle and its object share an address, and they are destroyed as what they are: the destructor is not
/// virtual.
class PortModule {
public:
    PortModule(const PortModule&) = delete;
    PortModule& operator=(const PortModule&) = delete;

    /// The module's ID text.
    virtual std::string getId() const = 0;

protected:
    PortModule() = default;
    ~PortModule() = default;
};

/// What distinguishes an ID among its kind: the text from its first decimal digit on, nothing when it has
/// none.
inline std::string number_of_id(const std::string& id)
{
    const size_t digit = id.find_first_of("0123456789");
    return digit == std::string::npos ? std::string() : id.substr(digit);
}

} // namespace zvgentl
