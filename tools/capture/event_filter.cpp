#include "tools/capture/event_filter.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

#include "tools/arguments.h"
#include "tools/mac_address.h"

namespace tarnfind {
namespace {

/// Both sides of a comparison go through it, because people write addresses and names in either case.
std::string Lower(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower;
}

bool MatchesMac(const RecordedEvent& event, const std::string& value) {
  return std::ranges::any_of(event.macs,
                             [&](const std::string& mac) { return Lower(StandardMac(mac).value_or(mac)) == value; });
}
bool MatchesIp(const RecordedEvent& event, const std::string& value) {
  return std::ranges::find(event.ips, value) != event.ips.end();
}
bool MatchesFunction(const RecordedEvent& event, const std::string& value) {
  return Lower(ShortName(*event.frame) + " " + event.what).find(value) != std::string::npos;
}
bool MatchesType(const RecordedEvent& event, const std::string& value) {
  return event.block && std::to_string(event.frame->header.messageType) == value;
}

std::string AcceptAnything(std::string&) {
  return {};
}
std::string CheckType(std::string& text) {
  const bool isNumber = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
  return isNumber ? "" : "type must be a number, as in type=4";
}
std::string CheckIp(std::string& text) {
  return CheckIpAddress(text);
}

struct FilterRow {
  std::string_view key;
  std::string (*normalise)(std::string& value);
  bool (*matches)(const RecordedEvent& event, const std::string& value);
};
constexpr auto kFilters = std::to_array<FilterRow>({
    {"mac", NormaliseMac, MatchesMac},
    {"ip", CheckIp, MatchesIp},
    {"function", AcceptAnything, MatchesFunction},
    {"type", CheckType, MatchesType},
});

const FilterRow* RowOf(std::string_view filter) {
  const auto row = std::ranges::find(kFilters, filter.substr(0, filter.find('=')), &FilterRow::key);
  return row == kFilters.end() || filter.find('=') == std::string_view::npos ? nullptr : &*row;
}

}  // namespace

std::string NormaliseEventFilter(std::string& text) {
  const FilterRow* const row = RowOf(text);
  if (!row) return "must be mac=ADDRESS, ip=ADDRESS, function=NAME or type=NUMBER";
  std::string value = text.substr(row->key.size() + 1);
  if (std::string complaint = row->normalise(value); !complaint.empty()) return complaint;
  text = std::string(row->key) + '=' + Lower(value);
  return {};
}

bool Matches(const RecordedEvent& event, const std::vector<std::string>& filters) {
  return std::ranges::all_of(filters, [&](const std::string& filter) {
    const FilterRow& row = *RowOf(filter);
    return row.matches(event, filter.substr(row.key.size() + 1));
  });
}

}  // namespace tarnfind
