#include "time/date_time_parser.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

#include "base/checked_string.h"
#include "base/exceptions.h"
#include "platform/calendar.h"
#include "time/time_zone_transitions.h"

namespace Kestrel {
namespace {

constexpr std::size_t kMessageUnits = 198;
constexpr std::size_t kSeparatorMessageUnits = 128;

/// A number in the text: the name that messages have for it, its error number and its range.
struct Part {
  const char* name;
  DateTimeError number;
  unsigned low;
  unsigned high;
};
constexpr Part kYear = {"year", dteYear, 1601, 9999};
constexpr Part kMonth = {"month", dteMonth, 1, 12};
constexpr Part kHour = {"hour", dteHour, 0, 23};
constexpr Part kMinute = {"minute", dteMinute, 0, 59};
constexpr Part kSecond = {"second", dteSecond, 0, 59};
constexpr Part kMillisecond = {"millisecond", dteMillisecond, 0, 999};
constexpr Part kZoneHour = {"hour", dteHour, 0, 14};

Part DayOf(unsigned year, unsigned month) {
  return {"day", dteDay, 1, platform::DaysOfMonth(year, month)};
}

[[noreturn]] void ThrowRange(const Part& part) {
  std::array<char16_t, kMessageUnits> message;
  CheckedStringCchPrintfEx({message.data(), message.size()},
                           "Invalid %s part in date/time string. Expected a number from %u to %u.", part.name, part.low,
                           part.high);
  throw EKestrelDateTime(part.number, std::u16string_view(message.data()));
}

[[noreturn]] void ThrowSeparator(char separator) {
  std::array<char16_t, kSeparatorMessageUnits> message;
  CheckedStringCchPrintfEx({message.data(), message.size()}, "'%c' expected.", separator);
  throw EKestrelDateTime(dteSeparatorExpected, std::u16string_view(message.data()));
}

[[noreturn]] void ThrowSeparator(char first, char second) {
  std::array<char16_t, kSeparatorMessageUnits> message;
  CheckedStringCchPrintfEx({message.data(), message.size()}, "'%c' or '%c' expected.", first, second);
  throw EKestrelDateTime(dteSeparatorExpected, std::u16string_view(message.data()));
}

/// optionalPart: name of the part that could still have followed, or null.
[[noreturn]] void ThrowEndExpected(const char* optionalPart) {
  std::array<char16_t, kMessageUnits> message;
  const BufferRest<char16_t> room = {message.data(), message.size()};
  if (optionalPart) {
    CheckedStringCchPrintfEx(room, "End of date/time string or \"%s\" expected.", optionalPart);
  } else {
    CheckedStringCchCopyEx(room, u"End of date/time string expected.");
  }
  throw EKestrelDateTime(dteEndExpected, std::u16string_view(message.data()));
}

/// A text, which ends at its first NUL, and the position up to which it has been read.
class Reader {
 public:
  explicit Reader(std::u16string_view text) : begin_(text.data()), at_(begin_), end_(begin_ + text.size()) {}

  std::size_t Position() const { return static_cast<std::size_t>(at_ - begin_); }
  bool AtEnd() const { return Peek() == u'\0'; }
  /// The next unit, NUL at the end.
  char16_t Peek() const { return at_ == end_ ? u'\0' : *at_; }
  bool AtDigit() const { return Peek() >= u'0' && Peek() <= u'9'; }

  bool Skip(char unit) {
    if (Peek() != static_cast<char16_t>(unit)) return false;
    ++at_;
    return true;
  }
  void SkipBlanks() {
    while (Skip(' ')) {
    }
  }
  /// word is of lower-case ASCII letters; the text may have them in either case. They differ in one bit.
  bool SkipWord(std::u16string_view word) {
    constexpr char16_t kLowerCase = u'a' - u'A';
    if (end_ - at_ < static_cast<std::ptrdiff_t>(word.size())) return false;
    for (std::size_t i = 0; i < word.size(); ++i)
      if ((at_[i] | kLowerCase) != word[i]) return false;
    at_ += word.size();
    return true;
  }

  void Expect(char separator) {
    if (!Skip(separator)) ThrowSeparator(separator);
  }
  char ExpectOneOf(char first, char second) {
    if (Skip(first)) return first;
    if (Skip(second)) return second;
    ThrowSeparator(first, second);
  }

