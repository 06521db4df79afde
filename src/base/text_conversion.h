/// Text between a code page and UTF-16, and sizes for 32-bit interfaces.
///
/// Exception and log texts use the system's ANSI code page (CP_ACP, with MB_PRECOMPOSED or WC_COMPOSITECHECK);
/// everything in value lists and commands is UTF-8 (CP_UTF8, with the flags 0).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/code_pages.h"

namespace Kestrel {

/// Replaces target by the converted source. A null source, a length of 0 or a source whose first unit is NUL gives an
/// empty text. A positive length converts exactly that many units, NULs among them; kNulTerminated converts up to the
/// first NUL.
/// Throws SystemException with the context "MultiByteToWideChar" or "WideCharToMultiByte" where the system refuses.
void MultiToWide(std::u16string& target, std::uint32_t codePage, std::uint32_t flags, const char* source, int length);
/// As MultiToWide, the other way; a length above 715827882 units throws before anything else.
void WideToMulti(std::string& target, std::uint32_t codePage, std::uint32_t flags, const char16_t* source, int length);

/// The converters over views, in the two code pages that are used. The length passes through ClipSizeT.
std::u16string Utf8ToWide(std::string_view utf8);
std::string WideToUtf8(std::u16string_view wide);
std::u16string AnsiToWide(std::string_view narrow);
std::string WideToAnsi(std::u16string_view wide);

/// For the report of a failed conversion, which must not fail again: where the system refuses, what is not ASCII
/// becomes "?".
std::u16string AnsiToWideOrAscii(std::string_view narrow);
std::string WideToAnsiOrAscii(std::u16string_view wide);

/// size, or most and the debugger line "ClipSizeT failed - Size > MaxSize" where it is larger.
std::uint32_t ClipSizeT(std::uint64_t size, std::uint32_t most = 0xFFFFFFFF);

}  // namespace Kestrel
