#include "tools/csv.h"

#include <fmt/format.h>

#include <utility>

#include "tools/failure.h"
#include "tools/text.h"
#include "tools/wall_time.h"

namespace tarnfind {

namespace {

struct CsvColumn {
  const char* name;
  Told needs;
  std::string (*text)(const FoundCamera& found);
};
const CsvColumn kCsvColumns[] = {
    {"state", Told::kMac, [](const FoundCamera& f) { return std::string(RowOf(f.lastNews).word); }},
    {"mac", Told::kMac, [](const FoundCamera& f) { return f.camera.mac; }},
    {"ip", Told::kAssembled, [](const FoundCamera& f) { return f.camera.ip; }},
    {"mask", Told::kEverything, [](const FoundCamera& f) { return f.camera.subnetMask; }},
    {"gateway", Told::kEverything, [](const FoundCamera& f) { return f.camera.gateway; }},
    {"dhcp", Told::kEverything, [](const FoundCamera& f) { return std::string(f.camera.dhcp ? "yes" : "no"); }},
    {"vendor", Told::kAssembled, [](const FoundCamera& f) { return f.camera.vendor; }},
    {"model", Told::kEverything, [](const FoundCamera& f) { return f.camera.model; }},
    {"firmware", Told::kEverything, [](const FoundCamera& f) { return f.camera.firmware; }},
    {"plugin", Told::kAssembled, [](const FoundCamera& f) { return f.camera.plugin; }},
    {"type", Told::kMac, [](const FoundCamera& f) { return f.typeKnown ? std::to_string(f.type) : std::string(); }},
    {"first", Told::kMac, [](const FoundCamera& f) { return UtcTime(f.firstSeen); }},
    {"last", Told::kMac, [](const FoundCamera& f) { return UtcTime(f.lastSeen); }},
    {"events", Told::kMac, [](const FoundCamera& f) { return std::to_string(f.events); }},
};

std::string Quoted(const std::string& text) {
  const std::string printable = Printable(text);
  if (printable.find_first_of(",\"") == std::string::npos) return printable;
  std::string quoted = "\"";
  for (const char c : printable) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + '"';
}

}  // namespace

std::string CsvHeader() {
  std::string line;
  for (const CsvColumn& column : kCsvColumns) line += std::string(column.name) + ',';
  return line + "shared ip\n";
}

std::string CsvRow(const FoundCamera& found, const FoundCameras& cameras) {
  std::string line;
  for (const CsvColumn& column : kCsvColumns)
    line += (found.camera.told < column.needs ? std::string() : Quoted(column.text(found))) + ',';
  return line + (cameras.SharesIp(found) ? "yes\n" : "no\n");
}

std::vector<std::string> ParseCsvLine(std::string_view line) {
  std::vector<std::string> fields(1);
  bool quoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (quoted && line[i] == '"' && line.substr(i + 1).starts_with('"')) {
      fields.back() += line[++i];
    } else if (line[i] == '"') {
      const bool atEdge = quoted ? i + 1 == line.size() || line[i + 1] == ',' : i == 0 || line[i - 1] == ',';
      if (!atEdge)
        throw WrongUse("a quotation mark stands inside a field; put the field in quotation marks and write it twice");
      quoted = !quoted;
    } else if (line[i] == ',' && !quoted) {
      fields.emplace_back();
    } else {
      fields.back() += line[i];
    }
  }
  if (quoted) throw WrongUse("a quotation mark is not closed");
  return fields;
}

}  // namespace tarnfind
