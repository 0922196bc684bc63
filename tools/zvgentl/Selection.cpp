#include "zvgentl/Selection.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <stdexcept>
#include <tuple>
#include <utility>

#include <fmt/core.h>

#include "gentl/Error.h"
#include "gentl/texts.h"
#include "platform/visible_text.h"

namespace zvgentl::tool {

using namespace GenTL;

namespace {

constexpr const char* own_producer = "ZVGRLibGenTL.cti";

/// What a search found, for the message when no device fits.
struct Search {
    std::map<std::string, std::unique_ptr<Interface>> interfaces; // stay open until the choice is made
    std::vector<SelectedDevice> hits;
    std::vector<std::string> seen;
    std::vector<std::string> problems;
};

SelectedDevice describe(const Interface& iface, const std::string& interface_id, const std::string& id)
{
    SelectedDevice device;
    device.interface_id = interface_id;
    device.id = id;
    device.vendor = iface.device_text(id, DEVICE_INFO_VENDOR).value_or("");
    device.model = iface.device_text(id, DEVICE_INFO_MODEL).value_or("");
    device.serial_number = iface.device_text(id, DEVICE_INFO_SERIAL_NUMBER).value_or("");
    device.timestamp_frequency = iface.device_number(id, DEVICE_INFO_TIMESTAMP_FREQUENCY).value_or(0);
    return device;
}

void search_interface(const System& system, const std::string& interface_id, const std::string& wanted,
                      Search& search)
{
    try {
        const Interface& iface =
            *search.interfaces.emplace(interface_id, std::make_unique<Interface>(system, interface_id))
                 .first->second;
        for (const auto& id : iface.device_ids()) {
            SelectedDevice device = describe(iface, interface_id, id);
            search.seen.push_back(fmt::format("{}/{}", interface_id, id));
            if (wanted.empty() || wanted == id || wanted == device.serial_number)
                search.hits.push_back(std::move(device));
            if (wanted.empty() && !search.hits.empty())
                break;
        }
    } catch (const Error& reason) {
        search.problems.push_back(fmt::format("{}: {}", platform::visible(interface_id), reason.what()));
    }
}

std::string not_found(const Search& search, const std::string& interface_id, const std::string& wanted)
{
    const std::string place = interface_id.empty() ? std::string() : " on interface " + interface_id;
    std::string text = wanted.empty() ? "no device found" + place : "no device " + wanted + place;
    if (!search.seen.empty())
        text += fmt::format("; there are {}", platform::visible(joined(search.seen, ", ")));
    for (const auto& problem : search.problems)
        text += "\n" + problem;
    return text + "\nRun `zvgentl list` to see what is connected.";
}

std::string ambiguous(const Search& search, const std::string& wanted)
{
    std::vector<std::string> names;
    for (const auto& hit : search.hits)
        names.push_back(hit.interface_id + "/" + hit.id);
    return fmt::format("more than one device is called {}: {}; choose one with --interface",
                       platform::visible(wanted), platform::visible(joined(names, ", ")));
}

} // namespace

std::filesystem::path select_producer(const std::vector<std::filesystem::path>& files)
{
    if (files.size() == 1)
        return files.front();
    std::vector<std::filesystem::path> own;
    std::copy_if(files.begin(), files.end(), std::back_inserter(own),
                 [](const auto& file) { return file.filename() == own_producer; });
    if (own.size() == 1)
        return own.front();
    std::string text = "there is more than one producer; choose one with --cti:";
    for (const auto& file : files)
        text += "\n  " + platform::visible(file.u8string());
    throw std::runtime_error(text);
}

std::string select_interface(const System& system, const std::string& interface_id)
{
    const auto interfaces = system.interface_ids();
    if (interfaces.empty())
        throw std::runtime_error(
            "the producer found no interface: no frame grabber is installed, or its driver is "
            "not running");
    if (!interface_id.empty() &&
        std::find(interfaces.begin(), interfaces.end(), interface_id) == interfaces.end())
        throw std::runtime_error(
            fmt::format("no interface {}; there are {}", interface_id, joined(interfaces, ", ")));
    return interface_id.empty() ? interfaces.front() : interface_id;
}

SelectedDevice select_device(const System& system, const std::string& interface_id, const std::string& device)
{
    std::ignore = select_interface(system, interface_id); // says so when there is none
    Search search;
    for (const auto& candidate : system.interface_ids()) {
        if (interface_id.empty() || candidate == interface_id)
            search_interface(system, candidate, device, search);
        if (device.empty() && !search.hits.empty())
            break;
    }
    if (search.hits.empty())
        throw std::runtime_error(not_found(search, interface_id, device));
    if (search.hits.size() > 1)
        throw std::runtime_error(ambiguous(search, device));
    SelectedDevice selected = std::move(search.hits.front());
    selected.iface = std::move(search.interfaces.at(selected.interface_id));
    return selected;
}

} // namespace zvgentl::tool
