/// Text forms of dates and times.
#pragma once

#include <cstdint>
#include <string>

#include "time/date_time.h"

namespace Kestrel {

/// What a text shows. A mode is made of one value of the low byte, flags, and one format.
enum TKestrelDateTimeStrMode : std::uint32_t {
  dtsmDateTime = 0,
  dtsmDate = 1,
  dtsmTime = 2,
  dtsmModeMask = 0xFF,

  dtsmLongDate = 0x100,        ///< locale form: long date in place of the short one
  dtsmNoSeconds = 0x200,       ///< time without seconds
  dtsmDayOfWeek = 0x400,       ///< locale form: the abbreviated day of the week in place of the date
  dtsmNoMilliseconds = 0x800,  ///< fixed forms: time without milliseconds
  dtsmDropZeros = 0x1000,      ///< fixed forms: drop zero milliseconds, and then zero seconds as well
  dtsmQuoted = 0x2000,         ///< fixed forms: in double quotation marks (slashes) or apostrophes (dashes)

  dtsmLocale = 0,         ///< the user's default locale
  dtsmSlashes = 0x10000,  ///< 2024/05/01 10:20:30,123
  dtsmDashes = 0x20000,   ///< 2024-05-01 10:20:30.123
  dtsmFormatMask = 0xFF0000,
};

/// The text of a date and time in a mode. The narrow form of a locale text is in the ANSI code page. Throws
/// EKestrelDateTime number 2 for an invalid mode or format, SystemException where the system fails or the text is too
/// long (context "TKestrelDateTime::SystemTimeToStr", alone or with "::GetDateFormat" or "::GetTimeFormat" behind it).
std::string SystemTimeToStr(const platform::SystemTime& time, std::uint32_t mode);
std::u16string SystemTimeToWideStr(const platform::SystemTime& time, std::uint32_t mode);

/// The value's date and time in its own bias, with the zone: "2024/05/01 10:20:30,123 GMT+02:00". Throws as
/// ToLocalSystemTime does.
std::string BiasToStr(const TKestrelDateTime& value);

}  // namespace Kestrel
