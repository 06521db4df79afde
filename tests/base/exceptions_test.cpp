#include "base/exceptions.h"

#include <functional>
#include <thread>

#include "base/exception_history.h"
#include "base/text_conversion.h"
#include "platform/errors.h"
#include "thrown.h"

static thread_local std::uint32_t lastError = 0;

std::uint32_t platform::GetLastError() {
  return lastError;
}
void platform::SetLastError(std::uint32_t code) {
  lastError = code;
}
std::uint32_t platform::FormatMessageW(std::uint32_t code, char16_t** text) {
  const std::u16string_view line = code == 2 ? u"Not föund\r\n" : code == 3 ? u"\r\n\n" : u"";
  if (line.empty()) return 0;
  *text = new char16_t[line.size()];
  line.copy(*text, line.size());
  return static_cast<std::uint32_t>(line.size());
}
void platform::LocalFree(void* memory) {
  delete[] static_cast<char16_t*>(memory);
}

namespace Kestrel {
namespace {

void Expect(std::uint32_t errorClass, const std::string& thrown, const std::function<void()>& raise) {
  EXPECT_EQ(ErrorOf(raise), thrown);
  try {
    raise();
  } catch (const KestrelException& error) {
    EXPECT_EQ(error.GetErrorClass(), errorClass) << thrown;
    EXPECT_TRUE(AnsiToWide(thrown).ends_with(u": " + error.GetWideDescription())) << thrown;
  }
}

TEST(Exceptions, CarryTheirClassCodeAndTexts) {
  Expect(7, "KestrelException 8: Gr\xF6\xDF", [] { throw KestrelException(7, 8, u"Größ", "more"); });
  Expect(0, "KestrelException: Gr\xF6\xDF", [] { throw KestrelException("Gr\xF6\xDF"); });
  Expect(5, "EKestrelDateTime 14: t", [] { throw EKestrelDateTime(dteTimeExpected, u"t"); });
  Expect(5, "EKestrelDateTime 13: t", [] { throw EKestrelDateTime(dteOutOfRange, "t"); });
  Expect(0, "VariantExceptions::VariantInvalidTypeException: VariantException",
         [] { throw VariantExceptions::VariantInvalidTypeException(); });
  Expect(4, "OutOfMemoryException: Out of memory during allocation of 18446744073709551615 bytes in FlatMemory",
         [] { ThrowOutOfMemory(0xFFFFFFFFFFFFFFFF); });
  const Tarn::DBIException error(3, 40, "CServerError", u"no €", "more");
  Expect(3, "CServerError 40: no \x80", [&] { throw error; });
  EXPECT_EQ(error.GetAdditionalText(), "more");
}

TEST(Exceptions, OfTheSystemHaveItsTextCodeAndContext) {
  Expect(2, "SystemException 2: Not f\xF6und [ErrorCode #2] in GetModuleFileNameW",
         [] { ThrowSystemError(2, "GetModuleFileNameW"); });
  Expect(2, "SystemException 3:  [ErrorCode #3]", [] { ThrowSystemError(3, nullptr); });
  Expect(2, "SystemException 2147942522: Unknown system error [ErrorCode #2147942522]",
         [] { ThrowSystemError(0x8007007A, ""); });
  platform::SetLastError(5);
  Expect(2, "SystemException 5: Unknown system error [ErrorCode #5] in Here", [] { ThrowLastSystemError("Here"); });
}

TEST(ExceptionHistory, KeepsTheLast512OfAllThreadsUnderTheRootsName) {
  const ExceptionHistory history;
  const std::string kept(256, 'x');  // of longer texts
  const Tarn::DBIException first(3, 40, "CServerError", std::u16string(257, u'x'), kept + "y");
  const KestrelException copy(first);
  ASSERT_EQ(history.Entries().size(), 1u);  // copies are not recorded
  EXPECT_EQ(history.Entries().front().className, "class Kestrel::KestrelException");
  const KestrelException oldest = history.Entries().front().exception;
  EXPECT_EQ(oldest.GetErrorClass() * 100 + oldest.GetErrorCode(), 340u);
  EXPECT_EQ(oldest.GetAdditionalText(), kept);
  EXPECT_EQ(oldest.GetWideDescription(), std::u16string(256, u'x'));

  const auto raise = [](int count) {
    for (int i = 0; i < count; ++i) BufferException("b");
  };
  std::thread other(raise, 255);
  raise(256);
  other.join();
  EXPECT_EQ(history.Entries().size(), 512u);
  EXPECT_EQ(history.Entries().front().exception.GetDescription(), kept);
  BufferException("last");
  EXPECT_EQ(history.Entries().size(), 512u);
  EXPECT_EQ(history.Entries().front().exception.GetDescription(), "b");
  EXPECT_EQ(history.Entries().back().exception.GetDescription(), "last");
}

}  // namespace
}  // namespace Kestrel
