#include "unit/simulator/description_xml.h"

#include <algorithm>
#include <memory>
#include <set>

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

namespace zvsim_test {

namespace {

std::string text_of(const xmlChar* text)
{
    return text != nullptr ? reinterpret_cast<const char*>(text) : "";
}

Element element_of(const xmlNode& xml)
{
    Element element{text_of(xml.name), "", "", {}, {}};
    for (const xmlAttr* at = xml.properties; at != nullptr; at = at->next)
        element.attributes[text_of(at->name)] = at->children != nullptr ? text_of(at->children->content) : "";
    element.name = element.attributes["Name"];
    for (const xmlNode* child = xml.children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE)
            element.children.push_back(element_of(*child));
    }
    if (element.children.empty() && xml.children != nullptr)
        element.value = text_of(xml.children->content);
    return element;
}

/// The elements of each kind of node, in the order in which the schema wants them.
const std::map<std::string, std::string>& orders()
{
    static const std::string common{
        " Extension ToolTip Description DisplayName Visibility DocuURL IsDeprecated EventID pIsImplemented "
        "pIsAvailable pIsLocked pBlockPolling ImposedAccessMode pError pAlias pCastAlias "};
    static const std::string in_register =
        common + "Address pAddress pIndex Length AccessMode pPort Cachable PollingTime pInvalidator ";
    static const std::string limits{"pInvalidator Streamable Value pValue Min pMin Max pMax Inc "};
    static const std::map<std::string, std::string> table{
        {"Category", common + "pFeature "},
        {"Integer", common + limits + "pInc Unit Representation pSelected "},
        {"IntReg", in_register + "Sign Endianess Unit Representation pSelected "},
        {"FloatReg", in_register + "Endianess Unit Representation DisplayNotation DisplayPrecision "},
        {"StringReg", in_register},
        {"Float", common + limits + "Unit Representation DisplayNotation DisplayPrecision "},
        {"Enumeration", common + "pInvalidator Streamable EnumEntry Value pValue pSelected PollingTime "},
        {"EnumEntry", common + "Value NumericValue Symbolic IsSelfClearing "},
        {"Command", common + "pInvalidator Value pValue CommandValue pCommandValue PollingTime "},
        {"Boolean", common + "pInvalidator Streamable Value pValue OnValue OffValue "},
        {"IntSwissKnife",
         common + "pInvalidator Streamable pVariable Constant Expression Formula Unit Representation "},
        {"Port", common + "ChunkID pChunkID SwapEndianess "},
    };
    return table;
}

} // namespace

const Element* Element::find(const std::string& of_kind) const
{
    const auto found = std::find_if(children.begin(), children.end(),
                                    [&](const Element& child) { return child.kind == of_kind; });
    return found != children.end() ? &*found : nullptr;
}

const Element* Element::find_node(const std::string& of_name) const
{
    const auto found = std::find_if(children.begin(), children.end(),
                                    [&](const Element& child) { return child.name == of_name; });
    return found != children.end() ? &*found : nullptr;
}

std::string Element::value_of(const std::string& of_kind) const
{
    const Element* const found = find(of_kind);
    return found != nullptr ? found->value : "";
}

Element read_description(const std::string& text)
{
    const std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> document{
        xmlReadMemory(text.data(), static_cast<int>(text.size()), "description.xml", nullptr,
                      XML_PARSE_NONET),
        [](xmlDoc* read) { xmlFreeDoc(read); }};
    const xmlNode* const root = document != nullptr ? xmlDocGetRootElement(document.get()) : nullptr;
    return root != nullptr ? element_of(*root) : Element{};
}

void expect_order(const Element& node)
{
    ASSERT_EQ(1U, orders().count(node.kind)) << node.kind << " " << node.name;
    const std::string& order = orders().at(node.kind);
    static const std::set<std::string> several{"pFeature", "pSelected", "EnumEntry", "pVariable",
                                               "pIndex",   "Address",   "pAddress",  "pInvalidator"};
    size_t place = 0;
    std::string last;
    for (const Element& element : node.children) {
        place = order.find(" " + element.kind + " ", place);
        ASSERT_NE(std::string::npos, place)
            << element.kind << " of " << node.name << " is unknown or misplaced";
        EXPECT_TRUE(element.kind != last || several.count(last) != 0)
            << element.kind << " twice in " << node.name;
        last = element.kind;
        if (element.kind == "EnumEntry")
            expect_order(element);
    }
}

} // namespace zvsim_test
