#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace zvgentl::tool {

/// The options of one command, as it describes them: names ("-n,--frames"), the placeholder of the value in
/// the help ("N"), a sentence of help, and the variable that receives the value. A variable keeps its value
/// when the option is not given, and must live as long as the list.
class OptionList {
public:
    explicit OptionList(CLI::App& parser) : m_parser(parser) {}

    void text(const char* names, const char* value, const char* help, std::string& target);

    /// A whole number from `least` to `most`.
    struct Range {
        std::uint64_t least;
        std::uint64_t most;
    };
    void number(const char* names, const char* value, const char* help, std::uint64_t& target, Range range);

    template <class Value>
    struct Choice {
        const char* word;
        Value value;
    };
    /// One of several words.
    template <class Value>
    void choice(const char* names, const char* value, const char* help, Value& target,
                const std::vector<Choice<Value>>& choices)
    {
        std::vector<std::string> words;
        words.reserve(choices.size());
        for (const auto& choice : choices)
            words.push_back(choice.word);
        word_of(names, value, help, words,
                [&target, choices](std::size_t index) { target = choices[index].value; });
    }

    /// An option without a value; where it is given, the target becomes the opposite of what it was.
    void flag(const char* names, const char* help, bool& target);

    /// An option that may be repeated. `add` receives each value in order; it returns false for one that does
    /// not have the form that `value` shows.
    void repeated(const char* names, const char* value, const char* help,
                  std::function<bool(const std::string&)> add);

    /// Words without an option in front of them: exactly one, or at least one.
    void positional(const char* name, const char* help, std::string& target);
    void positional(const char* name, const char* help, std::vector<std::string>& target);
    /// The same, or none at all.
    void optional_words(const char* name, const char* help, std::vector<std::string>& target);

    /// The first option may only be given together with the second.
    void needs(const char* name, const char* other);
    /// Only one of both may be given.
    void excludes(const char* name, const char* other);
    /// Sets `given` when the option, which takes a value, is given.
    void note(const char* name, bool& given);

private:
    void word_of(const char* names, const char* value, const char* help,
                 const std::vector<std::string>& words, std::function<void(std::size_t)> choose);

    CLI::App& m_parser;
};

/// One command of the program, with its options.
class Command {
public:
    virtual ~Command() = default;
    /// Called once, before run().
    virtual void describe(OptionList& list) = 0;
    /// Returns the exit code. The caller reports exceptions and returns exit_failure for them.
    virtual int run() const = 0;
};

/// What the help says about a command.
struct CommandHelp {
    const char* name;
    const char* summary; // one line in the list of commands
    const char* footer;  // examples, explanations, exit codes
};

/// A static object of this type adds a command to the program. A command is a function over a struct of
/// options, and another one that describes these options. All of it is in one file of commands/.
class CommandRegistration {
public:
    template <class Options>
    CommandRegistration(const CommandHelp& help, void (*describe_options)(OptionList&, Options&),
                        int (*work)(const Options&))
        : CommandRegistration(help, [describe_options, work]() -> std::unique_ptr<Command> {
              return std::make_unique<CommandOf<Options>>(describe_options, work);
          })
    {
    }

private:
    using Maker = std::function<std::unique_ptr<Command>()>;

    template <class Options>
    class CommandOf final : public Command {
    public:
        CommandOf(void (*describe_options)(OptionList&, Options&), int (*work)(const Options&))
            : m_describe(describe_options), m_work(work)
        {
        }
        void describe(OptionList& list) override { m_describe(list, m_options); }
        int run() const override { return m_work(m_options); }

    private:
        void (*m_describe)(OptionList&, Options&);
        int (*m_work)(const Options&);
        Options m_options;
    };

    CommandRegistration(const CommandHelp& help, Maker maker);
};

/// The whole program: reads the command line and runs a command. Answers the exit code.
int run_program(int argc, const char* const* argv);

} // namespace zvgentl::tool
