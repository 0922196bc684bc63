#include "zvgentl/Selection.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <stdexcept>
#include <utility>

#include <fmt/core.h>

#include "gentl/Error.h"
#include "gentl/Port.h"
#include "gentl/texts.h"
#include "platform/visible_text.h"
#include "zvgentl/LoggerLibrary.h"
#include "zvgentl/OpenPort.h"

namespace zvgentl::tool {

using namespace GenTL;
namespace fs = std::filesystem;

namespace {

constexpr const char* own_producer = "ZVGRLibGenTL.cti";

/// How well a name fits the one that is looked for.
enum class Fit { none, but_for_case, exact };

Fit fit_of(const std::string& wanted, const std::string& name)
{
    if (wanted == name)
        return Fit::exact;
    return lower_case(wanted) == lower_case(name) ? Fit::but_for_case : Fit::none;
}

Fit fit_of(const std::string& wanted, const SelectedDevice& device)
{
    if (wanted.empty())
        return Fit::exact;
    return std::max({fit_of(wanted, device.id), fit_of(wanted, device.serial_number),
                     fit_of(wanted, device.user_defined_name)});
}

/// What a search found, for the message when no device fits.
struct Search {
    std::map<std::string, std::unique_ptr<Interface>> interfaces; // stay open until the choice is made
    std::map<Fit, std::vector<SelectedDevice>> found;
    std::vector<std::string> seen;
    std::vector<std::string> problems;

    /// Those that fit best.
    std::vector<SelectedDevice>& hits()
    {
        return found[found[Fit::exact].empty() ? Fit::but_for_case : Fit::exact];
    }
};

SelectedDevice describe(const Interface& iface, const std::string& interface_id, const std::string& id)
{
    SelectedDevice device;
    device.interface_id = interface_id;
    device.id = id;
    device.vendor = iface.device_text(id, DEVICE_INFO_VENDOR).value_or("");
    device.model = iface.device_text(id, DEVICE_INFO_MODEL).value_or("");
    device.serial_number = iface.device_text(id, DEVICE_INFO_SERIAL_NUMBER).value_or("");
    device.user_defined_name = iface.device_text(id, DEVICE_INFO_USER_DEFINED_NAME).value_or("");
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
            search.found[fit_of(wanted, device)].push_back(std::move(device));
            if (wanted.empty())
                break;
        }
    } catch (const Error& reason) {
        search.problems.push_back(fmt::format("{}: {}", platform::visible(interface_id), reason.what()));
    }
}

/// The name that the user gave a camera, as its own features know it; empty when that cannot be read.
std::string name_in_camera(const Interface& iface, const std::string& id)
{
    try {
        const Device device(iface, id);
        const Port port(device.producer(), device.remote_port());
        return make_node_map(port)->get_text("DeviceUserID");
    } catch (const std::exception&) {
        return {};
    }
}

