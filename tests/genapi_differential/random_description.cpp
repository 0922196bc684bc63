#include "genapi_differential/random_description.h"

#include <algorithm>
#include <vector>

#include "genapi_differential/Choices.h"
#include "genapi_differential/random_formula.h"

namespace zvgenapi::differential {

namespace {

using formula::Arithmetic;
using Names = std::vector<std::string>;

constexpr const char* representations[] = {"Linear",    "Logarithmic", "PureNumber",
                                           "HexNumber", "IPV4Address", "MACAddress"};
constexpr const char* visibilities[] = {"Beginner", "Expert", "Guru", "Invisible"};
constexpr const char* access_modes[] = {"RW", "RW", "RW", "RW", "RW", "RW", "RW", "RW", "RO", "RO", "WO"};
constexpr const char* byte_orders[] = {"LittleEndian", "BigEndian"};
constexpr const char* signs[] = {"Signed", "Unsigned"};
constexpr const char* notations[] = {"Automatic", "Fixed", "Scientific"};
constexpr const char* caching_modes[] = {"NoCache", "WriteThrough", "WriteAround"};
constexpr std::size_t integer_lengths[] = {1, 2, 4, 8, 4, 2, 1, 3, 6};

std::string escaped(const std::string& text)
{
    std::string result;
    for (const char c : text) {
        if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else if (c == '>')
            result += "&gt;";
        else
            result += c;
    }
    return result;
}

std::string element(const std::string& tag, const std::string& text, const std::string& attributes = "")
{
    return "  <" + tag + attributes + ">" + escaped(text) + "</" + tag + ">\n";
}

std::string element(const std::string& tag, std::int64_t number)
{
    return element(tag, std::to_string(number));
}

class Generator {
public:
    explicit Generator(std::uint32_t seed) : m_choices(seed) {}

    std::string description()
    {
        add_basic_nodes();
        for (std::size_t i = 20 + m_choices.below(15); i > 0; --i)
            add_any();
        std::string features;
        for (const auto& name : m_all)
            features += element("pFeature", name);
        return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
               "<RegisterDescription ModelName=\"Random\" VendorName=\"Random\" StandardNameSpace=\"None\" "
               "SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" SchemaSubMinorVersion=\"0\" "
               "MajorVersion=\"1\" "
               "MinorVersion=\"0\" SubMinorVersion=\"0\" ProductGuid=\"0\" VersionGuid=\"0\" "
               "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">\n"
               "<Category Name=\"Root\">\n" +
               features + "</Category>\n<Group Comment=\"All\">\n" + m_text + "</Group>\n" +
               "<Port Name=\"Device\"></Port>\n</RegisterDescription>\n";
    }

private:
    /// What all others can refer to from the start: it can be read and written at any time.
    void add_basic_nodes()
    {
        m_is_basic = true;
        for (int i = 0; i < 3; ++i) {
            add_int_reg();
            add_masked_int_reg(static_cast<std::size_t>(i) + 1);
        }
        add_float_reg();
        add_boolean();
        m_is_basic = false;
    }

    void add_any()
    {
        using Adder = void (Generator::*)();
        constexpr Adder adders[] = {&Generator::add_int_reg,       &Generator::add_some_masked_int_reg,
                                    &Generator::add_float_reg,     &Generator::add_string_reg,
                                    &Generator::add_register,      &Generator::add_struct_reg,
                                    &Generator::add_integer,       &Generator::add_integer,
                                    &Generator::add_indexed,       &Generator::add_float,
                                    &Generator::add_boolean,       &Generator::add_command,
                                    &Generator::add_enumeration,   &Generator::add_string,
                                    &Generator::add_int_knife,     &Generator::add_knife,
                                    &Generator::add_int_converter, &Generator::add_converter};
        (this->*m_choices.one_of(adders))();
    }

