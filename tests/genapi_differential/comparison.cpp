#include "genapi_differential/comparison.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include <gtest/gtest.h>

#include "genapi_differential/AravisMap.h"
#include "genapi_differential/Choices.h"
#include "genapi_differential/OurMap.h"
#include "genapi_differential/known_differences.h"

namespace zvgenapi::differential {

namespace {

constexpr Question questions[] = {
    Question::access,     Question::value,          Question::minimum,  Question::maximum,
    Question::increment,  Question::entries,        Question::length,   Question::address,
    Question::visibility, Question::representation, Question::unit,     Question::notation,
    Question::precision,  Question::display_name,   Question::tool_tip, Question::description,
};

constexpr std::size_t changing_questions = 8; ///< the first ones, whose answers depend on registers

constexpr std::size_t most_reports = 3;

class Run {
public:
    Run(const std::string& description, std::uint32_t seed, const std::string& title)
        : m_choices(seed), m_title(title), m_our_memory(seed), m_their_memory(seed),
          m_ours(description, m_our_memory), m_theirs(description, m_their_memory)
    {
        for (std::size_t i = 0; i < m_ours.map().size(); ++i) {
            const Node node = m_ours.map().at(i);
            if (is_compared(node))
                m_nodes.push_back(node);
        }
    }

    Comparison run()
    {
        compare_answers(std::size(questions));
        for (int round = 0; round < 3 && !m_nodes.empty() && !m_has_parted; ++round) {
            for (int i = 0; i < 6 && !m_has_parted; ++i)
                write(m_choices.one_of(m_nodes));
            if (!m_has_parted)
                compare_answers(changing_questions);
        }
        return m_comparison;
    }

private:
    static bool is_compared(const Node& node)
    {
        switch (node.interface_type()) {
        case InterfaceType::integer:
        case InterfaceType::float_:
        case InterfaceType::boolean:
        case InterfaceType::command:
        case InterfaceType::enumeration:
        case InterfaceType::string:
        case InterfaceType::register_:
            return true;
        default:
            return false;
        }
    }

    void compare_answers(std::size_t count)
    {
        for (const auto& node : m_nodes)
            for (std::size_t i = 0; i < count; ++i)
                compare_answer(node, questions[i]);
    }

    void compare_answer(const Node& node, Question question)
    {
        const InterfaceType kind = node.interface_type();
        const Answer ours = m_ours.ask(node.name(), kind, question);
        const Answer theirs = m_theirs.ask(node.name(), kind, question);
        if (ours.is_error == theirs.is_error && (ours.is_error || ours.text == theirs.text)) {
            m_comparison.values += ours.is_error ? 0 : 1;
            return;
        }
        if (reason_for_difference(node, question, ours, theirs) != nullptr)
            ++m_comparison.known;
        else
            report(node, name_of(question), ours.text, theirs.text);
    }

    void report(const Node& node, const std::string& what, const std::string& ours, const std::string& theirs)
    {
        if (++m_comparison.failures <= most_reports)
            ADD_FAILURE() << m_title << ", " << node.name() << ", " << what << "\n  ours:   " << ours
                          << "\n  theirs: " << theirs;
    }

    void write(const Node& node)
    {
        const Setting setting = random_setting(node);
        const InterfaceType kind = node.interface_type();
        const Answer ours = m_ours.set(node.name(), kind, setting);
        // What ours refuses, the other library need not refuse, too: then only ours is asked, and must change
        // nothing.
        if (ours.is_error && reason_for_difference(node, setting, ours, {}) != nullptr) {
            ++m_comparison.known;
            m_has_parted = m_our_memory.bytes() != m_their_memory.bytes();
            if (m_has_parted)
                report(node, "refused write of " + shown(kind, setting), registers_after(ours), "not asked");
            return;
        }
        const Answer theirs = m_theirs.set(node.name(), kind, setting);
        const bool is_same =
            ours.is_error == theirs.is_error && m_our_memory.bytes() == m_their_memory.bytes();
        m_has_parted = !is_same;
        if (is_same)
            m_comparison.writes += ours.is_error ? 0 : 1;
        else if (reason_for_difference(node, setting, ours, theirs) != nullptr)
            ++m_comparison.known;
        else
            report(node, "write of " + shown(kind, setting), registers_after(ours), registers_after(theirs));
    }

