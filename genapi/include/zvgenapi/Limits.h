#pragma once

#include <cstddef>
#include <cstdint>

namespace zvgenapi {

/// How much of everything a description and a device may ask for. Going beyond one of them is an Error of the
/// kind `limit`. The defaults are far beyond what real cameras need, and far below what harms a process.
struct Limits {
    /// Bytes of the description, after it was unpacked.
    std::size_t description_bytes{std::size_t{64} << 20U};
    /// Nodes, entries of enumerations and of structures among them.
    std::size_t nodes{1'000'000};
    /// Elements within nodes, such as pValue or Address.
    std::size_t elements{4'000'000};
    /// Bytes of the text of one element.
    std::size_t element_text{std::size_t{1} << 20U};
    /// Levels of elements in the XML file.
    std::size_t xml_depth{64};
    /// Nodes that need one another in a row to answer a query.
    std::size_t evaluation_depth{200};
    /// Nodes looked at and operations of formulas computed to answer a query.
    std::uint64_t evaluation_steps{1'000'000};
    /// Bytes that a query may read from ports.
    std::uint64_t query_bytes{std::uint64_t{256} << 20U};
    /// Bytes of the longest register.
    std::uint64_t register_bytes{std::uint64_t{64} << 20U};
    /// Bytes of register contents that a map keeps in its cache; what does not fit is read again.
    std::uint64_t cache_bytes{std::uint64_t{16} << 20U};
};

} // namespace zvgenapi
