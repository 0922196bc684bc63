#pragma once

#include <string>
#include <vector>

// The environment of this process. Values are UTF-8.

namespace platform {

/// The value of a variable; empty when it is not set. On systems where a program can have more rights than
/// the user who starts it (set-uid), it has no variables then: they would name files that the user may not
/// write.
std::string environment(const char* name);

/// What some variables were at one moment, to notice later that one has changed.
class EnvironmentCopy {
public:
    EnvironmentCopy() = default;
    explicit EnvironmentCopy(const std::vector<const char*>& names);

    /// True while the variables have these values. May be false if another variable has changed.
    bool is_current() const;

private:
    struct Variable {
        const char* name;
        std::string value;
        const char* place; // in the system's list; null when it is not set
    };
    std::vector<Variable> m_variables;
    // The system's list, where it can be read.
    const void* m_list_place{nullptr};
    std::vector<const char*> m_list; // with the null at its end
};

/// Sets a variable; an empty value removes it. Call before threads are started.
void set_environment(const char* name, const std::string& value);

/// Separates the folders in a variable such as PATH.
extern const char path_list_separator;

} // namespace platform
