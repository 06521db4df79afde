/// Bounded copy and formatting into character buffers, with the semantics of the Windows safe-string functions:
/// the target is always NUL-terminated, and keeps what fitted when there is too little room.
///
/// Failures throw SystemException with the HRESULT (0x8007007A too little room, 0x80070057 no room at all or more than
/// 2147483647 units) and the function's name as context.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Kestrel {

inline constexpr std::uint32_t STRSAFE_E_INSUFFICIENT_BUFFER = 0x8007007A;
inline constexpr std::uint32_t STRSAFE_E_INVALID_PARAMETER = 0x80070057;

/// Room that is left in a buffer: where the next unit goes, and how many units there are, the NUL included.
template <class Char>
struct BufferRest {
  Char* position;
  std::size_t units;
};

/// Copies text (up to its first NUL) and returns what is left, beginning at the new terminator.
/// Throws with the context "Kestrel::CheckedStringCchCopyEx".
BufferRest<char> CheckedStringCchCopyEx(BufferRest<char> target, std::string_view text);
BufferRest<char16_t> CheckedStringCchCopyEx(BufferRest<char16_t> target, std::u16string_view text);

/// Formats as printf does and returns what is left. The wide form takes the same narrow format; its "%s" and "%c" stand
/// for narrow ASCII arguments. Throws with the context "Kestrel::CheckedStringCchPrintfEx".
[[gnu::format(printf, 2, 3)]] BufferRest<char> CheckedStringCchPrintfEx(BufferRest<char> target, const char* format,
                                                                        ...);
[[gnu::format(printf, 2, 3)]] BufferRest<char16_t> CheckedStringCchPrintfEx(BufferRest<char16_t> target,
                                                                            const char* format, ...);

}  // namespace Kestrel
