#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "GenTL/GenTL.h"

#include "gentl/Functions.h"
#include "platform/DynamicLibrary.h"

namespace zvgentl::tool {

/// The variable that lists the folders of the installed GenTL producers.
constexpr const char* producer_path_variable = "GENICAM_GENTL64_PATH";

/// The producer files (*.cti) to choose from: those at `wanted` (a file, or a folder of them) when it is
/// given, else those in the folders of GENICAM_GENTL64_PATH when it is set, else those beside the running
/// program. Throws std::runtime_error, saying where it looked, when there is none.
std::vector<std::filesystem::path> find_producers(const std::filesystem::path& wanted);

/// One producer, loaded and initialised while the object lives. Every other object of this folder refers to
/// one.
class Producer {
public:
    /// Throws std::runtime_error when the file is not a GenTL producer, Error when it refuses to start.
    explicit Producer(const std::filesystem::path& file);
    /// A producer that is part of this program.
    explicit Producer(const Functions& functions);
    ~Producer();
    Producer(const Producer&) = delete;
    Producer& operator=(const Producer&) = delete;

    const std::filesystem::path& file() const noexcept { return m_file; }
    const Functions& functions() const noexcept { return m_functions; }

    /// The address of a symbol of a library that the producer needs, by its name without "lib" and ending;
    /// null when there is none.
    void* find_in(const char* library, const char* symbol) const noexcept;

    /// Throws Error with the producer's own words unless the call succeeded.
    void check(GenTL::GC_ERROR code, const char* function) const;

    /// A text or a number of GCGetInfo; nothing when the producer does not have it.
    std::optional<std::string> text(GenTL::TL_INFO_CMD command) const;
    std::optional<std::uint64_t> number(GenTL::TL_INFO_CMD command) const;

private:
    void start();
    std::string last_error_text() const;

    std::filesystem::path m_file;
    std::optional<platform::DynamicLibrary> m_library;
    Functions m_functions;
    mutable std::string m_known_error_text; // a producer leaves an old text in place: only a new one is shown
};

/// A query of typed information with everything but the output arguments filled in.
using InfoQuery = std::function<GenTL::GC_ERROR(GenTL::INFO_DATATYPE*, void*, std::size_t*)>;
/// An ID query with everything but the output arguments filled in.
using IdQuery = std::function<GenTL::GC_ERROR(char*, std::size_t*)>;

/// The answer of a query; nothing when it is not implemented or not available. Other failures throw Error.
std::optional<std::string> find_text(const Producer& producer, const char* function, const InfoQuery& query);
std::optional<std::uint64_t> find_number(const Producer& producer, const char* function,
                                         const InfoQuery& query);
/// The same, for what must be there: its absence throws Error too.
std::uint64_t read_number(const Producer& producer, const char* function, const InfoQuery& query);
void* read_pointer(const Producer& producer, const char* function, const InfoQuery& query);
std::string read_id(const Producer& producer, const char* function, const IdQuery& query);

} // namespace zvgentl::tool
