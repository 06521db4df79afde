#include "platform/errors.h"

#include <cstdlib>
#include <string_view>

#include "platform/error_codes.h"

namespace platform {
namespace {

struct ErrorText {
  std::uint32_t code;
  std::u16string_view text;
};

/// The codes that the library can meet, in ascending order: system errors, socket errors, HRESULTs.
constexpr ErrorText kErrorTexts[] = {
    {0, u"The operation completed successfully."},
    {1, u"Incorrect function."},
    {2, u"The system cannot find the file specified."},
    {3, u"The system cannot find the path specified."},
    {5, u"Access is denied."},
    {6, u"The handle is invalid."},
    {8, u"Not enough memory resources are available to process this command."},
    {14, u"Not enough memory resources are available to complete this operation."},
    {50, u"The request is not supported."},
    {87, u"The parameter is incorrect."},
    {120, u"This function is not supported on this system."},
    {122, u"The data area passed to a system call is too small."},
    {126, u"The specified module could not be found."},
    {127, u"The specified procedure could not be found."},
    {234, u"More data is available."},
    {259, u"No more data is available."},
    {1004, u"Invalid flags."},
    {1113, u"No mapping for the Unicode character exists in the target multi-byte code page."},
    {1332, u"No mapping between account names and security IDs was done."},
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
     u"WSAStartup cannot function at this time because the underlying system it uses to provide network services is "
     u"currently unavailable."},
    {10092, u"The Windows Sockets version requested is not supported."},
    {10093, u"Either the application has not called WSAStartup, or WSAStartup failed."},
    {11001, u"No such host is known."},
    {0x80004001, u"Not implemented"},
    {0x80004002, u"No such interface supported"},
    {0x80004003, u"Invalid pointer"},
    {0x80004004, u"Operation aborted"},
    {0x80004005, u"Unspecified error"},
    {0x8000FFFF, u"Catastrophic failure"},
};

/// An HRESULT of this facility carries a system error in its low half, and has that error's text.
constexpr std::uint32_t kSystemErrorResult = 0x80070000;

std::u16string_view TextOf(std::uint32_t code) {
  if ((code & 0xFFFF0000) == kSystemErrorResult) code &= 0xFFFF;
  for (const ErrorText& row : kErrorTexts)
    if (row.code == code) return row.text;
  return {};
}

thread_local constinit std::uint32_t lastError = 0;

}  // namespace

std::uint32_t GetLastError() {
  return lastError;
}

void SetLastError(std::uint32_t code) {
  lastError = code;
}

std::uint32_t FormatMessageW(std::uint32_t code, char16_t** text) {
  const std::u16string_view message = TextOf(code);
  if (message.empty()) {
    SetLastError(ERROR_MR_MID_NOT_FOUND);
    return 0;
  }
  constexpr std::u16string_view kLineEnd = u"\r\n";
  const std::size_t units = message.size() + kLineEnd.size();
  auto* const copy = static_cast<char16_t*>(std::malloc((units + 1) * sizeof(char16_t)));
  if (!copy) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return 0;
  }
  message.copy(copy, message.size());
  kLineEnd.copy(copy + message.size(), kLineEnd.size());
  copy[units] = u'\0';
  *text = copy;
  return static_cast<std::uint32_t>(units);
}

void LocalFree(void* memory) {
  std::free(memory);
}

}  // namespace platform
