#include "zvgentl/ProducerTree.h"

#include <algorithm>
#include <exception>
#include <initializer_list>

#include <fmt/core.h>

#include "GenTL/GenTL.h"

#include "gentl/System.h"
#include "gentl/texts.h"
#include "platform/visible_text.h"
#include "zvgentl/LoggerLibrary.h"

namespace zvgentl::tool {

using namespace GenTL;

namespace {

std::string access_name(std::uint64_t status)
{
    switch (status) {
    case DEVICE_ACCESS_STATUS_READWRITE:
        return "read/write";
    case DEVICE_ACCESS_STATUS_READONLY:
        return "read only";
    case DEVICE_ACCESS_STATUS_NOACCESS:
        return "none";
    case DEVICE_ACCESS_STATUS_BUSY:
        return "busy";
    case DEVICE_ACCESS_STATUS_OPEN_READWRITE:
        return "open, read/write";
    case DEVICE_ACCESS_STATUS_OPEN_READONLY:
        return "open, read only";
    default:
        return "unknown";
    }
}

DeviceEntry read_device(const Interface& iface, const std::string& id, Streams streams)
{
    DeviceEntry entry;
    entry.id = id;
    try {
        const auto text = [&](DEVICE_INFO_CMD command) {
            return iface.device_text(id, command).value_or("");
        };
        entry.vendor = text(DEVICE_INFO_VENDOR);
        entry.model = text(DEVICE_INFO_MODEL);
        entry.display_name = text(DEVICE_INFO_DISPLAYNAME);
        entry.user_defined_name = text(DEVICE_INFO_USER_DEFINED_NAME);
        entry.serial_number = text(DEVICE_INFO_SERIAL_NUMBER);
        entry.version = text(DEVICE_INFO_VERSION);
        entry.transport = text(DEVICE_INFO_TLTYPE);
        entry.access = access_name(iface.device_number(id, DEVICE_INFO_ACCESS_STATUS).value_or(0));
        entry.timestamp_frequency = iface.device_number(id, DEVICE_INFO_TIMESTAMP_FREQUENCY);
        if (streams == Streams::listed)
            entry.streams = Device(iface, id).stream_ids();
    } catch (const std::exception& reason) {
        entry.problem = reason.what();
    }
    return entry;
}

InterfaceEntry read_interface(const System& system, const std::string& id, Streams streams)
{
    InterfaceEntry entry;
    entry.id = id;
    try {
        entry.display_name = system.interface_text(id, INTERFACE_INFO_DISPLAYNAME).value_or("");
        entry.transport = system.interface_text(id, INTERFACE_INFO_TLTYPE).value_or("");
        const Interface iface(system, id);
        for (const auto& device : iface.device_ids())
            entry.devices.push_back(read_device(iface, device, streams));
    } catch (const std::exception& reason) {
        entry.problem = reason.what();
    }
    return entry;
}

std::string gentl_version(const Producer& producer)
{
    const auto major = producer.number(TL_INFO_GENTL_VER_MAJOR);
    const auto minor = producer.number(TL_INFO_GENTL_VER_MINOR);
    return major && minor ? std::to_string(*major) + "." + std::to_string(*minor) : std::string();
}

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

/// With texts that may be shown on a terminal.
ProducerEntry made_visible(ProducerEntry producer)
{
    const auto make_visible = [](std::initializer_list<std::string*> texts) {
        for (std::string* const text : texts)
            *text = platform::visible(*text);
    };
    // These are ours and may have several lines; what is from outside in them is visible already.
    const auto make_lines_visible = [](std::string& problem) { problem = platform::visible_lines(problem); };
    make_lines_visible(producer.problem);
    make_visible({&producer.file, &producer.display_name, &producer.vendor, &producer.model,
                  &producer.version, &producer.transport, &producer.gentl_version});
    for (InterfaceEntry& iface : producer.interfaces) {
        make_visible({&iface.id, &iface.display_name, &iface.transport});
        make_lines_visible(iface.problem);
        for (DeviceEntry& device : iface.devices) {
            make_visible({&device.id, &device.vendor, &device.model, &device.display_name,
                          &device.user_defined_name, &device.serial_number, &device.version,
                          &device.transport, &device.access});
            make_lines_visible(device.problem);
            for (std::string& stream : device.streams)
                make_visible({&stream});
        }
    }
    return producer;
}

} // namespace

ProducerEntry read_producer(const std::filesystem::path& file, Streams streams)
{
    ProducerEntry entry;
    entry.file = std::filesystem::absolute(file).u8string();
    try {
        const Producer producer(file);
        entry.display_name = producer.text(TL_INFO_DISPLAYNAME).value_or("");
        entry.vendor = producer.text(TL_INFO_VENDOR).value_or("");
        entry.model = producer.text(TL_INFO_MODEL).value_or("");
        entry.version = producer.text(TL_INFO_VERSION).value_or("");
        entry.transport = producer.text(TL_INFO_TLTYPE).value_or("");
        entry.gentl_version = gentl_version(producer);
        remember_log_of(producer);
        const System system(producer);
        entry.report = report_of(producer);
        for (const auto& iface : system.interface_ids())
            entry.interfaces.push_back(read_interface(system, iface, streams));
    } catch (const std::exception& reason) {
        entry.problem = reason.what();
    }
    return entry;
}

std::string to_text(const ProducerEntry& entry)
{
    const ProducerEntry producer = made_visible(entry);
    std::string text;
    if (!producer.display_name.empty())
        text += fmt::format("{} {}, by {}, GenTL {}\n", producer.display_name, producer.version,
                            producer.vendor, shown(producer.gentl_version));
    text += producer.file + "\n";
    if (!producer.problem.empty())
        return text + fmt::format("  {}\n", producer.problem);
    if (producer.interfaces.empty() && producer.report.empty())
        text += "  no interface found: no frame grabber is installed, or its driver is not running\n";
    const auto widths = column_widths(producer);
    for (const auto& iface : producer.interfaces)
        text += interface_text(iface, widths);
    return text;
}

std::string report_text(const ProducerEntry& producer)
{
    return producer.report.empty() ? std::string()
                                   : fmt::format("{}:\n{}\n", platform::visible(producer.file),
                                                 platform::visible_lines(producer.report));
}

} // namespace zvgentl::tool
