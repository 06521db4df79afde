/// The exceptions of the library. Every class derives from KestrelException; objects are thrown by value and caught by
/// reference.
///
/// Texts: Each exception carries its description twice, narrow (system ANSI code page) and wide (UTF-16), so that no
/// reader has to convert it. Where the conversion fails, the constructor throws SystemException instead.
/// History: Each construction is recorded in the exception history (exception_history.h); copies are not.
/// Threads: Exceptions may be made on any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

namespace Kestrel {

/// Error classes that the library assigns itself; Tarn::DBIException carries the platform library's own.
enum ErrorClass : std::uint32_t {
  ecGeneral = 0,
  ecSystem = 2,       ///< code: the system error code
  ecOutOfMemory = 4,  ///< code 0
  ecDateTime = 5,     ///< code: a DateTimeError
};

class KestrelException : public std::exception {
  friend class ExceptionHistory;

 public:
  KestrelException(std::uint32_t errorClass, std::uint32_t errorCode, std::u16string_view wideDescription,
                   std::string_view additionalText);
  explicit KestrelException(std::string_view description);
  KestrelException(const KestrelException&) = default;
  KestrelException& operator=(const KestrelException&) = default;
  ~KestrelException() override = default;

  /// The narrow description.
  const char* what() const noexcept override;
  /// "class " and the qualified name of the object's dynamic class.
  virtual std::string GetClassName() const;

  std::uint32_t GetErrorClass() const { return errorClass_; }
  std::uint32_t GetErrorCode() const { return errorCode_; }
  const std::string& GetDescription() const { return description_; }
  const std::u16string& GetWideDescription() const { return wideDescription_; }
  const std::string& GetAdditionalText() const { return additionalText_; }

 protected:
  /// description is narrow; the wide one is made from it.
  KestrelException(std::uint32_t errorClass, std::uint32_t errorCode, std::string_view description);
  /// Takes both descriptions as they are.
  KestrelException(std::uint32_t errorClass, std::uint32_t errorCode, std::string description,
                   std::u16string_view wideDescription);

 private:
  /// A copy whose texts are cut after mostUnits units. For the history, so it is not recorded itself.
  KestrelException(const KestrelException& whole, std::size_t mostUnits);

  std::uint32_t errorClass_ = ecGeneral;
  std::uint32_t errorCode_ = 0;
  std::string description_;
  std::u16string wideDescription_;
  std::string additionalText_;
};

/// A failing system call: "<system text> [ErrorCode #<code>] in <context>"; without " in " where there is no context.
/// Where a text cannot be converted its characters outside ASCII become "?", because the exception may be the report of
/// just such a failure.
class SystemException : public KestrelException {
 public:
  SystemException(std::uint32_t errorCode, const char* context);

 private:
  SystemException(std::uint32_t errorCode, const std::u16string& wideDescription);
};

/// "Out of memory during allocation of <size> bytes in FlatMemory".
class OutOfMemoryException : public KestrelException {
 public:
  explicit OutOfMemoryException(std::uint64_t size);
};

/// Error numbers of EKestrelDateTime.
enum DateTimeError : std::uint32_t {
  dteInvalidTransition = 1,
  dteInvalidMode = 2,
  dteYear = 3,
  dteMonth = 4,
  dteDay = 5,
  dteHour = 6,
  dteMinute = 7,
  dteSecond = 8,
  dteMillisecond = 9,
  dteSeparatorExpected = 10,
  dteEndExpected = 12,
  dteOutOfRange = 13,
  dteTimeExpected = 14,
};

/// A date, time or zone that is out of range, or a text that is none. The message names the part and its range.
class EKestrelDateTime : public KestrelException {
 public:
  EKestrelDateTime(DateTimeError number, std::u16string_view text);
  EKestrelDateTime(DateTimeError number, std::string_view text);
};

/// A text that is no guid: "Conversion of guid '<text>' failed.".
class GuidConversionException : public KestrelException {
 public:
  using KestrelException::KestrelException;
};

/// A text that is no value of a type: "Failed to convert [<text>] into [<type>]".
class StringConversionException : public KestrelException {
 public:
  using KestrelException::KestrelException;
};

/// Bytes that are no value list.
class ValueListException : public KestrelException {
 public:
  using KestrelException::KestrelException;
};

/// Bytes that end too early, or that contain an address that must not be followed.
class BufferException : public KestrelException {
 public:
  using KestrelException::KestrelException;
};

namespace Text {

/// A format string with a brace in the wrong place, or without its argument. The description is the reason, " : " and
/// the format string.
class InvalidFormatStringException : public KestrelException {
 public:
  InvalidFormatStringException(std::string_view reason, std::u16string_view format, std::uint64_t position);

  const std::u16string& GetFormatString() const { return format_; }
  /// Index of the offending brace, in units.
  std::uint64_t GetPosition() const { return position_; }

 private:
  std::u16string format_;
  std::uint64_t position_;
};

}  // namespace Text

namespace VariantExceptions {

/// The root of the variants' exceptions. Without a text of its own the description is "VariantException".
class VariantException : public KestrelException {
 public:
  VariantException() : KestrelException("VariantException") {}
  using KestrelException::KestrelException;
};

/// A tag that is no type, or a conversion into a type that has none.
class VariantInvalidTypeException : public VariantException {
 public:
  VariantInvalidTypeException() = default;
};

/// A value of a type that has no text.
class VariantStringConversionException : public VariantException {
 public:
  VariantStringConversionException() = default;
};

/// A text that is no value of the variant's type.
class VariantStringToValueConversionException : public VariantException {
 public:
  explicit VariantStringToValueConversionException(std::string_view text) : VariantException(text) {}
};

}  // namespace VariantExceptions

/// Throws SystemException with the calling thread's last error.
[[noreturn]] void ThrowLastSystemError(const char* context);
/// code is a system error code or an HRESULT; the text has it as an unsigned number.
[[noreturn]] void ThrowSystemError(std::uint32_t code, const char* context);
[[noreturn]] void ThrowOutOfMemory(std::uint64_t size);

}  // namespace Kestrel

namespace Tarn {

/// A failure of the platform library, made from its last-error record. The texts are copied.
class DBIException : public Kestrel::KestrelException {
 public:
  DBIException(std::uint32_t errorClass, std::uint32_t errorCode, std::string_view platformClassName,
               std::u16string_view wideDescription, std::string_view additionalText);

  /// The platform library's name for the error's class.
  std::string GetClassName() const override;

 private:
  std::string platformClassName_;
};

}  // namespace Tarn
