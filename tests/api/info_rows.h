#pragma once

#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include "api/DS_modes.h"

// Every typed info query with every row that it answers, for what all of them have in common. Not among the
// rows are those that differ from every other one: the producer's path, the ID of a port, the value of an
// event.

namespace zvtest {

/// What a query is asked of, and what its answers and lines are made from.
struct Asked {
    TL_HANDLE tl{nullptr};
    IF_HANDLE iface{nullptr};
    DEV_HANDLE dev{nullptr};
    DS_HANDLE ds{nullptr};
    BUFFER_HANDLE buffer{nullptr};
    EVENT_HANDLE event{nullptr};
    PORT_HANDLE port{nullptr};
    std::string port_kind;

    Mode mode{Mode::queued};
    const void* memory{nullptr};
    const void* user{nullptr};
    uint32_t grabber{0}; // handles of the grabber library
    uint32_t camera{0};
    uint32_t stream{0};
};

using Bytes = std::vector<uint8_t>;

Bytes bytes_of(uint64_t number);
inline Bytes bytes_of(const void* address) { return bytes_of(reinterpret_cast<uintptr_t>(address)); }
Bytes bytes_of(const std::string& text); // with its zero
inline Bytes bytes_of(const char* text) { return bytes_of(std::string(text)); }

/// An answer: a text, a number, or a function of what was asked that gives one.
class InfoAnswer {
public:
    template <class Source>
    InfoAnswer(Source source)
        : m_bytes([source](const Asked& asked) {
              if constexpr (std::is_invocable_v<Source, const Asked&>)
                  return bytes_of(source(asked));
              else if constexpr (std::is_integral_v<Source>)
                  return bytes_of(static_cast<uint64_t>(source));
              else
                  return bytes_of(source);
          })
    {
    }
    Bytes bytes(const Asked& asked) const { return m_bytes(asked); }

private:
    std::function<Bytes(const Asked&)> m_bytes;
};

struct InfoRow {
    const char* name;
    int32_t command;
    INFO_DATATYPE type;
    InfoAnswer answer;
    Calls (*calls)(const Asked&){nullptr}; // of the grabber library; null for none
    const char* line{nullptr};             // written before the answer, see with_handles()

    bool is_text() const { return type == INFO_DATATYPE_STRING; }
    /// What the query writes, all of it.
    Bytes bytes(const Asked& asked) const;
};

/// Which numbers a query writes a line about.
enum class NumberLines { none, too_small, written, both };

/// What a buffer without room is.
enum class NoRoom { malformed, too_small };

/// What queries do differently from one another.
struct Habits {
    Priority traffic{Priority::information}; // of the lines that are not errors
    NumberLines number_lines{NumberLines::none};
    NoRoom no_room{NoRoom::malformed};
    std::vector<Mode> modes{Mode::queued}; // the modes in which the query is asked
};

struct InfoQuery {
    const char* function;
    const char* enter; // see with_handles()
    std::string exit;
    std::vector<InfoRow> rows;
    std::vector<int32_t> unknown_commands;
    GC_ERROR (*ask)(const Asked& asked, int32_t command, INFO_DATATYPE* type, void* buffer, size_t* size);
    Habits habits;

    std::string port_kind{};       // the port that it is asked of
    const char* accepted{nullptr}; // a line behind the checks of outputs and handles
    std::string unknown_line{"info= "};
    bool clears_size_for_unknown_commands{true};

    bool logs_too_small() const
    {
        return habits.number_lines == NumberLines::too_small || habits.number_lines == NumberLines::both;
    }
    bool logs_written() const
    {
        return habits.number_lines == NumberLines::written || habits.number_lines == NumberLines::both;
    }
};

/// A line's text: `{tl}`, `{iface}`, `{dev}`, `{ds}` and `{port}` stand for handles of 16 digits, `{low ds}`,
/// `{low buffer}`, `{low event}` and `{grabber}` for those that are printed otherwise, `{kind}` for the kind
/// of port, `{command}` and `{size}` for the arguments.
std::string with_handles(std::string text, const Asked& asked, int32_t command, size_t size);

const std::vector<InfoQuery>& info_queries();

/// A query in a mode, and one of its rows where a test is about one.
struct InfoCase {
    Mode mode;
    const InfoQuery* query;
    const InfoRow* row{nullptr};
};

std::ostream& operator<<(std::ostream& out, const InfoCase& asked);

/// Everything that can be asked is open and described. The second of three grabbers has two cameras, of which
/// the second has an open stream. Six buffers are announced. The first three got a frame each, and the event
/// of the first one was taken. The fourth and the fifth are queued. Buffer queries are asked of the second.
class EverythingDescribed : public OpenStream, public testing::WithParamInterface<InfoCase> {
protected:
    void SetUp() override;
    bool is_queued() const override { return GetParam().mode == Mode::queued; }

    const InfoQuery& info() const { return *GetParam().query; }
    const InfoRow& row() const { return *GetParam().row; }

    Asked asked;
};

} // namespace zvtest
