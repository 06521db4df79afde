#include "base/exceptions.h"

#include <memory>
#include <utility>

#include "base/exception_history.h"
#include "base/text_conversion.h"
#include "platform/errors.h"
#include "platform/type_name.h"

namespace Kestrel {
namespace {

/// The system's text for a code without its line end.
std::u16string TextOfSystemError(std::uint32_t code) {
  char16_t* text = nullptr;
  const std::uint32_t length = platform::FormatMessageW(code, &text);
  if (length == 0) return u"Unknown system error";
  const std::unique_ptr<char16_t, decltype(&platform::LocalFree)> owner(text, platform::LocalFree);
  std::u16string_view line(text, length);
  while (!line.empty() && (line.back() == u'\r' || line.back() == u'\n')) line.remove_suffix(1);
  return std::u16string(line);
}

std::u16string DescribeSystemError(std::uint32_t code, const char* context) {
  std::u16string text = TextOfSystemError(code);
  std::string suffix = " [ErrorCode #" + std::to_string(code) + "]";
  if (context && *context) suffix.append(" in ").append(context);
  return text += AnsiToWideOrAscii(suffix);
}

std::string DescribeMissingMemory(std::uint64_t size) {
  return "Out of memory during allocation of " + std::to_string(size) + " bytes in FlatMemory";
}

}  // namespace

KestrelException::KestrelException(std::uint32_t errorClass, std::uint32_t errorCode,
                                   std::u16string_view wideDescription, std::string_view additionalText)
    : errorClass_(errorClass),
      errorCode_(errorCode),
      description_(WideToAnsi(wideDescription)),
      wideDescription_(wideDescription),
      additionalText_(additionalText) {
  ExceptionHistory::Add(*this);
}

KestrelException::KestrelException(std::uint32_t errorClass, std::uint32_t errorCode, std::string_view description)
    : errorClass_(errorClass),
      errorCode_(errorCode),
      description_(description),
      wideDescription_(AnsiToWide(description)) {
  ExceptionHistory::Add(*this);
}

KestrelException::KestrelException(std::uint32_t errorClass, std::uint32_t errorCode, std::string description,
                                   std::u16string_view wideDescription)
    : errorClass_(errorClass),
      errorCode_(errorCode),
      description_(std::move(description)),
      wideDescription_(wideDescription) {
  ExceptionHistory::Add(*this);
}

KestrelException::KestrelException(const KestrelException& whole, std::size_t mostUnits)
    : errorClass_(whole.errorClass_),
      errorCode_(whole.errorCode_),
      description_(whole.description_, 0, mostUnits),
      wideDescription_(whole.wideDescription_, 0, mostUnits),
      additionalText_(whole.additionalText_, 0, mostUnits) {}

KestrelException::KestrelException(std::string_view description) : KestrelException(ecGeneral, 0, description) {}

const char* KestrelException::what() const noexcept {
  return description_.c_str();
}

std::string KestrelException::GetClassName() const {
  return "class " + platform::UndecoratedTypeName(typeid(*this));
}

SystemException::SystemException(std::uint32_t errorCode, const char* context)
    : SystemException(errorCode, DescribeSystemError(errorCode, context)) {}

SystemException::SystemException(std::uint32_t errorCode, const std::u16string& wideDescription)
    : KestrelException(ecSystem, errorCode, WideToAnsiOrAscii(wideDescription), wideDescription) {}

OutOfMemoryException::OutOfMemoryException(std::uint64_t size)
    : KestrelException(ecOutOfMemory, 0, DescribeMissingMemory(size)) {}

EKestrelDateTime::EKestrelDateTime(DateTimeError number, std::u16string_view text)
    : KestrelException(ecDateTime, number, text, {}) {}

EKestrelDateTime::EKestrelDateTime(DateTimeError number, std::string_view text)
    : KestrelException(ecDateTime, number, text) {}

Text::InvalidFormatStringException::InvalidFormatStringException(std::string_view reason, std::u16string_view format,
                                                                 std::uint64_t position)
    : KestrelException(ecGeneral, 0, AnsiToWide(reason).append(u" : ").append(format), {}),
      format_(format),
      position_(position) {}

void ThrowLastSystemError(const char* context) {
  // Read first, because allocating memory for the exception may change it.
  const std::uint32_t code = platform::GetLastError();
  throw SystemException(code, context);
}
void ThrowSystemError(std::uint32_t code, const char* context) {
  throw SystemException(code, context);
}
void ThrowOutOfMemory(std::uint64_t size) {
  throw OutOfMemoryException(size);
}

}  // namespace Kestrel

namespace Tarn {

DBIException::DBIException(std::uint32_t errorClass, std::uint32_t errorCode, std::string_view platformClassName,
                           std::u16string_view wideDescription, std::string_view additionalText)
    : KestrelException(errorClass, errorCode, wideDescription, additionalText), platformClassName_(platformClassName) {}

std::string DBIException::GetClassName() const {
  return platformClassName_;
}

}  // namespace Tarn