    std::string registers_after(const Answer& answer) const
    {
        const auto& ours = m_our_memory.bytes();
        const auto& theirs = m_their_memory.bytes();
        const auto differs = std::mismatch(ours.begin(), ours.end(), theirs.begin());
        std::string text = answer.text.empty() ? "written" : answer.text;
        if (differs.first != ours.end())
            text += "; registers differ from address " + std::to_string(differs.first - ours.begin()) +
                    ": ours " + std::to_string(*differs.first) + ", theirs " +
                    std::to_string(*differs.second);
        return text;
    }

    Setting random_setting(const Node& node)
    {
        Setting setting;
        setting.integer = m_choices.percent(50) ? m_choices.between(0, 4) : m_choices.between(-300, 70'000);
        setting.floating = static_cast<double>(m_choices.between(-4000, 4000)) / 8;
        setting.text = "Entry" + std::to_string(m_choices.below(8));
        try {
            if (node.is<Integer>())
                setting.integer = between_limits(node.as<Integer>(), setting.integer);
            if (node.is<Float>())
                setting.floating = between_limits(node.as<Float>(), setting.floating);
            if (node.is<String>() && !node.is<Register>())
                setting.text.resize(
                    std::min(setting.text.size(), static_cast<std::size_t>(node.as<String>().max_length())));
            if (node.is<Register>())
                setting.bytes.resize(static_cast<std::size_t>(node.as<Register>().length()));
        } catch (const Error&) {
            // the limits cannot be evaluated: then the value need not fit
        }
        for (auto& byte : setting.bytes)
            byte = static_cast<unsigned char>(m_choices.below(256));
        return setting;
    }

    std::int64_t between_limits(const Integer& node, std::int64_t value)
    {
        // The other library keeps literals as texts of floating numbers, so not more than 53 bits.
        constexpr std::int64_t far = std::int64_t{1} << 50U;
        const std::int64_t least = std::max(node.minimum(), -far);
        const std::int64_t most = std::min(node.maximum(), far);
        if (least > most)
            return value;
        if (value < least || value > most)
            value = m_choices.percent(50)   ? m_choices.between(least, most)
                    : m_choices.percent(50) ? least
                                            : most;
        const auto way = static_cast<std::uint64_t>(value) - static_cast<std::uint64_t>(node.minimum());
        return static_cast<std::int64_t>(static_cast<std::uint64_t>(value) -
                                         way % static_cast<std::uint64_t>(node.increment()));
    }

    /// A value that no rounding changes on its way to a whole number: converters multiply by 8 or more.
    static double between_limits(const Float& node, double value)
    {
        const double step = node.type() == NodeType::float_ ? 1.0 : 0.125;
        const double least = std::ceil(std::max(node.minimum(), -1e6) / step) * step;
        const double most = std::floor(std::min(node.maximum(), 1e6) / step) * step;
        return least <= most ? std::clamp(std::trunc(value / step) * step, least, most) : value;
    }

    static std::string shown(InterfaceType kind, const Setting& setting)
    {
        return kind == InterfaceType::float_                                      ? text_of(setting.floating)
               : kind == InterfaceType::register_                                 ? text_of(setting.bytes)
               : kind == InterfaceType::integer || kind == InterfaceType::boolean ? text_of(setting.integer)
                                                                                  : setting.text;
    }

    Choices m_choices;
    std::string m_title;
    Memory m_our_memory;
    Memory m_their_memory;
    OurMap m_ours;
    AravisMap m_theirs;
    std::vector<Node> m_nodes;
    bool m_has_parted{false}; ///< a write had different effects, so nothing can be compared any more
    Comparison m_comparison;
};

} // namespace

Comparison compare(const std::string& description, std::uint32_t seed, const std::string& title)
{
    return Run(description, seed, title).run();
}

} // namespace zvgenapi::differential
