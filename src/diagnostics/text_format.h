/// Wide messages from a format string with numbered placeholders.
///
///     {n} {nn}      argument n
///     {n,w}         right-aligned to w units, padded with blanks; {n,-w} left-aligned; w above 512 counts as 0
///     {{  }}        one brace
///
/// Two oddities are kept, because messages depend on them: a digit is any unit whose low eight bits are an ASCII digit,
/// and text in front of a "{{" that has no "}" behind it is lost.
#pragma once

#include <span>
#include <string>

namespace Kestrel::Text {

/// Appends the expansion of a format to output. A null format appends nothing. Throws InvalidFormatStringException;
/// what was appended up to the error stays.
void Format(const char16_t* format, std::u16string& output, std::span<const std::u16string> arguments);

}  // namespace Kestrel::Text
