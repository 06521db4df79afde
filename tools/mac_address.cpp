#include "tools/mac_address.h"

#include <cstddef>

namespace tarnfind {

namespace {

constexpr std::size_t kDigits = 12;

/// A usual form: groups of hexadecimal digits with a separator between them. A group of fewer digits than `most` stands
/// for one with zeros in front.
struct MacForm {
  std::size_t least;
  std::size_t most;
  char separator;
};
constexpr MacForm kForms[] = {{1, 2, ':'}, {1, 2, '-'}, {4, 4, '.'}, {kDigits, kDigits, 0}};

bool IsHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

/// The twelve digits of an address in that form; empty where it has another form.
std::string DigitsOf(std::string_view text, const MacForm& form) {
  std::string mac;
  while (mac.size() < kDigits) {
    if (!mac.empty()) {
      if (!text.starts_with(form.separator)) return {};
      text.remove_prefix(1);
    }
    std::size_t length = 0;
    while (length < form.most && length < text.size() && IsHexDigit(text[length])) ++length;
    if (length < form.least) return {};
    mac.append(form.most - length, '0');
    for (const char c : text.substr(0, length)) mac += c >= 'a' ? static_cast<char>(c - 'a' + 'A') : c;
    text.remove_prefix(length);
  }
  return text.empty() ? mac : std::string();
}

}  // namespace

std::optional<std::string> StandardMac(std::string_view text) {
  for (const MacForm& form : kForms) {
    std::string mac = DigitsOf(text, form);
    if (mac.empty()) continue;
    for (std::size_t i = 2; i < mac.size(); i += 3) mac.insert(i, 1, ':');
    return mac;
  }
  return std::nullopt;
}

std::string CameraKey(const std::string& mac, const std::string& ip) {
  return mac == kUnknownMac ? mac + ' ' + ip : StandardMac(mac).value_or(mac);
}

}  // namespace tarnfind
