#pragma once

#include <cstddef>
#include <string_view>

namespace zvgenapi {

/// The attributes of an element.
class Attributes {
public:
    /// Used by parse_xml only: libxml2's array, five pointers each.
    Attributes(const unsigned char** values, std::size_t count) noexcept : m_values(values), m_count(count) {}

    /// The value of an attribute; empty if there is none.
    std::string_view find(std::string_view name) const noexcept;
    std::size_t size() const noexcept { return m_count; }
    std::string_view name(std::size_t position) const noexcept;
    std::string_view value(std::size_t position) const noexcept;

private:
    const unsigned char** m_values;
    std::size_t m_count;
};

/// What is told of an XML text while it is read. Lines count from 1.
class XmlEvents {
public:
    XmlEvents() = default;
    virtual ~XmlEvents() = default;
    XmlEvents(const XmlEvents&) = delete;
    XmlEvents& operator=(const XmlEvents&) = delete;

    virtual void start(std::string_view element, const Attributes& attributes, int line) = 0;
    virtual void text(std::string_view text) = 0;
    virtual void end() = 0;
};

/// Reads an XML text from beginning to end. Document types, and with them entities, are refused; nothing else
/// is opened. Throws Error (description) for a text that is not XML, and what the events throw.
void parse_xml(std::string_view text, XmlEvents& events);

} // namespace zvgenapi
