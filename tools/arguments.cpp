#include "tools/arguments.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string_view>

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

}  // namespace

std::string NormaliseMac(std::string& text) {
  constexpr std::size_t kLength = 17;
  constexpr char kComplaint[] = "is no hardware address such as 00:40:8C:12:34:56";
  if (text.size() != kLength) return Complaint(text, kComplaint);
  std::string normal;
  for (std::size_t i = 0; i < kLength; i += 3) {
    const auto byte = WholeNumber(std::string_view(text).substr(i, 2), 16);
    const bool separated = i + 2 == kLength || text[i + 2] == ':' || text[i + 2] == '-';
    if (!byte || !separated) return Complaint(text, kComplaint);
    normal += fmt::format("{}{:02X}", i > 0 ? ":" : "", *byte);
  }
  text = normal;
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

}  // namespace tarnfind
