#include "tools/mac_address.h"

#include <cstddef>

namespace tarnfind {

namespace {

constexpr std::size_t kDigits = 12;

/// A usual form: a separator stands after each group of so many digits; 0 for none.
struct MacForm {
  std::size_t group;
  char separator;
};
constexpr MacForm kForms[] = {{2, ':'}, {2, '-'}, {4, '.'}, {kDigits, 0}};

bool IsHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

/// The twelve digits of an address in that form; empty where it has another form.
std::string DigitsOf(std::string_view text, const MacForm& form) {
  if (text.size() != kDigits + kDigits / form.group - 1) return {};
  std::string digits;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool separatorDue = i % (form.group + 1) == form.group;
    if (separatorDue ? text[i] != form.separator : !IsHexDigit(text[i])) return {};
    if (!separatorDue) digits += text[i] >= 'a' ? static_cast<char>(text[i] - 'a' + 'A') : text[i];
  }
  return digits;
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

}  // namespace tarnfind
