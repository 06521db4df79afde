#include "platform/clock.h"

#include <langinfo.h>
#include <locale.h>

#include <ctime>
#include <string>
#include <string_view>

#include "platform/calendar.h"
#include "platform/error_codes.h"
#include "platform/errors.h"
#include "platform/linux/iconv.h"
#include "platform/linux/text.h"
#include "platform/linux/time_zone.h"

namespace platform {
namespace {

constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr std::int64_t kIntervalsPerMillisecond = 10'000;  // of 100 nanoseconds
constexpr std::int64_t kIntervalsPerSecond = 1000 * kIntervalsPerMillisecond;
constexpr std::int64_t kIntervalsPerDay = 86400 * kIntervalsPerSecond;
constexpr std::int64_t kSecondsFrom1601To1970 = kDaysFrom1601To1970 * 86400;

std::timespec Now(clockid_t clock) {
  std::timespec now{};
  clock_gettime(clock, &now);
  return now;
}

bool IsDate(const SystemTime& time) {
  return time.year >= kFirstYear && time.year <= kLastYear && time.month >= 1 && time.month <= 12 && time.day >= 1 &&
         time.day <= DaysOfMonth(time.year, time.month);
}

bool IsTimeOfDay(const SystemTime& time) {
  return time.hour < 24 && time.minute < 60 && time.second < 60 && time.milliseconds < 1000;
}

std::int64_t DaysOf(const SystemTime& date) {
  return DaysFromCivil({date.year, date.month, date.day});
}

bool InvalidParameter() {
  SetLastError(ERROR_INVALID_PARAMETER);
  return false;
}

constinit TimeZoneCache timeZoneCache;

/// Date and time forms for strftime.
struct LocaleForms {
  const char* shortDate;
  const char* longDate;
  const char* time;
  const char* timeWithoutSeconds;
};

/// For the plain C locale, which no user has chosen: the forms of Windows without a setting, which are those of the
/// United States.
constexpr LocaleForms kPlainForms = {"%-m/%-d/%Y", "%A, %B %-d, %Y", "%-I:%M:%S %p", "%-I:%M %p"};
constexpr LocaleForms kForms12Hours = {"%x", "%A, %-d %B %Y", "%X", "%I:%M %p"};
constexpr LocaleForms kForms24Hours = {"%x", "%A, %-d %B %Y", "%X", "%H:%M"};
constexpr char kAbbreviatedDayOfWeek[] = "%a";

/// The user's locale for dates and times. Never freed, because lines are written until the very end of the process.
struct UserLocale {
  locale_t handle;
  LocaleForms forms;
};

/// Whether a locale's time has the seconds and no zone. The times that are written have no zone, so the C library would
/// show the machine's.
bool IsTimeOfDayForm(std::string_view form) {
  const auto contains = [form](const char* conversion) { return form.find(conversion) != form.npos; };
  return (contains("%S") || contains("%OS") || contains("%T") || contains("%r")) && !contains("%Z") && !contains("%z");
}

LocaleForms FormsOf(locale_t handle) {
  const std::string_view name = nl_langinfo_l(_NL_LOCALE_NAME(LC_TIME), handle);
  if (name == "C" || name == "POSIX" || name.starts_with("C.")) return kPlainForms;
  const std::string_view time = nl_langinfo_l(T_FMT, handle);
  const bool writes12Hours = time.find("%r") != time.npos || time.find("%p") != time.npos;
  // Some locales write 12 hours and have no words for morning and afternoon.
  const bool has12Hours = writes12Hours && *nl_langinfo_l(PM_STR, handle) != '\0';
  LocaleForms forms = has12Hours ? kForms12Hours : kForms24Hours;
  if (!IsTimeOfDayForm(time) || has12Hours != writes12Hours) forms.time = has12Hours ? "%I:%M:%S %p" : "%H:%M:%S";
  return forms;
}

locale_t OpenUserLocale() {
  const locale_t handle = newlocale(LC_TIME_MASK, "", locale_t{});
  return handle ? handle : newlocale(LC_TIME_MASK, "C", locale_t{});
}

const UserLocale& User() {
  static const locale_t handle = OpenUserLocale();
  static const UserLocale user{handle, FormsOf(handle)};
  return user;
}

/// The locale's texts are in its own code set.
std::u16string FromLocale(std::string_view text) {
  const char* const codeSet = nl_langinfo_l(_NL_TIME_CODESET, User().handle);
  if (std::string_view(codeSet) == "UTF-8") return WideText(text);
  std::u16string wide(text.size(), u'\0');
  const Iconv converter("UTF-16LE", codeSet);
  const std::size_t bytes = converter.Convert(text.data(), text.size(), wide.data(), wide.size() * sizeof(char16_t));
  wide.resize(bytes / sizeof(char16_t));
  return wide;
}

int Format(const char* form, const std::tm& parts, char16_t* text, int units) {
  char narrow[512];
  const std::u16string formatted = FromLocale({narrow, strftime_l(narrow, sizeof narrow, form, &parts, User().handle)});
  const int needed = static_cast<int>(formatted.size()) + 1;
  if (units == 0 || CopyWithNul(formatted, text, static_cast<std::size_t>(units))) return needed;
  SetLastError(ERROR_INSUFFICIENT_BUFFER);
  return 0;
}

}  // namespace

bool QueryPerformanceFrequency(std::int64_t* ticksPerSecond) {
  *ticksPerSecond = kNanosecondsPerSecond;
  return true;
}

bool QueryPerformanceCounter(std::int64_t* ticks) {
  const std::timespec now = Now(CLOCK_MONOTONIC);
  *ticks = now.tv_sec * kNanosecondsPerSecond + now.tv_nsec;
  return true;
}

void GetSystemTimeAsFileTime(FileTime* time) {
  const std::timespec now = Now(CLOCK_REALTIME);
  const std::int64_t intervals = (now.tv_sec + kSecondsFrom1601To1970) * kIntervalsPerSecond + now.tv_nsec / 100;
  *time = {static_cast<std::uint32_t>(intervals), static_cast<std::uint32_t>(intervals >> 32)};
}

void GetLocalTime(SystemTime* time) {
  const std::timespec now = Now(CLOCK_REALTIME);
  const std::tm local = LocalParts(now.tv_sec);
  *time = {.year = static_cast<std::uint16_t>(local.tm_year + 1900),
           .month = static_cast<std::uint16_t>(local.tm_mon + 1),
           .dayOfWeek = static_cast<std::uint16_t>(local.tm_wday),
           .day = static_cast<std::uint16_t>(local.tm_mday),
           .hour = static_cast<std::uint16_t>(local.tm_hour),
           .minute = static_cast<std::uint16_t>(local.tm_min),
           .second = static_cast<std::uint16_t>(local.tm_sec),
           .milliseconds = static_cast<std::uint16_t>(now.tv_nsec / 1'000'000)};
}

bool SystemTimeToFileTime(const SystemTime& systemTime, FileTime* fileTime) {
  if (!IsDate(systemTime) || !IsTimeOfDay(systemTime)) return InvalidParameter();
  const std::int64_t seconds = (systemTime.hour * 60 + systemTime.minute) * 60 + systemTime.second;
  const std::int64_t intervals = DaysOf(systemTime) * kIntervalsPerDay + seconds * kIntervalsPerSecond +
                                 systemTime.milliseconds * kIntervalsPerMillisecond;
  *fileTime = {static_cast<std::uint32_t>(intervals), static_cast<std::uint32_t>(intervals >> 32)};
  return true;
}

bool FileTimeToSystemTime(const FileTime& fileTime, SystemTime* systemTime) {
  if (fileTime.high >= 0x80000000U) return InvalidParameter();
  const std::uint64_t intervals = std::uint64_t{fileTime.high} << 32 | fileTime.low;
  const auto days = static_cast<std::int64_t>(intervals / kIntervalsPerDay);
  const auto milliseconds = static_cast<std::uint32_t>(intervals % kIntervalsPerDay / kIntervalsPerMillisecond);
  const CivilDate date = CivilFromDays(days);
  *systemTime = {.year = static_cast<std::uint16_t>(date.year),
                 .month = static_cast<std::uint16_t>(date.month),
                 .dayOfWeek = static_cast<std::uint16_t>(DayOfWeek(days)),
                 .day = static_cast<std::uint16_t>(date.day),
                 .hour = static_cast<std::uint16_t>(milliseconds / 3'600'000),
                 .minute = static_cast<std::uint16_t>(milliseconds / 60'000 % 60),
                 .second = static_cast<std::uint16_t>(milliseconds / 1000 % 60),
                 .milliseconds = static_cast<std::uint16_t>(milliseconds % 1000)};
  return true;
}

std::uint32_t GetTimeZoneInformation(TimeZoneInformation* information) {
  const TimeZoneAnswer answer = timeZoneCache.Get(Now(CLOCK_REALTIME).tv_sec);
  *information = answer.rules;
  return answer.state;
}

int GetDateFormatW(std::uint32_t flags, const SystemTime& time, const char16_t* picture, char16_t* text, int units) {
  const bool knownPicture = picture && std::u16string_view(picture) == u"ddd";
  if (!IsDate(time) || (picture && !knownPicture)) return InvalidParameter();
  const LocaleForms& forms = User().forms;
  const char* const dateForm = flags == DATE_LONGDATE ? forms.longDate : forms.shortDate;
  std::tm parts{};
  parts.tm_year = time.year - 1900;
  parts.tm_mon = time.month - 1;
  parts.tm_mday = time.day;
  parts.tm_wday = static_cast<int>(DayOfWeek(DaysOf(time)));
  return Format(picture ? kAbbreviatedDayOfWeek : dateForm, parts, text, units);
}

int GetTimeFormatW(std::uint32_t flags, const SystemTime& time, char16_t* text, int units) {
  if (!IsTimeOfDay(time)) return InvalidParameter();
  const LocaleForms& forms = User().forms;
  std::tm parts{};
  parts.tm_hour = time.hour;
  parts.tm_min = time.minute;
  parts.tm_sec = time.second;
  return Format(flags == TIME_NOSECONDS ? forms.timeWithoutSeconds : forms.time, parts, text, units);
}

}  // namespace platform
