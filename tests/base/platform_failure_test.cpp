/// The base library over a code page that the system refuses, and on a processor without vectors: the tests of base64
/// in this program see the portable code.
#include "base/text_conversion.h"
#include "platform/code_pages.h"
#include "platform/errors.h"
#include "platform/processor.h"
#include "thrown.h"

int platform::MultiByteToWideChar(std::uint32_t, std::uint32_t, const char*, int, char16_t*, int) {
  SetLastError(4321);
  return 0;
}
int platform::WideCharToMultiByte(std::uint32_t, std::uint32_t, const char16_t*, int, char*, int) {
  SetLastError(4322);
  return 0;
}

bool platform::HasAvx2() {
  return false;
}
bool platform::HasAvx512Vbmi() {
  return false;
}

namespace Kestrel {

TEST(FailingConversion, ReplacesTheExceptionAndItsOwnReportIsAscii) {
  EXPECT_EQ(SystemErrorOf([] { throw KestrelException(1, 2, u"x", {}); }),
            "SystemException 4322 [ErrorCode #4322] in WideCharToMultiByte");
  EXPECT_EQ(SystemErrorOf([] { throw KestrelException("x"); }),
            "SystemException 4321 [ErrorCode #4321] in MultiByteToWideChar");
  EXPECT_EQ(WideToAnsiOrAscii(u"a\u007F\u0080\u0416"), "a\x7F??");
  EXPECT_EQ(AnsiToWideOrAscii("a\x7F\x80\xFF"), u"a\u007F??");
}

}  // namespace Kestrel
