/// Bounded copy and formatting into character buffers, as the Windows safe-string functions do it.
///
/// The target is NUL-terminated. Where there is too little room, it keeps the part that fits.
///
/// Errors: SystemException with the function's name as context and the HRESULT as code: 0x8007007A where there is too
/// little room, 0x80070057 where the room is 0 or more than 2147483647 units; nothing is written then.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/compiler.h"

namespace Kestrel {

inline constexpr std::uint32_t STRSAFE_E_INSUFFICIENT_BUFFER = 0x8007007A;
inline constexpr std::uint32_t STRSAFE_E_INVALID_PARAMETER = 0x80070057;

/// The unused rest of a buffer: where the next unit goes, and the number of units, that of the NUL included.
template <class Char>
struct BufferRest {
  Char* position;
  std::size_t units;
};

/// Copies text up to its first NUL. Returns the rest of the buffer, which begins at the new terminator. Throws with the
/// context "Kestrel::CheckedStringCchCopyEx".
BufferRest<char> CheckedStringCchCopyEx(BufferRest<char> target, std::string_view text);
BufferRest<char16_t> CheckedStringCchCopyEx(BufferRest<char16_t> target, std::u16string_view text);

/// Formats as printf does and returns the rest of the buffer. The format is narrow in the wide form too; its "%s" and
/// "%c" take narrow ASCII arguments. Throws with the context "Kestrel::CheckedStringCchPrintfEx".
TARN_PRINTF_FORMAT(2, 3) BufferRest<char> CheckedStringCchPrintfEx(BufferRest<char> target, const char* format, ...);
TARN_PRINTF_FORMAT(2, 3)
BufferRest<char16_t> CheckedStringCchPrintfEx(BufferRest<char16_t> target, const char* format, ...);

}  // namespace Kestrel
