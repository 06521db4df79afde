/// XML escaping of narrow text, byte by byte.
#pragma once

#include <string>
#include <string_view>

namespace Kestrel {

/// The five special characters become their entities; each byte from 0x80 up becomes "&#<decimal>;", so that a UTF-8
/// character gives one reference per byte. Readers of the diagnostic files expect byte references.
std::string XmlEscape(std::string_view text);

}  // namespace Kestrel
