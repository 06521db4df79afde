#include "base/xml_escape.h"

#include <algorithm>

namespace Kestrel {
namespace {

/// Empty for a byte that has no entity, which includes all bytes from 0x80 up.
constexpr std::string_view EntityOf(char byte) {
  switch (byte) {
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '&':
      return "&amp;";
    case '\'':
      return "&apos;";
    case '"':
      return "&quot;";
    default:
      return {};
  }
}

bool IsHigh(char byte) {
  return static_cast<unsigned char>(byte) >= 0x80;
}
bool IsPlain(char byte) {
  return EntityOf(byte).empty() && !IsHigh(byte);
}

}  // namespace

std::string XmlEscape(std::string_view text) {
  std::string escaped;
  escaped.reserve(text.size());
  for (auto position = text.begin();;) {
    const auto special = std::find_if_not(position, text.end(), IsPlain);
    escaped.append(position, special);
    if (special == text.end()) return escaped;
    if (IsHigh(*special)) {
      escaped.append("&#").append(std::to_string(static_cast<unsigned char>(*special))).append(";");
    } else {
      escaped.append(EntityOf(*special));
    }
    position = special + 1;
  }
}

}  // namespace Kestrel
