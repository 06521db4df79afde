#include "base/text_conversion.h"

#include <algorithm>
#include <array>
#include <limits>

#include "base/exceptions.h"
#include "platform/compiler.h"
#include "platform/debugger.h"
#include "platform/error_codes.h"
#include "platform/errors.h"

namespace Kestrel {
namespace {

constexpr std::size_t kMaxBytesPerUnit = 3;
constexpr int kMaxWideLength = std::numeric_limits<int>::max() / static_cast<int>(kMaxBytesPerUnit);
static_assert(kMaxWideLength == 715827882);

/// Texts of up to this many units are converted on the stack and copied where the target has no room for the longest
/// result, so that it allocates exactly what it needs.
constexpr std::size_t kShortLength = 256;

struct Widening {
  using Source = char;
  using Target = char16_t;
  static constexpr std::size_t kTargetPerSource = 1;
  static constexpr int kMaxLength = std::numeric_limits<int>::max();
  static constexpr const char* kContext = "MultiByteToWideChar";
  static constexpr auto kConvert = platform::MultiByteToWideChar;
};

struct Narrowing {
  using Source = char16_t;
  using Target = char;
  static constexpr std::size_t kTargetPerSource = kMaxBytesPerUnit;
  static constexpr int kMaxLength = kMaxWideLength;
  static constexpr const char* kContext = "WideCharToMultiByte";
  static constexpr auto kConvert = platform::WideCharToMultiByte;
};

/// Converts length > 0 units without asking for the size first. Returns false where the system refuses.
template <class Direction>
bool ConvertInPlace(std::basic_string<typename Direction::Target>& target, std::uint32_t codePage, std::uint32_t flags,
                    const typename Direction::Source* source, int length) {
  const std::size_t room = static_cast<std::size_t>(length) * Direction::kTargetPerSource;
  if (static_cast<std::size_t>(length) <= kShortLength && target.capacity() < room) {
    std::array<typename Direction::Target, kShortLength * Direction::kTargetPerSource> text;
    const int units = Direction::kConvert(codePage, flags, source, length, text.data(), static_cast<int>(text.size()));
    if (units > 0) target.assign(text.data(), static_cast<std::size_t>(units));
    return units > 0;
  }
  target.resize(room);
  const int units = Direction::kConvert(codePage, flags, source, length, target.data(), static_cast<int>(room));
  if (units > 0) target.resize(static_cast<std::size_t>(units));
  return units > 0;
}

/// Returns false, with the thread's last error set, where the system refuses.
template <class Direction>
bool TryConvert(std::basic_string<typename Direction::Target>& target, std::uint32_t codePage, std::uint32_t flags,
                const typename Direction::Source* source, int length) {
  if (!source || length == 0 || *source == 0) {
    target.clear();
    return true;
  }
  if (length > Direction::kMaxLength) {
    platform::SetLastError(platform::ERROR_INVALID_PARAMETER);
    return false;
  }
  if (length > 0 && ConvertInPlace<Direction>(target, codePage, flags, source, length)) return true;

  const int required = Direction::kConvert(codePage, flags, source, length, nullptr, 0);
  if (required < 1) return false;
  // required counts the terminator of a NUL-terminated source, which is written over the target's own.
  target.resize(static_cast<std::size_t>(length < 0 ? required - 1 : required));
  return Direction::kConvert(codePage, flags, source, length, target.data(), required) >= 1;
}

/// Flattened, because the calls in between would take a tenth of the time of a short text.
template <class Direction>
TARN_FLATTEN void Convert(std::basic_string<typename Direction::Target>& target, std::uint32_t codePage,
                          std::uint32_t flags, const typename Direction::Source* source, int length) {
  if (!TryConvert<Direction>(target, codePage, flags, source, length)) ThrowLastSystemError(Direction::kContext);
}

/// Refuses a length above the direction's limit. Above INT_MAX it would turn negative, which means NUL-terminated; a
/// view is not.
template <class Direction>
int LengthOf(std::basic_string_view<typename Direction::Source> text) {
  const std::uint32_t length = ClipSizeT(text.size());
  if (length > std::uint32_t{Direction::kMaxLength}) {
    ThrowSystemError(platform::ERROR_INVALID_PARAMETER, Direction::kContext);
  }
  return static_cast<int>(length);
}

template <class Direction>
std::basic_string<typename Direction::Target> Converted(std::uint32_t codePage, std::uint32_t flags,
                                                        std::basic_string_view<typename Direction::Source> text) {
  std::basic_string<typename Direction::Target> target;
  Convert<Direction>(target, codePage, flags, text.data(), LengthOf<Direction>(text));
  return target;
}

/// Converts in the ANSI code page; where the system refuses, each unit outside ASCII becomes "?".
template <class Direction>
std::basic_string<typename Direction::Target> ConvertedOrAscii(
    std::uint32_t flags, std::basic_string_view<typename Direction::Source> text) {
  using Target = typename Direction::Target;
  std::basic_string<Target> target;
  const auto length = static_cast<int>(std::min<std::size_t>(text.size(), Direction::kMaxLength));
  if (TryConvert<Direction>(target, platform::CP_ACP, flags, text.data(), length)) return target;
  target.resize(text.size());
  std::ranges::transform(text, target.begin(), [](auto unit) {
    return static_cast<unsigned>(unit) < 0x80 ? static_cast<Target>(unit) : static_cast<Target>('?');
  });
  return target;
}

}  // namespace

void MultiToWide(std::u16string& target, std::uint32_t codePage, std::uint32_t flags, const char* source, int length) {
  Convert<Widening>(target, codePage, flags, source, length);
}

void WideToMulti(std::string& target, std::uint32_t codePage, std::uint32_t flags, const char16_t* source, int length) {
  Convert<Narrowing>(target, codePage, flags, source, length);
}

std::u16string Utf8ToWide(std::string_view utf8) {
  return Converted<Widening>(platform::CP_UTF8, 0, utf8);
}
std::string WideToUtf8(std::u16string_view wide) {
  return Converted<Narrowing>(platform::CP_UTF8, 0, wide);
}
std::u16string AnsiToWide(std::string_view narrow) {
  return Converted<Widening>(platform::CP_ACP, platform::MB_PRECOMPOSED, narrow);
}
std::string WideToAnsi(std::u16string_view wide) {
  return Converted<Narrowing>(platform::CP_ACP, platform::WC_COMPOSITECHECK, wide);
}

std::u16string AnsiToWideOrAscii(std::string_view narrow) {
  return ConvertedOrAscii<Widening>(platform::MB_PRECOMPOSED, narrow);
}
std::string WideToAnsiOrAscii(std::u16string_view wide) {
  return ConvertedOrAscii<Narrowing>(platform::WC_COMPOSITECHECK, wide);
}

std::uint32_t ClipSizeT(std::uint64_t size, std::uint32_t most) {
  if (size <= most) return static_cast<std::uint32_t>(size);
  platform::OutputDebugStringW(u"ClipSizeT failed - Size > MaxSize");
  return most;
}

}  // namespace Kestrel
