/// Wide messages from a format string with numbered placeholders.
///
///     {n} {nn}      argument n
///     {n,w}         right-aligned to w units, padded with blanks; {n,-w} left-aligned; w above 512 counts as 0
///     {{  }}        one brace
///
/// A digit is any unit whose low eight bits are an ASCII digit. Text in front of a "{{" that has no "}" behind it is
/// lost. Both are kept for messages that depend on them.
#pragma once

#include <span>
#include <string>

namespace Kestrel::Text {

/// Appends the expansion to output. A null format appends nothing. Throws InvalidFormatStringException; what was
/// appended before stays.
void Format(const char16_t* format, std::u16string& output, std::span<const std::u16string> arguments);

}  // namespace Kestrel::Text
