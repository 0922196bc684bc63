#include "modules/PortMemory.h"

#include <algorithm>
#include <cstring>
#include <locale>
#include <sstream>

namespace zvgentl {

std::string PortMemory::url() const
{
    std::ostringstream text;
    text.imbue(std::locale::classic()); // the application's may group digits
    text << "Local:" << m_file_name << ';' << std::hex << start << ';' << m_size;
    return text.str();
}

bool PortMemory::read(uint64_t address, void* destination, size_t* size) const noexcept
{
    const uint64_t offset = address - start; // wraps for an address below
    if (offset >= m_size)
        return false;
    *size = std::min(*size, m_size - static_cast<size_t>(offset));
    std::memcpy(destination, m_bytes + offset, *size);
    return true;
}

} // namespace zvgentl
