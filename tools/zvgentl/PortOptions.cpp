#include "zvgentl/PortOptions.h"

#include "zvgentl/CommandLine.h"

namespace zvgentl::tool {

std::optional<Assignment> parse_assignment(const std::string& text)
{
    const std::size_t sign = text.find('=');
    if (sign == std::string::npos || sign == 0)
        return std::nullopt;
    return Assignment{text.substr(0, sign), text.substr(sign + 1)};
}

std::optional<Assignments> parse_assignments(const std::vector<std::string>& words)
{
    if (words.size() == 2 && words[0].find('=') == std::string::npos && !words[0].empty())
        return Assignments{{words[0], words[1]}};
    Assignments assignments;
    for (const auto& word : words) {
        const auto assignment = parse_assignment(word);
        if (!assignment)
            return std::nullopt;
        assignments.push_back(*assignment);
    }
    return assignments.empty() ? std::nullopt : std::optional(assignments);
}

void describe_producer(OptionList& list, std::string& cti)
{
    list.text("--cti", "PATH",
              "Producer to load: a .cti file, or a folder of them [those in the folders of "
              "GENICAM_GENTL64_PATH; without these, the one next to this program]",
              cti);
}

void describe_device(OptionList& list, DeviceOptions& options)
{
    describe_producer(list, options.cti);
    list.text("-i,--interface", "ID", "Interface (frame grabber) of the device", options.interface_id);
    list.text("-d,--device", "ID",
              "Device (camera), by ID, serial number or user-defined name [the first one found]",
              options.device);
}

void describe_port(OptionList& list, PortOptions& options)
{
    describe_device(list, options);
    list.choice<PortKind>("-p,--port", "PORT",
                          "Port to use: that of the camera itself (remote), or of the producer's system, "
                          "interface, device, stream or buffer module [remote]",
                          options.port,
                          {{"system", PortKind::system},
                           {"interface", PortKind::iface},
                           {"device", PortKind::device},
                           {"stream", PortKind::stream},
                           {"buffer", PortKind::buffer},
                           {"remote", PortKind::remote}});
}

void describe_settings(OptionList& list, Assignments& settings)
{
    list.repeated("-s,--set", "NAME=VALUE",
                  "Set a feature first; can be repeated, features are set in the order given",
                  [&settings](const std::string& word) {
                      const auto assignment = parse_assignment(word);
                      if (assignment)
                          settings.push_back(*assignment);
                      return assignment.has_value();
                  });
}

} // namespace zvgentl::tool
