#include "description/Xml.h"

#include <climits>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <string>

#include <libxml/SAX2.h>
#include <libxml/parser.h>

#include "description/Description.h"
#include "description/tags.h"

namespace zvgenapi {

namespace {

constexpr std::size_t pointers_per_attribute = 5; // name, prefix, name space, start and end of the value

struct FreeContext {
    void operator()(xmlParserCtxt* context) const noexcept { xmlFreeParserCtxt(context); }
};

/// What the call-backs of the parser get. No exception may pass through the parser, which is written in C.
struct Reading {
    XmlEvents& events;
    xmlParserCtxt* context;
    std::exception_ptr failure;

    int line() const noexcept { return context->input == nullptr ? 0 : context->input->line; }

    template <class Action>
    void guarded(const Action& action) noexcept
    {
        if (failure)
            return;
        try {
            action();
        } catch (...) {
            failure = std::current_exception();
            xmlStopParser(context);
        }
    }
};

std::string_view view(const xmlChar* text) noexcept
{
    return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

void on_start(void* data, const xmlChar* name, const xmlChar* /*prefix*/, const xmlChar* /*uri*/,
              int /*name_spaces*/, const xmlChar** /*name_space*/, int attribute_count, int /*defaulted*/,
              const xmlChar** attributes)
{
    auto& reading = *static_cast<Reading*>(data);
    reading.guarded([&] {
        reading.events.start(view(name), Attributes(attributes, static_cast<std::size_t>(attribute_count)),
                             reading.line());
    });
}

void on_end(void* data, const xmlChar* /*name*/, const xmlChar* /*prefix*/, const xmlChar* /*uri*/)
{
    auto& reading = *static_cast<Reading*>(data);
    reading.guarded([&] { reading.events.end(); });
}

void on_text(void* data, const xmlChar* text, int size)
{
    auto& reading = *static_cast<Reading*>(data);
    reading.guarded([&] {
        reading.events.text({reinterpret_cast<const char*>(text), static_cast<std::size_t>(size)});
    });
}

// No description needs one, and what it defines can make a small file huge.
void on_document_type(void* data, const xmlChar* /*name*/, const xmlChar* /*external*/,
                      const xmlChar* /*system*/)
{
    auto& reading = *static_cast<Reading*>(data);
    reading.guarded([&] {
        throw Error(ErrorKind::description,
                    "it contains a document type declaration, which no register description needs", {},
                    reading.line());
    });
}

xmlSAXHandler handler() noexcept
{
    xmlSAXHandler functions{};
    functions.initialized = XML_SAX2_MAGIC;
    functions.startElementNs = on_start;
    functions.endElementNs = on_end;
    functions.characters = on_text;
    functions.ignorableWhitespace = on_text;
    functions.cdataBlock = on_text;
    functions.internalSubset = on_document_type;
    return functions;
}

} // namespace

std::string_view Attributes::find(std::string_view wanted) const noexcept
{
    for (std::size_t i = 0; i < m_count; ++i)
        if (name(i) == wanted)
            return value(i);
    return {};
}

std::string_view Attributes::name(std::size_t position) const noexcept
{
    return view(m_values[position * pointers_per_attribute]);
}

std::string_view Attributes::value(std::size_t position) const noexcept
{
    const xmlChar* const* const attribute = m_values + position * pointers_per_attribute;
    return {reinterpret_cast<const char*>(attribute[3]),
            static_cast<std::size_t>(attribute[4] - attribute[3])};
}

void parse_xml(std::string_view text, XmlEvents& events)
{
    if (text.size() > INT_MAX)
        throw Error(ErrorKind::limit, "the description is longer than 2 GiB");
    check_tags(text);
    static const bool is_ready = (xmlInitParser(), true); // by one thread, whoever is the first
    static_cast<void>(is_ready);
    const std::unique_ptr<xmlParserCtxt, FreeContext> context(xmlNewParserCtxt());
    if (!context)
        throw std::bad_alloc();
    Reading reading{events, context.get(), nullptr};
    *context->sax = handler();
    context->userData = &reading;
    // Our limits stand in for the parser's, which are those for a text of 10 MB. The only entities are those
    // of XML itself, such as &amp;, which the parser otherwise leaves half resolved in attributes.
    constexpr int options =
        XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE | XML_PARSE_NOENT;
    xmlFreeDoc(xmlCtxtReadMemory(context.get(), text.data(), static_cast<int>(text.size()), "description",
                                 nullptr, options));
    if (reading.failure)
        std::rethrow_exception(reading.failure);
    if (context->wellFormed != 0)
        return;
    const char* const message = context->lastError.message;
    throw Error(ErrorKind::description,
                message == nullptr ? "it cannot be parsed" : std::string(trimmed(message)), {},
                context->lastError.line);
}

} // namespace zvgenapi
