#include <algorithm>
#include <array>

#include <fmt/core.h>

#include "texts.h"
#include "zvgentl/ProducerTree.h"

namespace zvgentl::tool {

namespace {

using Row = std::vector<std::string>;

std::string shown(const std::string& text) { return text.empty() ? "-" : text; }

Row device_row(const DeviceEntry& device)
{
    Row row{device.id,      shown(device.vendor),    shown(device.model), shown(device.serial_number),
            device.version, shown(device.transport), shown(device.access)};
    row[4] = shown(row[4]);
    row.push_back(joined(device.streams, " "));
    return row;
}

const Row& headings()
{
    static const Row row{"Device", "Vendor", "Model", "Serial", "Version", "Transport", "Access", "Streams"};
    return row;
}

/// The width of each column over all devices, so that the tables of all interfaces line up; 0 leaves a column
/// out.
std::vector<std::size_t> column_widths(const ProducerEntry& producer)
{
    std::vector<std::size_t> widths(headings().size(), 0);
    for (const auto& iface : producer.interfaces)
        for (const auto& device : iface.devices) {
            const Row row = device_row(device);
            for (std::size_t i = 0; i < row.size(); ++i)
                if (!row[i].empty())
                    widths[i] = std::max({widths[i], row[i].size(), headings()[i].size()});
        }
    return widths;
}

std::string line(const Row& row, const std::vector<std::size_t>& widths)
{
    std::string text = " ";
    for (std::size_t i = 0; i < row.size(); ++i)
        if (widths[i] > 0)
            text += fmt::format(" {:<{}} ", row[i], widths[i]);
    text.erase(text.find_last_not_of(' ') + 1);
    return text + "\n";
}

std::string interface_text(const InterfaceEntry& iface, const std::vector<std::size_t>& widths)
{
    std::string text =
        fmt::format("\n{}  {}  {}\n", iface.id, shown(iface.transport), shown(iface.display_name));
    if (!iface.problem.empty())
        text += fmt::format("  cannot be read: {}\n", iface.problem);
    else if (iface.devices.empty())
        text += "  no device found\n";
    else
        text += line(headings(), widths);
    for (const auto& device : iface.devices) {
        text += line(device_row(device), widths);
        if (!device.problem.empty())
            text += fmt::format("    {}: {}\n", device.id, device.problem);
    }
    return text;
}

} // namespace

std::string to_text(const ProducerEntry& producer)
{
    std::string text;
    if (!producer.display_name.empty())
        text += fmt::format("{} {}, by {}, GenTL {}\n", producer.display_name, producer.version,
                            producer.vendor, shown(producer.gentl_version));
    text += producer.file + "\n";
    if (!producer.problem.empty())
        return text + fmt::format("  {}\n", producer.problem);
    if (producer.interfaces.empty())
        text += "  no interface found: no frame grabber is installed, or its driver is not running\n";
    const auto widths = column_widths(producer);
    for (const auto& iface : producer.interfaces)
        text += interface_text(iface, widths);
    return text;
}

} // namespace zvgentl::tool
