#include "genapi_differential/Subject.h"

#include <cmath>
#include <iomanip>
#include <sstream>

namespace zvgenapi::differential {

const char* name_of(Question question)
{
    switch (question) {
    case Question::value:
        return "value";
    case Question::minimum:
        return "minimum";
    case Question::maximum:
        return "maximum";
    case Question::increment:
        return "increment";
    case Question::access:
        return "access";
    case Question::entries:
        return "entries";
    case Question::length:
        return "length";
    case Question::address:
        return "address";
    case Question::representation:
        return "representation";
    case Question::unit:
        return "unit";
    case Question::notation:
        return "notation";
    case Question::precision:
        return "precision";
    case Question::visibility:
        return "visibility";
    case Question::display_name:
        return "display name";
    case Question::tool_tip:
        return "tool tip";
    case Question::description:
        return "description";
    }
    return "";
}

std::string text_of(std::int64_t value) { return std::to_string(value); }

std::string text_of(double value)
{
    if (std::isnan(value))
        return "nan";
    std::ostringstream text;
    text << std::setprecision(17) << (value == 0 ? 0.0 : value); // both zeros read the same
    return text.str();
}

std::string text_of(const std::vector<unsigned char>& bytes)
{
    std::ostringstream text;
    for (const unsigned char byte : bytes)
        text << std::hex << std::setw(2) << std::setfill('0') << static_cast<unsigned int>(byte);
    return text.str();
}

std::string text_of(const std::vector<std::string>& names)
{
    std::string text;
    for (const auto& name : names)
        text += name + " ";
    return text;
}

} // namespace zvgenapi::differential
