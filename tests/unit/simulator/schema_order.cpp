#include "unit/simulator/schema_order.h"

#include <algorithm>
#include <set>

#include <gtest/gtest.h>

namespace zvsim_test {

namespace {

/// The elements of each kind of node, in the order in which the schema wants them.
const std::map<std::string, std::vector<std::string>>& orders()
{
    static const std::vector<std::string> common{
        "Extension",         "ToolTip", "Description",    "DisplayName",  "Visibility", "DocuURL",
        "IsDeprecated",      "EventID", "pIsImplemented", "pIsAvailable", "pIsLocked",  "pBlockPolling",
        "ImposedAccessMode", "pError",  "pAlias",         "pCastAlias"};
    static const std::vector<std::string> in_register{"Address",  "pAddress",    "pIndex",
                                                      "Length",   "AccessMode",  "pPort",
                                                      "Cachable", "PollingTime", "pInvalidator"};
    const auto after = [](std::initializer_list<std::vector<std::string>> lists) {
        std::vector<std::string> all;
        for (const auto& list : lists)
            all.insert(all.end(), list.begin(), list.end());
        return all;
    };
    static const std::map<std::string, std::vector<std::string>> table{
        {"Category", after({common, {"pFeature"}})},
        {"Integer", after({common,
                           {"pInvalidator", "Streamable", "Value", "pValue", "Min", "pMin", "Max", "pMax",
                            "Inc", "pInc", "Unit", "Representation", "pSelected"}})},
        {"IntReg",
         after({common, in_register, {"Sign", "Endianess", "Unit", "Representation", "pSelected"}})},
        {"FloatReg", after({common,
                            in_register,
                            {"Endianess", "Unit", "Representation", "DisplayNotation", "DisplayPrecision"}})},
        {"StringReg", after({common, in_register})},
        {"Float", after({common,
                         {"pInvalidator", "Streamable", "Value", "pValue", "Min", "pMin", "Max", "pMax",
                          "Inc", "Unit", "Representation", "DisplayNotation", "DisplayPrecision"}})},
        {"Enumeration",
         after({common,
                {"pInvalidator", "Streamable", "EnumEntry", "Value", "pValue", "pSelected", "PollingTime"}})},
        {"EnumEntry", after({common, {"Value", "NumericValue", "Symbolic", "IsSelfClearing"}})},
        {"Command",
         after(
             {common, {"pInvalidator", "Value", "pValue", "CommandValue", "pCommandValue", "PollingTime"}})},
        {"Boolean",
         after({common, {"pInvalidator", "Streamable", "Value", "pValue", "OnValue", "OffValue"}})},
        {"IntSwissKnife", after({common,
                                 {"pInvalidator", "Streamable", "pVariable", "Constant", "Expression",
                                  "Formula", "Unit", "Representation"}})},
        {"Port", after({common, {"ChunkID", "pChunkID", "SwapEndianess"}})},
    };
    return table;
}

} // namespace

void expect_order(const std::string& kind, const std::string& name,
                  const std::vector<DescribedProperty>& properties)
{
    ASSERT_EQ(1U, orders().count(kind)) << kind << " " << name;
    const auto& order = orders().at(kind);
    static const std::set<std::string> several{"pFeature", "pSelected", "EnumEntry", "pVariable",
                                               "pIndex",   "Address",   "pAddress",  "pInvalidator"};
    auto place = order.begin();
    std::string last;
    for (const DescribedProperty& property : properties) {
        const auto found = std::find(place, order.end(), property.name);
        EXPECT_NE(order.end(), found)
            << property.name << " of " << kind << " " << name << " is unknown or in the wrong place";
        if (found == order.end())
            return;
        EXPECT_TRUE(property.name != last || several.count(last) != 0)
            << property.name << " twice in " << name;
        place = found;
        last = property.name;
        if (property.name == "EnumEntry")
            expect_order("EnumEntry", name + "." + property.attributes.at("Name"), property.children);
    }
}

} // namespace zvsim_test
