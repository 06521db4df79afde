#include "tools/arguments.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string_view>

#include "tools/mac_address.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

constexpr double kMostSeconds = 86400;

std::string Complaint(std::string_view text, std::string_view complaint) {
  return fmt::format("\"{}\" {}", Printable(text), complaint);
}

/// The whole text as a number without sign; empty where it is none or too large.
std::optional<std::uint32_t> WholeNumber(std::string_view text, int base) {
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

}  // namespace

std::optional<std::uint32_t> ParseIpAddress(std::string_view text) {
  std::uint32_t address = 0;
  for (int i = 0; i < 4; ++i) {
    const std::size_t end = i < 3 ? text.find('.') : text.size();
    if (end == std::string_view::npos) return std::nullopt;
    const std::string_view part = text.substr(0, end);
    const auto value = WholeNumber(part, 10);
    if (!value || *value > 255 || (part.size() > 1 && part[0] == '0')) return std::nullopt;
    address = address << 8 | *value;
    text.remove_prefix(i < 3 ? end + 1 : end);
  }
  return address;
}

std::string NormaliseMac(std::string& text) {
  const std::optional<std::string> mac = StandardMac(text);
  if (!mac) return Complaint(text, "is no hardware address such as 00:40:8C:12:34:56");
  text = *mac;
  return {};
}

std::string NormaliseAddress(std::string& text) {
  if (ParseIpAddress(text)) return {};
  std::string mac = text;
  if (!NormaliseMac(mac).empty())
    return Complaint(text, "is neither an IPv4 address such as 192.168.0.9 nor a hardware address");
  text = mac;
  return {};
}

std::string CheckIpAddress(const std::string& text) {
  return ParseIpAddress(text) ? "" : Complaint(text, "is no IPv4 address such as 192.168.0.9");
}

std::string CheckSubnetMask(const std::string& text) {
  const auto mask = ParseIpAddress(text);
  const bool contiguous = mask && (~*mask & (~*mask + 1)) == 0;
  return contiguous ? "" : Complaint(text, "is no subnet mask such as 255.255.255.0");
}

std::string CheckSeconds(const std::string& text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
  const bool good = error == std::errc() && end == text.data() + text.size() && value >= 0 && value <= kMostSeconds;
  return good ? "" : Complaint(text, fmt::format("is no number of seconds from 0 to {}", kMostSeconds));
}

std::string CheckText(const std::string& text) {
  return IsValidUtf8(text) ? "" : "is no valid UTF-8";
}

std::string CheckCount(const std::string& text) {
  return WholeNumber(text, 10) ? "" : Complaint(text, "is no whole number such as 12");
}

}  // namespace tarnfind
