#pragma once

#include <string>

#include "genapi_differential/Memory.h"
#include "genapi_differential/Subject.h"
#include "zvgenapi/NodeMap.h"

namespace zvgenapi::differential {

/// This library. The memory must outlive it.
class OurMap : public Subject {
public:
    OurMap(const std::string& description, Memory& memory);

    NodeMap& map() noexcept { return m_map; }
    Answer ask(const std::string& node, InterfaceType kind, Question question) override;
    Answer set(const std::string& node, InterfaceType kind, const Setting& setting) override;

private:
    NodeMap m_map;
};

} // namespace zvgenapi::differential
