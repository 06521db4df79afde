/// Converts text between a code page and UTF-16, and sizes to 32 bits.
///
/// Two code pages are used: the system's ANSI code page (CP_ACP, with MB_PRECOMPOSED or WC_COMPOSITECHECK) for the
/// texts of exceptions and logs, UTF-8 (CP_UTF8, with the flags 0) for everything in value lists and commands.
///
/// Errors: SystemException with the context "MultiByteToWideChar" or "WideCharToMultiByte" where the system refuses.
/// The content of the target is unspecified then. In UTF-8 an invalid sequence is no error; it becomes U+FFFD.
/// Threads: all functions may be called on any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/code_pages.h"

namespace Kestrel {

/// Replaces target by the converted source. A null source, a length of 0 or a source whose first unit is NUL gives an
/// empty text. A positive length converts exactly that many units, NULs among them; kNulTerminated converts up to the
/// first NUL.
void MultiToWide(std::u16string& target, std::uint32_t codePage, std::uint32_t flags, const char* source, int length);
/// The same in the other direction. A length above 715827882 units throws before anything is converted, because three
/// bytes for each would not fit the system's 32-bit lengths.
void WideToMulti(std::string& target, std::uint32_t codePage, std::uint32_t flags, const char16_t* source, int length);

/// The converters for views, in the two code pages. The length passes through ClipSizeT.
std::u16string Utf8ToWide(std::string_view utf8);
std::string WideToUtf8(std::u16string_view wide);
std::u16string AnsiToWide(std::string_view narrow);
std::string WideToAnsi(std::u16string_view wide);

/// For the report of a failed conversion, which must not fail itself: where the system refuses, each unit outside ASCII
/// becomes "?".
std::u16string AnsiToWideOrAscii(std::string_view narrow);
std::string WideToAnsiOrAscii(std::u16string_view wide);

/// Returns size. Where it is larger than most, returns most and sends "ClipSizeT failed - Size > MaxSize" to the
/// debugger.
std::uint32_t ClipSizeT(std::uint64_t size, std::uint32_t most = 0xFFFFFFFF);

}  // namespace Kestrel