/// Producers need not tell the names that users gave, and some tell others instead. Asking the cameras takes
/// longer and opens them, so this comes last.
void search_cameras(const std::string& wanted, Search& search)
{
    auto candidates = std::move(search.found[Fit::none]);
    search.found.clear();
    for (auto& device : candidates) {
        device.user_defined_name = name_in_camera(*search.interfaces.at(device.interface_id), device.id);
        search.found[fit_of(wanted, device)].push_back(std::move(device));
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

std::string ambiguous(const std::vector<SelectedDevice>& hits, const std::string& wanted)
{
    std::vector<std::string> names;
    bool share_an_interface = false;
    for (const auto& hit : hits) {
        names.push_back(hit.interface_id + "/" + hit.id);
        share_an_interface =
            share_an_interface || (&hit != &hits.front() && hit.interface_id == hits.front().interface_id);
    }
    return fmt::format("more than one device is called {}: {}; choose one {}", platform::visible(wanted),
                       platform::visible(joined(names, ", ")),
                       share_an_interface ? "by its ID" : "with --interface");
}

std::string with_files(std::string text, const std::vector<fs::path>& files)
{
    for (const auto& file : files)
        text += "\n  " + platform::visible(file.u8string());
    return text;
}

System opened(const Producer& producer)
{
    remember_log_of(producer);
    return System(producer);
}

/// A producer of a search, or why it cannot be used.
std::unique_ptr<LoadedSystem> load_if_it_has(const fs::path& file, const DeviceOptions& options,
                                             std::string& problems)
{
    try {
        auto loaded = std::make_unique<LoadedSystem>(file);
        if (options.device.empty())
            select_interface(loaded->system, options.interface_id);
        else
            select_device(loaded->system, options.interface_id, options.device);
        return loaded;
    } catch (const std::exception& reason) {
        problems += fmt::format("\n{}: {}", platform::visible(file.u8string()), reason.what());
        return nullptr;
    }
}

} // namespace

LoadedSystem::LoadedSystem(const fs::path& file) : producer(file), system(opened(producer))
{
    const std::string report = report_of(producer);
    if (!report.empty())
        throw std::runtime_error(report);
}

fs::path select_producer(const std::vector<fs::path>& files)
{
    if (files.size() == 1)
        return files.front();
    std::vector<fs::path> own;
    std::copy_if(files.begin(), files.end(), std::back_inserter(own),
                 [](const auto& file) { return file.filename() == own_producer; });
    if (own.size() == 1)
        return own.front();
    throw std::runtime_error(with_files(
        "there is more than one producer; choose one with --cti, or a device with --device:", files));
}

std::unique_ptr<LoadedSystem> load_system(const DeviceOptions& options)
{
    const auto files = find_producers(fs::u8path(options.cti));
    const std::string wanted = options.device.empty() ? options.interface_id : options.device;
    if (files.size() == 1 || wanted.empty())
        return std::make_unique<LoadedSystem>(select_producer(files));
    std::vector<std::unique_ptr<LoadedSystem>> loaded;
    std::vector<fs::path> having;
    std::string problems;
    for (const auto& file : files)
        if (auto one = load_if_it_has(file, options, problems)) {
            loaded.push_back(std::move(one));
            having.push_back(file);
        }
    if (loaded.empty())
        throw std::runtime_error(
            fmt::format("none of {} producers has {}:{}", files.size(), platform::visible(wanted), problems));
    if (loaded.size() > 1)
        throw std::runtime_error(with_files(
            fmt::format("more than one producer has {}; choose one with --cti:", platform::visible(wanted)),
            having));
    return std::move(loaded.front());
}

std::string select_interface(const System& system, const std::string& interface_id)
{
    const auto interfaces = system.interface_ids();
    if (interfaces.empty())
        throw std::runtime_error(
            "the producer found no interface: no frame grabber is installed, or its driver is "
            "not running");
    if (interface_id.empty())
        return interfaces.front();
    for (const Fit fit : {Fit::exact, Fit::but_for_case}) {
        std::vector<std::string> fitting;
        std::copy_if(interfaces.begin(), interfaces.end(), std::back_inserter(fitting),
                     [&](const auto& id) { return fit_of(interface_id, id) == fit; });
        if (fitting.size() == 1)
            return fitting.front();
    }
    throw std::runtime_error(
        fmt::format("no interface {}; there are {}", interface_id, joined(interfaces, ", ")));
}

SelectedDevice select_device(const System& system, const std::string& interface_id, const std::string& device)
{
    const std::string first = select_interface(system, interface_id); // says so when there is none
    const auto interfaces = interface_id.empty() ? system.interface_ids() : std::vector<std::string>{first};
    Search search;
    for (const auto& candidate : interfaces) {
        search_interface(system, candidate, device, search);
        if (device.empty() && !search.hits().empty())
            break;
    }
    if (search.hits().empty() && !device.empty())
        search_cameras(device, search);
    auto& hits = search.hits();
    if (hits.empty())
        throw std::runtime_error(not_found(search, interface_id, device));
    if (hits.size() > 1)
        throw std::runtime_error(ambiguous(hits, device));
    SelectedDevice selected = std::move(hits.front());
    selected.iface = std::move(search.interfaces.at(selected.interface_id));
    return selected;
}

} // namespace zvgentl::tool