    void begin(const std::string& tag)
    {
        m_tag = tag;
        m_name = tag + std::to_string(m_all.size() + 1);
        if (m_choices.percent(5))
            m_text += "<!-- about " + m_name + " -->\n";
        m_text += "<" + tag + " Name=\"" + m_name + "\">\n";
        if (m_choices.percent(20))
            m_text += element("ToolTip", "Tip of " + m_name);
        if (m_choices.percent(20))
            m_text += element("Description", "About " + m_name);
        if (m_choices.percent(20))
            m_text += element("DisplayName", "Shown " + m_name);
        if (m_choices.percent(30))
            m_text += element("Visibility", m_choices.one_of(visibilities));
        if (m_is_basic)
            return;
        if (!m_conditions.empty() && m_choices.percent(10))
            m_text += element("pIsImplemented", m_choices.one_of(m_conditions));
        if (!m_conditions.empty() && m_choices.percent(10))
            m_text += element("pIsAvailable", m_choices.one_of(m_conditions));
        if (!m_conditions.empty() && m_choices.percent(10))
            m_text += element("pIsLocked", m_choices.one_of(m_conditions));
        if (m_choices.percent(5))
            m_text += element("ImposedAccessMode", m_choices.one_of(access_modes));
    }

    void end(Names& names)
    {
        m_text += "</" + m_tag + ">\n";
        names.push_back(m_name);
        m_all.push_back(m_name);
    }

    void begin_register(const std::string& tag, std::size_t length)
    {
        begin(tag);
        add_register_elements(length);
    }

    void add_register_elements(std::size_t length)
    {
        const bool has_parts = m_choices.percent(20);
        m_text += element("Address", "0x" + hexadecimal(m_choices.below(0x400)));
        if (has_parts && m_choices.percent(30))
            m_text += element("Address", static_cast<std::int64_t>(m_choices.below(0x100)));
        if (has_parts && !m_small.empty() && m_choices.percent(40))
            m_text += element("pAddress", m_choices.one_of(m_small));
        if (has_parts && !m_small.empty() && m_choices.percent(40))
            m_text +=
                element("pIndex", m_choices.one_of(m_selectors),
                        m_choices.percent(70) ? " Offset=\"" + std::to_string(m_choices.below(16)) + "\""
                                              : " pOffset=\"" + m_choices.one_of(m_small) + "\"");
        if (has_parts && !m_integers.empty() && m_choices.percent(30))
            m_text += "  <IntSwissKnife Name=\"" + m_name + "Address\">\n" +
                      element("pVariable", m_choices.one_of(m_integers), " Name=\"A\"") +
                      element("Formula", "(A & 7) * 8") + "  </IntSwissKnife>\n";
        if (tag_has_any_length() && m_choices.percent(15))
            m_text += element("pLength", length_node());
        else
            m_text += element("Length", static_cast<std::int64_t>(length));
        m_text += element("AccessMode", m_is_basic ? "RW" : m_choices.one_of(access_modes));
        m_text += element("pPort", "Device");
        if (m_choices.percent(40))
            m_text += element("Cachable", m_choices.one_of(caching_modes));
        if (!m_integers.empty() && m_choices.percent(15))
            m_text += element("pInvalidator", m_choices.one_of(m_integers));
    }

    bool tag_has_any_length() const { return m_tag == "StringReg" || m_tag == "Register"; }

    /// A node that is greater than 0, in front of the register.
    std::string length_node()
    {
        const std::string name = m_name + "Length";
        const std::string node = "<IntSwissKnife Name=\"" + name + "\">\n" +
                                 element("pVariable", m_choices.one_of(m_small), " Name=\"A\"") +
                                 element("Formula", "(A & 15) + 1") + "</IntSwissKnife>\n";
        m_text.insert(m_text.rfind("<" + m_tag + " "), node);
        return name;
    }

    void add_number_elements()
    {
        m_text += element("Sign", m_choices.one_of(signs));
        m_text += element("Endianess", m_choices.one_of(byte_orders));
        if (m_choices.percent(30))
            m_text += element("Unit", "u" + std::to_string(m_choices.below(9)));
        if (m_choices.percent(30))
            m_text += element("Representation", m_choices.one_of(representations));
    }

    void add_int_reg()
    {
        const std::size_t length = m_choices.one_of(integer_lengths);
        begin_register("IntReg", length);
        add_number_elements();
        end(m_integers);
        if (length <= 4)
            m_modest.push_back(m_name);
    }

