#include "zvgentl/PortOptions.h"

#include <map>

#include "zvgentl/Command.h"

namespace zvgentl::tool {

void add_selection_options(CLI::App& app, std::string& cti, std::string& interface_id, std::string& device)
{
    add_producer_option(app, cti);
    app.add_option("-i,--interface", interface_id, "Interface (frame grabber) to take the device from")
        ->type_name("ID");
    app.add_option(
           "-d,--device", device,
           "Device (camera), by ID or serial number as `zvgentl list` shows them [the first one found]")
        ->type_name("ID");
}

void add_port_options(CLI::App& app, PortOptions& options)
{
    const std::map<std::string, PortKind> kinds{{"system", PortKind::system}, {"interface", PortKind::iface},
                                                {"device", PortKind::device}, {"stream", PortKind::stream},
                                                {"buffer", PortKind::buffer}, {"remote", PortKind::remote}};
    add_selection_options(app, options.cti, options.interface_id, options.device);
    app.add_option("-p,--port", options.port,
                   "Whose features: remote (the camera itself), or the producer's module system, interface, "
                   "device, stream or buffer [remote]")
        ->type_name("PORT")
        ->transform(CLI::CheckedTransformer(kinds).description(""));
}

void add_set_option(CLI::App& app, Assignments& assignments)
{
    app.add_option_function<std::vector<std::string>>(
           "-s,--set",
           [&assignments](const std::vector<std::string>& words) {
               for (const auto& word : words)
                   assignments.push_back(parse_assignment(word).value_or(Assignment{}));
           },
           "Set a feature first; repeat it for more, which are set in this order")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false)
        ->check(CLI::Validator(
            [](const std::string& word) {
                return parse_assignment(word) ? std::string() : word + " is not of the form NAME=VALUE";
            },
            ""));
}

} // namespace zvgentl::tool
