#include "platform/errors.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/error_codes.h"

using namespace platform;

TEST(ErrorTexts, AreThoseOfWindows) {
  const std::pair<std::uint32_t, std::u16string> rows[] = {
      {ERROR_SUCCESS, u"The operation completed successfully."},
      {1, u"Incorrect function."},
      {ERROR_FILE_NOT_FOUND, u"The system cannot find the file specified."},
      {3, u"The system cannot find the path specified."},
      {5, u"Access is denied."},
      {ERROR_INVALID_HANDLE, u"The handle is invalid."},
      {ERROR_NOT_ENOUGH_MEMORY, u"Not enough memory resources are available to process this command."},
      {14, u"Not enough memory resources are available to complete this operation."},
      {50, u"The request is not supported."},
      {ERROR_INVALID_PARAMETER, u"The parameter is incorrect."},
      {120, u"This function is not supported on this system."},
      {ERROR_INSUFFICIENT_BUFFER, u"The data area passed to a system call is too small."},
      {ERROR_MOD_NOT_FOUND, u"The specified module could not be found."},
      {ERROR_PROC_NOT_FOUND, u"The specified procedure could not be found."},
      {ERROR_MORE_DATA, u"More data is available."},
      {ERROR_NO_MORE_ITEMS, u"No more data is available."},
      {ERROR_INVALID_FLAGS, u"Invalid flags."},
      {ERROR_NO_UNICODE_TRANSLATION,
       u"No mapping for the Unicode character exists in the target multi-byte code page."},
      {ERROR_NONE_MAPPED, u"No mapping between account names and security IDs was done."},
      {10013, u"An attempt was made to access a socket in a way forbidden by its access permissions."},
      {10022, u"An invalid argument was supplied."},
      {10038, u"An operation was attempted on something that is not a socket."},
      {10048, u"Only one usage of each socket address (protocol/network address/port) is normally permitted."},
      {10049, u"The requested address is not valid in its context."},
      {10050, u"A socket operation encountered a dead network."},
      {10051, u"A socket operation was attempted to an unreachable network."},
      {10053, u"An established connection was aborted by the software in your host machine."},
      {10054, u"An existing connection was forcibly closed by the remote host."},
      {10060,
       u"A connection attempt failed because the connected party did not properly respond after a period of time, or "
       u"established connection failed because connected host has failed to respond."},
      {10061, u"No connection could be made because the target machine actively refused it."},
      {10065, u"A socket operation was attempted to an unreachable host."},
      {10091,
       u"WSAStartup cannot function at this time because the underlying system it uses to provide network "
       u"services is currently unavailable."},
      {10092, u"The Windows Sockets version requested is not supported."},
      {10093, u"Either the application has not called WSAStartup, or WSAStartup failed."},
      {11001, u"No such host is known."},
      {0x80004001, u"Not implemented"},
      {0x80004002, u"No such interface supported"},
      {0x80004003, u"Invalid pointer"},
      {0x80004004, u"Operation aborted"},
      {0x80004005, u"Unspecified error"},
      {0x8000FFFF, u"Catastrophic failure"}};
  for (const auto& [code, expected] : rows) {
    char16_t* text = nullptr;
    ASSERT_EQ(FormatMessageW(code, &text), expected.size() + 2) << code;
    EXPECT_EQ(text, expected + u"\r\n") << code;
    LocalFree(text);
  }
}
