#include "valuelist/variant_text.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "base/base64.h"
#include "base/exceptions.h"
#include "base/hex_digits.h"
#include "base/text_conversion.h"
#include "time/date_time_parser.h"
#include "time/date_time_text.h"

namespace Kestrel {
namespace {

using VariantExceptions::VariantStringConversionException;
using VariantExceptions::VariantStringToValueConversionException;

constexpr std::string_view kBinaryDataWord = "binarydata";
constexpr std::string_view kBlobPtrWord = "blobptr";

std::string LengthText(std::uint64_t length) {
  return std::to_string(static_cast<std::uint32_t>(length));
}

/// 16 upper-case hexadecimal digits.
std::string AddressText(const void* address) {
  auto number = reinterpret_cast<std::uintptr_t>(address);
  std::string text(16, '0');
  for (auto digit = text.rbegin(); number != 0; ++digit, number /= 16) *digit = kUpperHexDigits[number % 16];
  return text;
}

template <class T>
T ValueOr(std::optional<T> extracted, std::string_view text, const char* typeName) {
  if (!extracted)
    throw StringConversionException("Failed to convert [" + std::string(text) + "] into [" + typeName + "]");
  return *extracted;
}

[[noreturn]] void ThrowNotA(std::string_view prefix, std::string_view text) {
  throw VariantStringToValueConversionException(std::string(prefix) + std::string(text));
}

}  // namespace

std::string ToString(const std::u16string& value) {
  const std::u16string_view text = value;
  return WideToUtf8(text.substr(0, text.find(u'\0')));
}

std::string ToString(const BinaryData& value) {
  const auto bytes = value.GetBytes();
  return std::string(kBinaryDataWord) + ' ' + LengthText(bytes.size()) + ' ' + Base64Encode(bytes.data(), bytes.size());
}

std::string ToString(const BlobPtr& value) {
  return std::string(kBlobPtrWord) + ' ' + LengthText(value.GetSize()) + AddressText(value.GetAddress());
}

std::string ToString(const platform::FileTime& value) {
  return SystemTimeToStr(FileTimeToSystemTime(value), dtsmSlashes);
}

std::string ToString(TKestrelDateTime value) {
  return BiasToStr(value);
}

std::string ToString(const VariantReferencePointer& value) {
  return value.Get() ? value.Get()->ToString() : "<nullref/>";
}

std::string ToString(const Guid& value) {
  return GuidToString(value);
}

void FromString(bool& value, std::string_view text) {
  std::string_view rest = text;
  value = ValueOr(ExtractBool(rest), text, "bool");
}

void FromString(float& value, std::string_view text) {
  std::string_view rest = text;
  value = ValueOr(ExtractFloat(rest), text, "float");
}

void FromString(std::u16string& value, std::string_view text) {
  value = Utf8ToWide(text);
}

void FromString(BinaryData& value, std::string_view text) {
  constexpr std::string_view kFailure = "Tried to convert string to BinaryData: std::string = ";
  std::string_view rest = text;
  if (ExtractWord(rest) != kBinaryDataWord) ThrowNotA(kFailure, text);
  const std::uint32_t length = ExtractUInt32(rest).value_or(0);
  if (length > std::max<std::uint64_t>(Base64DecodedBound(rest.size()), kMostUnfilledBytes)) ThrowNotA(kFailure, text);
  std::vector<std::uint8_t> bytes;
  Base64Decode(ExtractWord(rest), bytes);
  bytes.resize(length);
  value = BinaryData(bytes.data(), bytes.size());
}

void FromString(BlobPtr& value, std::string_view text) {
  std::string_view rest = text;
  if (ExtractWord(rest) != kBlobPtrWord) ThrowNotA("Tried to convert string to BlobPtr: string = ", text);
  const std::optional<std::uint32_t> size = ExtractUInt32(rest);
  const std::optional<std::uint32_t> address = size ? ExtractUInt32(rest) : std::nullopt;
  value = BlobPtr::Unreadable(address.value_or(0), size.value_or(0));
}

void FromString(platform::FileTime& value, std::string_view text) try {
  value = SystemTimeToFileTime(ParseSystemTime(Utf8ToWide(text)));
} catch (...) {
  throw VariantStringConversionException();
}

void FromString(TKestrelDateTime& value, std::string_view text) {
  value = ParseDateTime(Utf8ToWide(text));
}

void FromString(VariantReferencePointer&, std::string_view text) {
  ThrowNotA("Tried to read VariantReferencePointer from string", text);
}

void FromString(Guid& value, std::string_view text) {
  value = GuidFromString(text);
}

}  // namespace Kestrel
