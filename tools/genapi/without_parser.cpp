#include <stdexcept>

#include "genapi/NodeMap.h"

// The node map of a build without a GenApi parser: everything is refused with the reason.

namespace zvgentl::tool {

namespace {

[[noreturn]] void refuse()
{
    throw std::runtime_error(
        "this build has no GenApi parser, because libaravis was not installed when it was built, and cannot "
        "read features; `zvgentl xml` saves the description, which any GenICam consumer can open");
}

} // namespace

class NodeMap::Impl {};

bool has_genapi_parser() noexcept { return false; }

void end_on_arithmetic_fault() {}

NodeMap::NodeMap(const std::string& /*description*/, const Registers& /*registers*/) { refuse(); }
NodeMap::~NodeMap() = default;

std::vector<TreeEntry> NodeMap::tree(const std::string& /*category*/) const { refuse(); }
Feature NodeMap::describe(const std::string& /*name*/) const { refuse(); }
Value NodeMap::get(const std::string& /*name*/) const { refuse(); }
std::string NodeMap::get_text(const std::string& /*name*/) const { refuse(); }
void NodeMap::set(const std::string& /*name*/, const std::string& /*text*/) const { refuse(); }
void NodeMap::execute(const std::string& /*name*/, std::chrono::milliseconds /*timeout*/) const { refuse(); }

} // namespace zvgentl::tool