    void add_some_masked_int_reg() { add_masked_int_reg(m_choices.below(32) + 1); }

    void add_masked_int_reg(std::size_t bits)
    {
        const std::size_t length = m_choices.percent(20) ? 8 : bits <= 8 ? 1 : bits <= 16 ? 2 : 4;
        begin_register("MaskedIntReg", length);
        const std::size_t first = m_choices.below(8 * length - bits + 1);
        const std::size_t last = first + bits - 1;
        const bool is_big = m_choices.percent(50);
        if (bits == 1 && m_choices.percent(50)) {
            m_text += element("Bit", static_cast<std::int64_t>(first));
        } else {
            m_text += element("LSB", static_cast<std::int64_t>(is_big ? last : first));
            m_text += element("MSB", static_cast<std::int64_t>(is_big ? first : last));
        }
        m_text += element("Sign", bits > 1 && m_choices.percent(30) ? "Signed" : "Unsigned");
        m_text += element("Endianess", is_big ? "BigEndian" : "LittleEndian");
        end(m_integers);
        m_modest.push_back(m_name);
        if (bits <= 4) {
            m_small.push_back(m_name);
            m_selectors.push_back(m_name);
            m_conditions.push_back(m_name);
        }
    }

    void add_float_reg()
    {
        begin_register("FloatReg", m_choices.percent(50) ? 4 : 8);
        m_text += element("Endianess", m_choices.one_of(byte_orders));
        if (m_choices.percent(30))
            m_text += element("Unit", "s");
        if (m_choices.percent(30))
            m_text += element("Representation", m_choices.one_of(representations));
        if (m_choices.percent(30))
            m_text += element("DisplayNotation", m_choices.one_of(notations));
        if (m_choices.percent(30))
            m_text += element("DisplayPrecision", static_cast<std::int64_t>(m_choices.below(10)));
        end(m_floats);
    }

    void add_string_reg()
    {
        begin_register("StringReg", m_choices.below(40) + 1);
        end(m_strings);
    }

    void add_register()
    {
        begin_register("Register", m_choices.below(20) + 1);
        end(m_others);
    }

    void add_struct_reg()
    {
        const std::size_t length = m_choices.percent(50) ? 4 : 2;
        const bool is_big = m_choices.percent(50);
        m_tag = "StructReg";
        m_name = "StructReg" + std::to_string(++m_structures);
        m_text += "<StructReg Comment=\"Bits\">\n";
        add_register_elements(length);
        m_text += element("Endianess", is_big ? "BigEndian" : "LittleEndian");
        std::size_t bit = 0;
        while (bit + 4 < 8 * length && m_choices.percent(80)) {
            const std::size_t bits = m_choices.below(4) + 1;
            begin("StructEntry");
            m_text += element("LSB", static_cast<std::int64_t>(is_big ? bit + bits - 1 : bit));
            m_text += element("MSB", static_cast<std::int64_t>(is_big ? bit : bit + bits - 1));
            if (bits > 1 && m_choices.percent(30))
                m_text += element("Sign", m_choices.one_of(signs));
            end(m_integers);
            m_modest.push_back(m_name);
            bit += bits + m_choices.below(3);
        }
        m_text += "</StructReg>\n";
    }

