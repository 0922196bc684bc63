#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "zvgenapi/Error.h"
#include "zvgenapi/types.h"

namespace zvgenapi::differential {

/// What is asked about a node.
enum class Question {
    value,
    minimum,
    maximum,
    increment,
    access,
    entries,
    length,
    address,
    representation,
    unit,
    notation,
    precision,
    visibility,
    display_name,
    tool_tip,
    description
};

const char* name_of(Question question);

/// A text for what came out, or why nothing did.
struct Answer {
    std::string text;
    bool is_error{false};
    ErrorKind kind{}; ///< of an error of ours
};

/// What is written to a node; the interface of the node decides what is used.
struct Setting {
    std::int64_t integer{0};
    double floating{0};
    std::string text;
    std::vector<unsigned char> bytes;
};

/// One of the two libraries with a description and registers. What a node is, ours decides for both.
class Subject {
public:
    Subject() = default;
    virtual ~Subject() = default;
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;

    virtual Answer ask(const std::string& node, InterfaceType kind, Question question) = 0;
    /// An empty text if it was written.
    virtual Answer set(const std::string& node, InterfaceType kind, const Setting& setting) = 0;
};

/// The texts in which both subjects answer.
std::string text_of(std::int64_t value);
std::string text_of(double value);
std::string text_of(const std::vector<unsigned char>& bytes);
std::string text_of(const std::vector<std::string>& names);

} // namespace zvgenapi::differential
