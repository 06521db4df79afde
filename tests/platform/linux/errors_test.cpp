#include "platform/errors.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/error_codes.h"

using namespace platform;

TEST(ErrorTexts, AreThoseOfTheCodesThatTheLibraryMakes) {
  const std::pair<std::uint32_t, std::u16string> rows[] = {
      {ERROR_SUCCESS, u"The operation completed successfully."},
      {ERROR_FILE_NOT_FOUND, u"The system cannot find the file specified."},
      {ERROR_INVALID_HANDLE, u"The handle is invalid."},
      {ERROR_NOT_ENOUGH_MEMORY, u"Not enough memory resources are available to process this command."},
      {ERROR_INVALID_PARAMETER, u"The parameter is incorrect."},
      {ERROR_INSUFFICIENT_BUFFER, u"The data area passed to a system call is too small."},
      {ERROR_MOD_NOT_FOUND, u"The specified module could not be found."},
      {ERROR_PROC_NOT_FOUND, u"The specified procedure could not be found."},
      {ERROR_MORE_DATA, u"More data is available."},
      {ERROR_NO_MORE_ITEMS, u"No more data is available."},
      {ERROR_INVALID_FLAGS, u"Invalid flags."},
      {ERROR_NO_UNICODE_TRANSLATION,
       u"No mapping for the Unicode character exists in the target multi-byte code page."},
      {ERROR_NONE_MAPPED, u"No mapping between account names and security IDs was done."},
      {10091,
       u"WSAStartup cannot function at this time because the underlying system it uses to provide network "
       u"services is currently unavailable."},
      {10050, u"A socket operation encountered a dead network."},
      {11001, u"No such host is known."},
      {0x80004005, u"Unspecified error"},
      {0x8000FFFF, u"Catastrophic failure"}};
  for (const auto& [code, expected] : rows) {
    char16_t* text = nullptr;
    ASSERT_EQ(FormatMessageW(code, &text), expected.size() + 2) << code;
    EXPECT_EQ(text, expected + u"\r\n") << code;
    LocalFree(text);
  }
}