    void add_integer()
    {
        begin("Integer");
        if (m_choices.percent(30))
            m_text += element("Value", m_choices.between(-1000, 1000));
        else
            m_text += element("pValue", m_choices.one_of(m_integers));
        if (m_choices.percent(10))
            m_text += element("pValueCopy", m_choices.one_of(m_modest));
        if (m_choices.percent(40))
            add_limit("Min", m_choices.between(-2000, 0));
        if (m_choices.percent(40))
            add_limit("Max", m_choices.between(1, 100'000));
        if (m_choices.percent(30))
            add_limit("Inc", m_choices.between(1, 16));
        if (m_choices.percent(30))
            m_text += element("Unit", "mm");
        if (m_choices.percent(30))
            m_text += element("Representation", m_choices.one_of(representations));
        if (m_choices.percent(10))
            m_text += element("pSelected", m_choices.one_of(m_all));
        end(m_integers);
    }

    /// A limit that is written down, or that of another node.
    void add_limit(const std::string& tag, std::int64_t literal)
    {
        if (tag != "Inc" && m_choices.percent(30))
            m_text += element("p" + tag, m_choices.one_of(m_integers));
        else
            m_text += element(tag, literal);
    }

    void add_indexed()
    {
        begin("Integer");
        m_text += element("pIndex", m_choices.one_of(m_selectors));
        for (std::int64_t index = 0; index < 3; ++index) {
            const std::string attribute = " Index=\"" + std::to_string(index) + "\"";
            if (m_choices.percent(50))
                m_text += element("ValueIndexed", std::to_string(m_choices.between(-50, 50)), attribute);
            else
                m_text += element("pValueIndexed", m_choices.one_of(m_integers), attribute);
        }
        if (m_choices.percent(50))
            m_text += element("ValueDefault", m_choices.between(-50, 50));
        else
            m_text += element("pValueDefault", m_choices.one_of(m_integers));
        end(m_integers);
    }

    void add_float()
    {
        begin("Float");
        if (m_choices.percent(30))
            m_text += element("Value", std::to_string(m_choices.between(-1000, 1000)) + ".25");
        else
            m_text += element("pValue", m_choices.one_of(m_choices.percent(60) ? m_floats : m_integers));
        if (m_choices.percent(15))
            m_text += element("pMin", m_choices.one_of(m_floats));
        else if (m_choices.percent(40))
            m_text += element("Min", std::to_string(m_choices.between(-1000, 0)) + ".5");
        if (m_choices.percent(15))
            m_text += element("pMax", m_choices.one_of(m_modest));
        else if (m_choices.percent(40))
            m_text += element("Max", std::to_string(m_choices.between(1, 100'000)) + ".125");
        if (m_choices.percent(30))
            m_text += element("Unit", "us");
        if (m_choices.percent(30))
            m_text += element("DisplayPrecision", static_cast<std::int64_t>(m_choices.below(10)));
        end(m_floats);
    }

    void add_boolean()
    {
        begin("Boolean");
        m_text += element("pValue", m_choices.one_of(m_small));
        if (m_choices.percent(40)) {
            m_text += element("OnValue", m_choices.between(1, 3));
            m_text += element("OffValue", 0);
        }
        end(m_others);
        m_conditions.push_back(m_name);
    }

    void add_command()
    {
        begin("Command");
        m_text += element("pValue", m_choices.one_of(m_integers));
        if (m_choices.percent(20))
            m_text += element("pCommandValue", m_choices.one_of(m_integers));
        else
            m_text += element("CommandValue", m_choices.between(0, 5));
        end(m_others);
    }

    void add_enumeration()
    {
        begin("Enumeration");
        const std::size_t count = m_choices.below(8) + 2;
        for (std::size_t i = 0; i < count; ++i) {
            m_text += "  <EnumEntry Name=\"Entry" + std::to_string(i) + "\">\n";
            if (m_choices.percent(20))
                m_text += element("DisplayName", "Number " + std::to_string(i));
            if (m_choices.percent(15))
                m_text += element("pIsAvailable", m_choices.one_of(m_conditions));
            if (m_choices.percent(10))
                m_text += element("pIsImplemented", m_choices.one_of(m_conditions));
            m_text += element("Value", static_cast<std::int64_t>(i)) + "  </EnumEntry>\n";
        }
        if (m_choices.percent(85))
            m_text += element("pValue", m_choices.one_of(m_small));
        else
            m_text += element("Value", static_cast<std::int64_t>(m_choices.below(count)));
        end(m_others);
        m_selectors.push_back(m_name);
    }

    void add_string()
    {
        begin("String");
        if (m_strings.empty() || m_choices.percent(40))
            m_text += element("Value", "text " + std::to_string(m_choices.below(100)));
        else
            m_text += element("pValue", m_choices.one_of(m_strings));
        end(m_strings);
    }

    /// Variables, constants and expressions. Returns the names that the formula may use.
    Names add_names(const Names& sources)
    {
        Names names;
        for (std::size_t i = m_choices.below(3) + 1; i > 0; --i) {
            names.push_back("VAR" + std::to_string(i) + (m_choices.percent(20) ? ".Value" : ""));
            const Names& nodes = m_choices.percent(15) ? m_selectors : sources;
            m_text += element("pVariable", m_choices.one_of(nodes), " Name=\"" + names.back() + "\"");
        }
        if (m_choices.percent(30)) {
            names.push_back("CONST");
            m_text += element("Constant", std::to_string(m_choices.below(1000)), " Name=\"CONST\"");
        }
        if (m_choices.percent(30)) {
            m_text += element("Expression", "(" + names.front() + " + 3)", " Name=\"EXPR\"");
            names.push_back("EXPR");
        }
        return names;
    }

    void add_int_knife()
    {
        begin("IntSwissKnife");
        const Names names = add_names(m_choices.percent(20) ? m_floats : m_integers);
        m_text += element("Formula", random_formula(m_choices, Arithmetic::integer, names));
        end(m_integers);
    }

    void add_knife()
    {
        begin("SwissKnife");
        // Of whole numbers only small ones: the other library keeps more than the 53 bits of a floating
        // number.
        const Names names = add_names(m_choices.percent(50) ? m_floats : m_small);
        m_text += element("Formula", random_formula(m_choices, Arithmetic::floating, names));
        if (m_choices.percent(30))
            m_text += element("Unit", "V");
        end(m_floats);
    }

    /// Multiplies when it writes, so that no rounding parts the two libraries. The other one calculates with
    /// 53 bits.
    void add_int_converter()
    {
        begin("IntConverter");
        const std::string factor = std::to_string(m_choices.below(9) + 1);
        const std::string shift = std::to_string(m_choices.below(100));
        const bool is_falling = m_choices.percent(30);
        // The variable is always positive, so that the slope is what it says.
        const bool has_variable = m_choices.percent(30);
        if (has_variable)
            m_text += element("pVariable", m_choices.one_of(m_small), " Name=\"V\"");
        const std::string all = has_variable ? "(" + factor + " + (V & 3))" : factor;
        m_text += element("FormulaTo", (is_falling ? "-FROM * " : "FROM * ") + all + " + " + shift);
        m_text += element("FormulaFrom", (is_falling ? "-(TO - " : "(TO - ") + shift + ") / " + all);
        m_text += element("pValue", m_choices.one_of(m_modest));
        m_text += element("Slope", is_falling ? "Decreasing" : "Increasing");
        end(m_integers);
    }

    /// The values that are written are eighths, see above.
    void add_converter()
    {
        begin("Converter");
        const bool is_falling = m_choices.percent(30);
        const std::string factor = std::to_string(m_choices.below(9) + 1) + " * 8";
        m_text += element("FormulaTo", (is_falling ? "-FROM * " : "FROM * ") + factor);
        m_text += element("FormulaFrom", (is_falling ? "-TO / (" : "TO / (") + factor + ")");
        m_text += element("pValue", m_choices.one_of(m_choices.percent(50) ? m_floats : m_integers));
        m_text += element("Slope", is_falling ? "Decreasing" : "Increasing");
        end(m_floats);
    }

    static std::string hexadecimal(std::size_t value)
    {
        std::string digits;
        for (; value != 0 || digits.empty(); value /= 16)
            digits.insert(0, 1, "0123456789ABCDEF"[value % 16]);
        return digits;
    }

    Choices m_choices;
    bool m_is_basic{false};
    std::size_t m_structures{0};
    std::string m_text;
    std::string m_tag;
    std::string m_name;
    Names m_all;
    Names m_integers;
    Names m_small;     ///< whole numbers of a few bits
    Names m_selectors; ///< the same and enumerations
    Names m_modest;    ///< whole numbers of up to 32 bits
    Names m_floats;
    Names m_strings;
    Names m_others;
    Names m_conditions;
};

} // namespace

std::string random_description(std::uint32_t seed) { return Generator(seed).description(); }

} // namespace zvgenapi::differential
