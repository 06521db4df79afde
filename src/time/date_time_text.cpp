#include "time/date_time_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>

#include "base/exceptions.h"
#include "base/text_conversion.h"
#include "platform/error_codes.h"

namespace Kestrel {
namespace {

constexpr const char* kContext = "TKestrelDateTime::SystemTimeToStr";
constexpr const char* kDateContext = "TKestrelDateTime::SystemTimeToStr::GetDateFormat";
constexpr const char* kTimeContext = "TKestrelDateTime::SystemTimeToStr::GetTimeFormat";

/// The characters in which the fixed forms differ. The order of the numbers is the same in all of them.
struct FixedForm {
  std::uint32_t format;
  char dateSeparator;
  char millisecondSeparator;
  char quotationMark;
};
constexpr std::array<FixedForm, 2> kFixedForms = {{
    {dtsmSlashes, '/', ',', '"'},
    {dtsmDashes, '-', '.', '\''},
}};

constexpr unsigned kPowersOfTen[] = {1, 10, 100, 1000, 10000};

/// "00" to "99".
constexpr auto kDigitPairs = [] {
  std::array<std::array<char, 2>, 100> pairs{};
  for (unsigned i = 0; i < pairs.size(); ++i)
    pairs[i] = {static_cast<char>('0' + i / 10), static_cast<char>('0' + i % 10)};
  return pairs;
}();

/// Holds the longest fixed form: seven numbers of at most five digits, with separators.
template <class Char>
using FixedText = std::array<Char, 64>;

// These write at the end, and move it.

template <class Char>
void Put(Char*& end, char unit) {
  *end++ = static_cast<Char>(unit);
}
/// Adds leading zeros up to the width. A longer number keeps all its digits. The width is a constant, so that the
/// compiler writes the digits without a loop.
template <std::size_t kWidth, class Char>
void PutNumber(Char*& end, unsigned value) {
  constexpr unsigned kTooLong = kPowersOfTen[kWidth];
  if (value >= kTooLong) PutNumber<1>(end, value / kTooLong);
  for (std::size_t i = kWidth; i > 1; i -= 2, value /= 100) std::ranges::copy(kDigitPairs[value % 100], end + i - 2);
  if (kWidth % 2 == 1) *end = static_cast<Char>('0' + value % 10);
  end += kWidth;
}

template <class Char>
void PutDate(Char*& end, const FixedForm& form, const platform::SystemTime& time) {
  PutNumber<4>(end, time.year);
  Put(end, form.dateSeparator);
  PutNumber<2>(end, time.month);
  Put(end, form.dateSeparator);
  PutNumber<2>(end, time.day);
}

template <class Char>
void PutTime(Char*& end, const FixedForm& form, const platform::SystemTime& time, std::uint32_t mode) {
  const bool dropMilliseconds = (mode & dtsmDropZeros) && time.milliseconds == 0;
  PutNumber<2>(end, time.hour);
  Put(end, ':');
  PutNumber<2>(end, time.minute);
  if ((mode & dtsmNoSeconds) || (dropMilliseconds && time.second == 0)) return;
  Put(end, ':');
  PutNumber<2>(end, time.second);
  if ((mode & dtsmNoMilliseconds) || dropMilliseconds) return;
  Put(end, form.millisecondSeparator);
  PutNumber<3>(end, time.milliseconds);
}

template <class Char>
std::basic_string<Char> ToFixedText(const FixedForm& form, const platform::SystemTime& time, std::uint32_t mode) {
  FixedText<Char> text;
  Char* end = text.data();
  if (mode & dtsmQuoted) Put(end, form.quotationMark);
  const std::uint32_t shown = mode & dtsmModeMask;
  if (shown != dtsmTime) PutDate(end, form, time);
  if (shown == dtsmDateTime) Put(end, ' ');
  if (shown != dtsmDate) PutTime(end, form, time, mode);
  if (mode & dtsmQuoted) Put(end, form.quotationMark);
  return {text.data(), end};
}

std::u16string ToLocaleText(const platform::SystemTime& time, std::uint32_t mode) {
  std::array<char16_t, 256> text;
  std::size_t length = 0;
  const std::uint32_t shown = mode & dtsmModeMask;
  if (shown != dtsmTime) {
    const char16_t* const picture = mode & dtsmDayOfWeek ? u"ddd" : nullptr;
    const std::uint32_t flags = picture ? 0 : mode & dtsmLongDate ? platform::DATE_LONGDATE : platform::DATE_SHORTDATE;
    const int units = platform::GetDateFormatW(flags, time, picture, text.data(), static_cast<int>(text.size()));
    if (units <= 0) ThrowLastSystemError(kDateContext);
    length = static_cast<std::size_t>(units) - 1;
  }
  if (shown == dtsmDateTime) {
    if (length + 1 == text.size()) ThrowSystemError(platform::ERROR_INSUFFICIENT_BUFFER, kContext);
    text[length++] = u' ';
  }
  if (shown != dtsmDate) {
    const std::size_t rest = text.size() - length;
    if (rest < 2) ThrowSystemError(platform::ERROR_INSUFFICIENT_BUFFER, kTimeContext);
    const std::uint32_t flags = mode & dtsmNoSeconds ? platform::TIME_NOSECONDS : 0;
    const int units = platform::GetTimeFormatW(flags, time, text.data() + length, static_cast<int>(rest));
    if (units <= 0) ThrowLastSystemError(kTimeContext);
    length += static_cast<std::size_t>(units) - 1;
  }
  return {text.data(), length};
}

void CheckMode(std::uint32_t mode) {
  if ((mode & dtsmModeMask) > dtsmTime) {
    throw EKestrelDateTime(dteInvalidMode, "Invalid mode of date/time string.");
  }
}

/// Null for the locale forms.
const FixedForm* FixedFormOf(std::uint32_t mode) {
  const std::uint32_t format = mode & dtsmFormatMask;
  if (format == dtsmLocale) return nullptr;
  const auto form = std::find_if(kFixedForms.begin(), kFixedForms.end(),
                                 [format](const FixedForm& row) { return row.format == format; });
  if (form == kFixedForms.end()) {
    throw EKestrelDateTime(dteInvalidMode, "Invalid format of date/time string.");
  }
  return form;
}

}  // namespace

std::string SystemTimeToStr(const platform::SystemTime& time, std::uint32_t mode) {
  CheckMode(mode);
  const FixedForm* const form = FixedFormOf(mode);
  return form ? ToFixedText<char>(*form, time, mode) : WideToAnsi(ToLocaleText(time, mode));
}

std::u16string SystemTimeToWideStr(const platform::SystemTime& time, std::uint32_t mode) {
  CheckMode(mode);
  const FixedForm* const form = FixedFormOf(mode);
  return form ? ToFixedText<char16_t>(*form, time, mode) : ToLocaleText(time, mode);
}

std::string BiasToStr(const TKestrelDateTime& value) {
  const int bias = value.GetBiasMinutes();
  const auto offset = static_cast<unsigned>(std::abs(bias));
  FixedText<char> zone;
  char* end = zone.data();
  Put(end, bias < 1 ? '+' : '-');
  PutNumber<2>(end, offset / 60);
  Put(end, ':');
  PutNumber<2>(end, offset % 60);
  return SystemTimeToStr(value.ToLocalSystemTime(), dtsmDateTime | dtsmSlashes).append(" GMT").append(zone.data(), end);
}

}  // namespace Kestrel
