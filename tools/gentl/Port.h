#pragma once

#include <string>
#include <vector>

#include "GenTL/GenTL.h"

#include "gentl/Producer.h"
#include "gentl/Registers.h"

namespace zvgentl::tool {

/// The register port of a module that is open for as long as the object lives.
class Port final : public Registers {
public:
    Port(const Producer& producer, GenTL::PORT_HANDLE handle) : m_producer(producer), m_handle(handle) {}

    GenTL::PORT_HANDLE handle() const noexcept { return m_handle; }

    /// A producer may move fewer bytes than asked for: both ask again for the rest. Throw Error with the
    /// producer's own words.
    void read(std::uint64_t address, void* data, std::size_t size) const override;
    void write(std::uint64_t address, const void* data, std::size_t size) const override;

    /// The URLs of the port's descriptions, as the producer gives them.
    std::vector<std::string> urls() const;

private:
    const Producer& m_producer;
    GenTL::PORT_HANDLE m_handle;
};

} // namespace zvgentl::tool
