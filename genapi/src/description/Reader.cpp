#include "description/Reader.h"

#include <bitset>
#include <iterator>
#include <optional>
#include <utility>

#include "description/Archive.h"
#include "description/cycles.h"
#include "description/references.h"

namespace zvgenapi {

namespace {

struct TypeRow {
    std::string_view element;
    NodeType type;
};

// The elements that are nodes wherever nodes may stand.
constexpr TypeRow node_elements[] = {
    {"Node", NodeType::node},
    {"Category", NodeType::category},
    {"Integer", NodeType::integer},
    {"IntReg", NodeType::int_reg},
    {"MaskedIntReg", NodeType::masked_int_reg},
    {"Float", NodeType::float_},
    {"FloatReg", NodeType::float_reg},
    {"Boolean", NodeType::boolean},
    {"Command", NodeType::command},
    {"Enumeration", NodeType::enumeration},
    {"String", NodeType::string},
    {"StringReg", NodeType::string_reg},
    {"Register", NodeType::register_},
    {"SwissKnife", NodeType::swiss_knife},
    {"IntSwissKnife", NodeType::int_swiss_knife},
    {"Converter", NodeType::converter},
    {"IntConverter", NodeType::int_converter},
    {"Port", NodeType::port},
    {"ConfRom", NodeType::conf_rom},
    {"TextDesc", NodeType::text_desc},
    {"IntKey", NodeType::int_key},
    {"AdvFeatureLock", NodeType::adv_feature_lock},
    {"SmartFeature", NodeType::smart_feature},
};

std::optional<NodeType> node_type(std::string_view element)
{
    for (const TypeRow& row : node_elements)
        if (row.element == element)
            return row.type;
    return std::nullopt;
}

int version_of(const Attributes& attributes, std::string_view name)
{
    const auto number = parse_integer(attributes.find(name));
    return number && *number >= 0 && *number <= 1'000'000 ? static_cast<int>(*number) : 0;
}

DeviceInfo info_of(const Attributes& attributes)
{
    DeviceInfo info;
    info.model_name = attributes.find("ModelName");
    info.vendor_name = attributes.find("VendorName");
    info.tool_tip = attributes.find("ToolTip");
    info.standard_name_space = attributes.find("StandardNameSpace");
    info.product_guid = attributes.find("ProductGuid");
    info.version_guid = attributes.find("VersionGuid");
    info.schema_major = version_of(attributes, "SchemaMajorVersion");
    info.schema_minor = version_of(attributes, "SchemaMinorVersion");
    info.schema_subminor = version_of(attributes, "SchemaSubMinorVersion");
    info.major = version_of(attributes, "MajorVersion");
    info.minor = version_of(attributes, "MinorVersion");
    info.subminor = version_of(attributes, "SubMinorVersion");
    return info;
}

std::int8_t priority_of(std::string_view text)
{
    if (text == "1" || text == "+1" || text == "High")
        return 1;
    return text == "-1" || text == "Low" ? std::int8_t{-1} : std::int8_t{0};
}

void append_escaped(std::string& target, std::string_view text)
{
    for (const char letter : text) {
        switch (letter) {
        case '<':
            target += "&lt;";
            break;
        case '>':
            target += "&gt;";
            break;
        case '&':
            target += "&amp;";
            break;
        case '"':
            target += "&quot;";
            break;
        default:
            target += letter;
        }
    }
}

} // namespace

void Reader::start(std::string_view element, const Attributes& attributes, int line)
{
    if (m_places.size() >= m_limits.xml_depth)
        throw Error(ErrorKind::limit,
                    "elements are nested more than " + std::to_string(m_limits.xml_depth) + " deep", {},
                    line);
    if (m_places.empty()) {
        start_root(element, attributes, line);
        return;
    }
    switch (m_places.back()) {
    case Place::root:
    case Place::group:
        start_node(element, attributes, line);
        break;
    case Place::node:
    case Place::structure:
        if (!start_part(element, attributes, line))
            start_element(element, attributes, line);
        break;
    case Place::extension:
        copy_markup(element, attributes);
        m_places.push_back(Place::extension);
        break;
    case Place::element:
    case Place::ignored:
        m_places.push_back(Place::ignored);
        break;
    }
}

void Reader::start_root(std::string_view element, const Attributes& attributes, int line)
{
    if (element != "RegisterDescription")
        throw Error(ErrorKind::description,
                    "it is not a register description: its root element is <" +
                        std::string(element.substr(0, 100)) + ">",
                    {}, line);
    m_description.info = info_of(attributes);
    m_places.push_back(Place::root);
}

void Reader::start_node(std::string_view element, const Attributes& attributes, int line)
{
    if (element == "Group") {
        m_places.push_back(Place::group);
    } else if (element == "StructReg") {
        m_open.push_back({no_node, {}, {}});
        m_places.push_back(Place::structure);
    } else if (const auto type = node_type(element)) {
        open_node(*type, attributes, line, no_node);
    } else {
        m_places.push_back(Place::ignored);
    }
}

/// Nodes that are written within another one.
bool Reader::start_part(std::string_view element, const Attributes& attributes, int line)
{
    Open& open = m_open.back();
    const bool is_structure = open.node == no_node;
    const NodeType type = is_structure ? NodeType::struct_entry : m_description.nodes[open.node].type;
    if (element == "StructEntry" && is_structure) {
        open.entries.push_back(static_cast<NodeIndex>(m_description.nodes.size()));
        open_node(NodeType::struct_entry, attributes, line, no_node);
        return true;
    }
    const bool is_entry = element == "EnumEntry" && type == NodeType::enumeration;
    if (!is_entry && element != "IntSwissKnife")
        return false;
    const NodeIndex owner = open.node;
    Element part;
    part.tag = is_entry ? Tag::enum_entry : Tag::int_swiss_knife;
    part.line = static_cast<std::uint32_t>(line);
    part.target = static_cast<NodeIndex>(m_description.nodes.size());
    open.elements.push_back(part);
    open_node(is_entry ? NodeType::enum_entry : NodeType::int_swiss_knife, attributes, line, owner);
    return true;
}

void Reader::start_element(std::string_view element, const Attributes& attributes, int line)
{
    m_text.clear();
    m_element = {};
    m_element.tag = tag_of(element);
    if (m_element.tag == Tag::unknown) {
        m_places.push_back(Place::ignored);
        return;
    }
    const bool is_extension = m_element.tag == Tag::extension;
    m_element.line = static_cast<std::uint32_t>(line);
    const std::string_view name = attributes.find("Name");
    m_element.name = m_description.texts.keep(name.empty() ? attributes.find("Index") : name);
    m_places.push_back(is_extension ? Place::extension : Place::element);
    if (m_element.tag != Tag::p_index)
        return;
    // What the attributes say becomes an element of its own, behind this one.
    Element offset;
    offset.line = m_element.line;
    offset.tag = Tag::index_offset;
    offset.text = attributes.find("Offset");
    if (offset.text.empty()) {
        offset.tag = Tag::p_index_offset;
        offset.text = attributes.find("pOffset");
    }
    m_pending_offset.reset();
    if (!offset.text.empty()) {
        offset.text = m_description.texts.keep(trimmed(offset.text));
        m_pending_offset = offset;
    }
}

void Reader::open_node(NodeType type, const Attributes& attributes, int line, NodeIndex owner)
{
    if (m_description.nodes.size() >= m_limits.nodes)
        throw Error(ErrorKind::limit, "it has more than " + std::to_string(m_limits.nodes) + " nodes", {},
                    line);
    NodeText node;
    node.type = type;
    node.line = static_cast<std::uint32_t>(line);
    node.owner = owner;
    node.name = m_description.texts.keep(trimmed(attributes.find("Name")));
    node.name_space = attributes.find("NameSpace") == "Standard" ? NameSpace::standard : NameSpace::custom;
    node.merge_priority = priority_of(attributes.find("MergePriority"));
    m_open.push_back({static_cast<NodeIndex>(m_description.nodes.size()), {}, {}});
    m_description.nodes.push_back(node);
    m_places.push_back(Place::node);
}

void Reader::text(std::string_view text)
{
    if (m_places.empty())
        return;
    if (m_places.back() == Place::extension && !m_marks.empty())
        append_escaped(m_text, text);
    else if (m_places.back() == Place::element || m_places.back() == Place::extension)
        m_text += text;
    else
        return;
    check_text();
}

void Reader::check_text() const
{
    if (m_text.size() > m_limits.element_text)
        throw Error(ErrorKind::limit,
                    "the text of an element is longer than " + std::to_string(m_limits.element_text) +
                        " bytes",
                    {}, static_cast<int>(m_element.line));
}

void Reader::copy_markup(std::string_view element, const Attributes& attributes)
{
    m_text += '<';
    m_text += element;
    for (std::size_t i = 0; i < attributes.size(); ++i) {
        m_text += ' ';
        m_text += attributes.name(i);
        m_text += "=\"";
        append_escaped(m_text, attributes.value(i));
        m_text += '"';
    }
    m_text += '>';
    m_marks.emplace_back(element);
    check_text();
}

void Reader::end()
{
    const Place place = m_places.back();
    m_places.pop_back();
    if (place == Place::node)
        end_node();
    else if (place == Place::structure)
        end_structure();
    else if (place == Place::extension && !m_marks.empty()) {
        m_text += "</" + m_marks.back() + ">";
        m_marks.pop_back();
    } else if (place == Place::extension || place == Place::element)
        end_element();
}

void Reader::end_element()
{
    std::vector<Element>& elements = m_open.back().elements;
    const bool is_raw = m_element.tag == Tag::value && m_open.back().node != no_node &&
                        m_description.nodes[m_open.back().node].type == NodeType::string;
    m_element.text = m_description.texts.keep(is_raw ? std::string_view(m_text) : trimmed(m_text));
    elements.push_back(m_element);
    if (m_element.tag == Tag::p_index && m_pending_offset)
        elements.push_back(*m_pending_offset);
}

void Reader::end_node()
{
    Open open = std::move(m_open.back());
    m_open.pop_back();
    NodeText& node = m_description.nodes[open.node];
    std::vector<Element>& all = m_description.elements;
    if (all.size() + open.elements.size() > m_limits.elements)
        throw Error(ErrorKind::limit, "it has more than " + std::to_string(m_limits.elements) + " elements",
                    {}, static_cast<int>(node.line));
    node.first = static_cast<std::uint32_t>(all.size());
    all.insert(all.end(), open.elements.begin(), open.elements.end());
    node.last = static_cast<std::uint32_t>(all.size());
    if (node.type == NodeType::enum_entry)
        name_entry(node, m_description.nodes[node.owner].name);
}

/// An entry is known as Mono8 to its enumeration, and as EnumEntry_PixelFormat_Mono8 to everybody else.
void Reader::name_entry(NodeText& entry, std::string_view owner)
{
    const std::string prefix = "EnumEntry_" + std::string(owner) + "_";
    const bool has_prefix = entry.name.substr(0, prefix.size()) == prefix;
    entry.symbolic = has_prefix ? entry.name.substr(prefix.size()) : entry.name;
    for (auto i = entry.first; i < entry.last; ++i)
        if (m_description.elements[i].tag == Tag::symbolic)
            entry.symbolic = m_description.elements[i].text;
    if (!has_prefix && !entry.name.empty())
        entry.name = m_description.texts.keep(prefix + std::string(entry.name));
}

/// What an entry does not say itself, its structure says for all of them.
void Reader::end_structure()
{
    const Open structure = std::move(m_open.back());
    m_open.pop_back();
    std::vector<Element>& all = m_description.elements;
    for (const NodeIndex index : structure.entries) {
        NodeText& entry = m_description.nodes[index];
        const auto first = static_cast<std::uint32_t>(all.size());
        if (all.size() + (entry.last - entry.first) + structure.elements.size() > m_limits.elements)
            throw Error(ErrorKind::limit,
                        "it has more than " + std::to_string(m_limits.elements) + " elements", {},
                        static_cast<int>(entry.line));
        std::bitset<static_cast<std::size_t>(Tag::count)> own;
        for (auto i = entry.first; i < entry.last; ++i) {
            own.set(static_cast<std::size_t>(all[i].tag));
            const Element element = all[i];
            all.push_back(element);
        }
        for (const Element& element : structure.elements)
            if (!own.test(static_cast<std::size_t>(element.tag)))
                all.push_back(element);
        entry.first = first;
        entry.last = static_cast<std::uint32_t>(all.size());
    }
}

Description read_description(std::string_view bytes, const Limits& limits)
{
    if (bytes.size() > limits.description_bytes)
        throw Error(ErrorKind::limit,
                    "the description is longer than " + std::to_string(limits.description_bytes) + " bytes");
    const std::string unpacked = is_archive(bytes) ? unpack(bytes, limits.description_bytes) : std::string();
    std::string_view text = is_archive(bytes) ? std::string_view(unpacked) : bytes;
    while (!text.empty() && text.back() == '\0') // devices fill their memory up with zeros
        text.remove_suffix(1);
    Description description;
    Reader reader(description, limits);
    parse_xml(text, reader);
    resolve_references(description);
    find_cycles(description);
    return description;
}

} // namespace zvgenapi
