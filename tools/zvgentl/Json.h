#pragma once

#include <string>
#include <utility>
#include <vector>

#include "genapi/Feature.h"

namespace zvgentl::tool {

struct FeatureDetails;
struct FeatureTable;
struct GrabResult;
struct ProducerEntry;
struct RawHeader;

/// Names of features and their values.
using NamedValues = std::vector<std::pair<std::string, Value>>;

/// What the commands print with `--json`: one indented document and the end of its last line. Bytes that are
/// not UTF-8, which devices may send, are replaced.
std::string json_text(const std::vector<ProducerEntry>& producers);
std::string json_text(const FeatureTable& table);
std::string json_text(const std::string& port, const FeatureDetails& details);
std::string json_text(const NamedValues& values);
std::string json_text(const GrabResult& result);
/// An object with one list, of objects of named values.
std::string json_text(const char* list, const std::vector<NamedValues>& rows);

/// The header of a raw frame: one line, in ASCII.
std::string json_line(const RawHeader& header);

} // namespace zvgentl::tool
