#include "platform/code_pages.h"

#include <limits>
#include <string>

#include "platform/compiler.h"
#include "platform/error_codes.h"
#include "platform/errors.h"
#include "platform/linux/ansi_code_page.h"
#include "platform/linux/utf8.h"

namespace platform {
namespace {

int Failed(std::uint32_t code) {
  SetLastError(code);
  return 0;
}

/// What both directions have in common. convert(source, target, room) writes, or counts where target is null. One
/// source unit becomes at most MostUnits; a target that has room for all of them is written without counting first.
template <std::size_t MostUnits, class From, class To, class Conversion>
int Convert(const From* source, int sourceLength, To* target, int targetSize, Conversion convert) {
  if (!source || sourceLength == 0 || targetSize < 0 || (targetSize > 0 && !target))
    return Failed(ERROR_INVALID_PARAMETER);
  const std::size_t length =
      sourceLength < 0 ? std::char_traits<From>::length(source) + 1 : static_cast<std::size_t>(sourceLength);
  const std::basic_string_view<From> text(source, length);
  const auto room = static_cast<std::size_t>(targetSize);
  if (room / MostUnits < length) {
    const std::size_t needed = convert(text, static_cast<To*>(nullptr), std::size_t{0});
    if (needed > static_cast<std::size_t>(std::numeric_limits<int>::max())) return Failed(ERROR_INVALID_PARAMETER);
    if (targetSize == 0) return static_cast<int>(needed);
    if (needed > room) return Failed(ERROR_INSUFFICIENT_BUFFER);
  }
  return static_cast<int>(convert(text, target, room));
}

int WidenUtf8(const char* source, int sourceBytes, char16_t* target, int targetUnits) {
  return Convert<1>(source, sourceBytes, target, targetUnits,
                    [](std::string_view text, char16_t* to, std::size_t room) {
                      return to ? Utf8ToUtf16(text, to, room) : Utf16LengthOf(text);
                    });
}

int NarrowUtf8(const char16_t* source, int sourceUnits, char* target, int targetBytes) {
  return Convert<3>(source, sourceUnits, target, targetBytes, [](std::u16string_view text, char* to, std::size_t room) {
    return to ? Utf16ToUtf8(text, to, room) : Utf8LengthOf(text);
  });
}

}  // namespace

// Flattened, because the calls in between would take a tenth of the time of a short text.

TARN_FLATTEN int MultiByteToWideChar(std::uint32_t codePage, std::uint32_t flags, const char* source, int sourceBytes,
                                     char16_t* target, int targetUnits) {
  if (codePage == CP_UTF8) {
    if (flags != 0) return Failed(ERROR_INVALID_FLAGS);
    return WidenUtf8(source, sourceBytes, target, targetUnits);
  }
  if (codePage != CP_ACP) return Failed(ERROR_INVALID_PARAMETER);
  if ((flags & ~MB_PRECOMPOSED) != 0) return Failed(ERROR_INVALID_FLAGS);
  const AnsiCodePage& page = AnsiCodePage::Instance();
  if (page.IsUtf8()) return WidenUtf8(source, sourceBytes, target, targetUnits);
  return Convert<1>(source, sourceBytes, target, targetUnits,
                    [&page](std::string_view text, char16_t* to, std::size_t) { return page.Widen(text, to); });
}

TARN_FLATTEN int WideCharToMultiByte(std::uint32_t codePage, std::uint32_t flags, const char16_t* source,
                                     int sourceUnits, char* target, int targetBytes) {
  if (codePage == CP_UTF8) {
    if (flags != 0) return Failed(ERROR_INVALID_FLAGS);
    return NarrowUtf8(source, sourceUnits, target, targetBytes);
  }
  if (codePage != CP_ACP) return Failed(ERROR_INVALID_PARAMETER);
  if ((flags & ~WC_COMPOSITECHECK) != 0) return Failed(ERROR_INVALID_FLAGS);
  const AnsiCodePage& page = AnsiCodePage::Instance();
  if (page.IsUtf8()) return NarrowUtf8(source, sourceUnits, target, targetBytes);
  return Convert<2>(source, sourceUnits, target, targetBytes,
                    [&page](std::u16string_view text, char* to, std::size_t) { return page.Narrow(text, to); });
}

}  // namespace platform