  std::uint16_t Number(const Part& part) { return Number(part, std::numeric_limits<std::ptrdiff_t>::max()); }
  /// A number of at most maxDigits digits.
  std::uint16_t Number(const Part& part, std::ptrdiff_t maxDigits) {
    constexpr unsigned kTooLarge = 10000;
    const char16_t* const first = at_;
    const char16_t* digit = first;
    unsigned value = 0;
    for (; digit != end_ && *digit >= u'0' && *digit <= u'9'; ++digit)
      value = std::min(value, kTooLarge) * 10 + (*digit - u'0');
    at_ = digit;
    if (digit == first || digit - first > maxDigits || value < part.low || value > part.high) ThrowRange(part);
    return static_cast<std::uint16_t>(value);
  }

 private:
  const char16_t* begin_;
  const char16_t* at_;
  const char16_t* end_;
};

void ReadDate(Reader& reader, platform::SystemTime& time) {
  time.year = reader.Number(kYear);
  const char separator = reader.ExpectOneOf('/', '-');
  time.month = reader.Number(kMonth);
  reader.Expect(separator);
  time.day = reader.Number(DayOf(time.year, time.month));
}

/// Returns the optional part that could still follow, or null.
const char* ReadTime(Reader& reader, platform::SystemTime& time) {
  time.hour = reader.Number(kHour);
  reader.Expect(':');
  time.minute = reader.Number(kMinute);
  if (!reader.Skip(':')) return ":Seconds";
  time.second = reader.Number(kSecond);
  if (!reader.Skip(',') && !reader.Skip('.')) return ",Milliseconds or .Milliseconds";
  time.milliseconds = reader.Number(kMillisecond);
  return nullptr;
}

const char* ReadDateAndTime(Reader& reader, platform::SystemTime& time) {
  reader.SkipBlanks();
  ReadDate(reader, time);
  if (reader.AtEnd()) return nullptr;
  if (reader.ExpectOneOf(' ', 'T') == 'T') {
    if (reader.AtEnd()) {
      throw EKestrelDateTime(dteTimeExpected, u"Time expected after T separator.");
    }
    return ReadTime(reader, time);
  }
  reader.SkipBlanks();
  return reader.AtDigit() ? ReadTime(reader, time) : "Hour";
}

std::int64_t RoundedMilliseconds(const platform::SystemTime& time) {
  const std::uint64_t half = kTicksPerMillisecond / 2;
  return static_cast<std::int64_t>((Ticks(SystemTimeToFileTime(time)) + half) / kTicksPerMillisecond);
}

TKestrelDateTime FromLocal(std::int64_t localMilliseconds, std::int16_t bias) {
  TKestrelDateTime value;
  value.SetUTCMilliseconds(TKestrelDateTime::kLocal, localMilliseconds, bias);
  return value;
}

}  // namespace

platform::SystemTime ParseSystemTime(std::u16string_view text, std::size_t* consumed) {
  Reader reader(text);
  platform::SystemTime time{};
  const char* const optionalPart = ReadDateAndTime(reader, time);
  if (consumed) {
    *consumed = reader.Position();
  } else if (!reader.AtEnd()) {
    ThrowEndExpected(optionalPart);
  }
  return time;
}

std::int16_t ParseZoneBias(std::u16string_view text) {
  Reader reader(text);
  reader.SkipBlanks();
  if (!reader.SkipWord(u"utc")) reader.SkipWord(u"gmt");
  reader.SkipBlanks();
  const bool west = reader.Skip('-');
  if (!west) reader.Skip('+');
  reader.SkipBlanks();
  const int hours = reader.Number(kZoneHour, 2);
  reader.Expect(':');
  const int minutes = reader.Number(kMinute, 2);
  reader.SkipBlanks();
  if (!reader.AtEnd()) ThrowEndExpected(nullptr);
  // East of Greenwich the minutes keep their sign: "+01:30" is -30. Stored values depend on it.
  return static_cast<std::int16_t>(west ? hours * 60 + minutes : minutes - hours * 60);
}

TKestrelDateTime ParseDateTime(std::u16string_view text) {
  std::size_t consumed = 0;
  const platform::SystemTime local = ParseSystemTime(text, &consumed);
  return FromLocal(RoundedMilliseconds(local), ParseZoneBias(text.substr(consumed)));
}

TKestrelDateTime ParseLocalDateTime(std::u16string_view text) {
  const std::int64_t local = RoundedMilliseconds(ParseSystemTime(text));
  return FromLocal(local, BiasAtLocal(local, GetMachineZone()));
}

}  // namespace Kestrel
