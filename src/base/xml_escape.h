/// XML escaping of narrow text, byte by byte.
#pragma once

#include <string>
#include <string_view>

namespace Kestrel {

/// Replaces the five special characters by their entities and each byte from 0x80 up by "&#<decimal>;". A UTF-8
/// character becomes one reference per byte, because the readers of diagnostic files expect byte references.
std::string XmlEscape(std::string_view text);

}  // namespace Kestrel
