/// The base library over a platform layer that fails, or answers what no real one does.
#include <algorithm>

#include "base/base64_avx2.h"
#include "base/date_time.h"
#include "base/date_time_text.h"
#include "base/text_conversion.h"
#include "fakes/fake_debugger.h"
#include "platform/clock.h"
#include "platform/code_pages.h"
#include "platform/errors.h"
#include "thrown.h"

namespace {

constexpr std::uint32_t kCode = 4321;

bool refusing = false;              ///< whether the code-page functions, which know ASCII, refuse
std::int64_t frequency = -1;        ///< below 0: the query fails
std::u16string dateForm, timeForm;  ///< locale texts; empty: failure
std::u16string asked;               ///< what they were asked for with

int Fail() {
  platform::SetLastError(kCode);
  return 0;
}

template <class From, class To>
int Convert(const From* source, int length, To* target) {
  if (refusing) return Fail();
  std::copy_n(source, length, target);
  return length;
}

int Answer(const std::u16string& form, char16_t* text, int units) {
  if (form.empty() || static_cast<int>(form.size()) >= units) return Fail();
  form.copy(text, form.size());
  text[form.size()] = 0;
  return static_cast<int>(form.size()) + 1;
}

}  // namespace

namespace platform {

int MultiByteToWideChar(std::uint32_t, std::uint32_t, const char* source, int length, char16_t* target, int) {
  return Convert(source, length, target);
}
int WideCharToMultiByte(std::uint32_t, std::uint32_t, const char16_t* source, int length, char* target, int) {
  return Convert(source, length, target);
}

bool QueryPerformanceFrequency(std::int64_t* ticks) {
  *ticks = frequency;
  return frequency >= 0 || Fail();
}
bool QueryPerformanceCounter(std::int64_t*) {
  return false;
}
void GetSystemTimeAsFileTime(FileTime* now) {
  *now = {};
}
void GetLocalTime(SystemTime* now) {
  *now = {};
}
bool SystemTimeToFileTime(const SystemTime&, FileTime*) {
  return Fail();
}
bool FileTimeToSystemTime(const FileTime&, SystemTime*) {
  return Fail();
}
std::uint32_t GetTimeZoneInformation(TimeZoneInformation*) {
  return static_cast<std::uint32_t>(Fail()) - 1;
}
int GetDateFormatW(std::uint32_t flags, const SystemTime&, const char16_t* picture, char16_t* text, int units) {
  asked += static_cast<char16_t>(u'0' + flags);
  if (picture) asked += picture;
  return Answer(dateForm, text, units);
}
int GetTimeFormatW(std::uint32_t flags, const SystemTime&, char16_t* text, int units) {
  asked += static_cast<char16_t>(u'0' + flags);
  return Answer(timeForm, text, units);
}

}  // namespace platform

namespace Kestrel {

// A processor without vectors: the tests of base64 in this program see the portable code.
template <>
const Base64VectorCodec<char>* Base64VectorCodec<char>::Find() {
  return nullptr;
}
template <>
const Base64VectorCodec<char16_t>* Base64VectorCodec<char16_t>::Find() {
  return nullptr;
}

namespace {

std::string Failure(const std::string& context, std::uint32_t code = kCode) {
  const std::string number = std::to_string(code);
  return "2/" + number + " [ErrorCode #" + number + "] in " + context;
}

TEST(FailingConversion, DoesNotRecurseIntoItsOwnReport) {
  refusing = true;
  EXPECT_EQ(SystemErrorOf([] { throw KestrelException(1, 2, u"x", {}); }), Failure("WideCharToMultiByte"));
  EXPECT_EQ(SystemErrorOf([] { throw KestrelException("x"); }), Failure("MultiByteToWideChar"));
  refusing = false;
}

TEST(TimerFrequency, IsCheckedAndReported) {
  frequency = -1;
  EXPECT_EQ(SystemErrorOf(GetKestrelTimerFrequency), Failure("Kestrel::GetKestrelTimerFrequency"));
  frequency = 1;
  EXPECT_EQ(GetKestrelTimerFrequency(), 1);
  frequency = 0;
  EXPECT_EQ(GetKestrelTimerFrequency(), 0);
  EXPECT_EQ(fakes::NarrowDebuggerLines(), std::vector<std::string>{"Result.QuadPart > 0"});
}

TEST(CurrentTime, NeedsTheZone) {
  EXPECT_EQ(SystemErrorOf(TKestrelDateTime::Now), Failure("GetTimeZoneInformation"));
}

TEST(LocaleText, IsMadeOfTheSystemsForms) {
  dateForm = u"3.4.";
  timeForm = u"1 PM";
  const auto shown = [](std::uint32_t mode) {
    asked.clear();
    return SystemTimeToWideStr({}, mode) + u", asked for with " + asked;  // flags and picture of the date, of the time
  };
  EXPECT_EQ(shown(dtsmDateTime), u"3.4. 1 PM, asked for with 10");
  EXPECT_EQ(shown(dtsmDateTime | dtsmLongDate | dtsmNoSeconds), u"3.4. 1 PM, asked for with 22");
  EXPECT_EQ(shown(dtsmDate | dtsmDayOfWeek | dtsmLongDate), u"3.4., asked for with 0ddd");
  EXPECT_EQ(shown(dtsmTime | dtsmQuoted | dtsmDropZeros), u"1 PM, asked for with 0");
}

TEST(LocaleText, NamesWhatFailed) {
  const std::string context = "TKestrelDateTime::SystemTimeToStr";
  const auto failure = [](std::size_t dateLength, std::size_t timeLength) {
    dateForm.assign(dateLength, u'd');
    timeForm.assign(timeLength, u't');
    return SystemErrorOf([] { SystemTimeToWideStr({}, dtsmDateTime); });
  };
  EXPECT_EQ(failure(0, 1), Failure(context + "::GetDateFormat"));
  EXPECT_EQ(failure(1, 0), Failure(context + "::GetTimeFormat"));
  EXPECT_EQ(failure(253, 1), "nothing");
  EXPECT_EQ(failure(253, 2), Failure(context + "::GetTimeFormat"));
  EXPECT_EQ(failure(254, 1), Failure(context + "::GetTimeFormat", 122));
  EXPECT_EQ(failure(255, 1), Failure(context, 122));
}

}  // namespace
}  // namespace Kestrel
