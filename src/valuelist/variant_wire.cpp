#include "valuelist/variant_wire.h"

#include <cstring>
#include <span>

#include "base/exceptions.h"
#include "valuelist/buffer.h"

namespace Kestrel {
namespace {

constexpr std::size_t kUnit = sizeof(char16_t);

}  // namespace

void CheckSize(std::uint64_t n, std::uint64_t least) {
  if (n < least) throw BufferException(kNotEnoughBytes);
}

std::uint64_t GetSize(const std::string& value) {
  return value.size() + 1;
}
std::uint64_t GetSize(const std::u16string& value) {
  return (value.size() + 1) * kUnit;
}
std::uint64_t GetSize(const BinaryData& value) {
  return value.GetBytes().size();
}
std::uint64_t GetSize(const BlobPtr& value) {
  return value.GetSize();
}
std::uint64_t GetSize(const VariantReferencePointer&) {
  return sizeof(std::uint64_t);
}

void WriteRaw(const std::string& value, std::uint8_t* payload) {
  std::memcpy(payload, value.c_str(), value.size() + 1);
}
void WriteRaw(const std::u16string& value, std::uint8_t* payload) {
  StoreLittleEndian(payload, std::span(value.c_str(), value.size() + 1));
}
void WriteRaw(const BinaryData& value, std::uint8_t* payload) {
  StoreLittleEndian(payload, value.GetBytes());
}
void WriteRaw(const BlobPtr& value, std::uint8_t* payload) {
  StoreLittleEndian(payload, value.GetBytes());
}
void WriteRaw(const VariantReferencePointer& value, std::uint8_t* payload) {
  StoreLittleEndian(payload, value.GetAddress());
}

void ReadRaw(bool& value, const std::uint8_t* payload, std::uint64_t n) {
  CheckSize(n, sizeof value);
  value = *payload != 0;
}

void ReadRaw(std::string& value, const std::uint8_t* payload, std::uint64_t n) {
  CheckSize(n, 1);
  value.assign(reinterpret_cast<const char*>(payload), static_cast<std::size_t>(n) - 1);
}

void ReadRaw(std::u16string& value, const std::uint8_t* payload, std::uint64_t n) {
  CheckSize(n, kUnit);
  value.resize(static_cast<std::size_t>(n) / kUnit - 1);
  LoadLittleEndian(payload, std::span(value));
}

void ReadRaw(BinaryData& value, const std::uint8_t* payload, std::uint64_t n) {
  value = BinaryData(payload, n);
}

void ReadRaw(BlobPtr& value, const std::uint8_t* payload, std::uint64_t n) {
  value = BlobPtr(payload, n);
}

void ReadRaw(VariantReferencePointer& value, const std::uint8_t* payload, std::uint64_t n) {
  CheckSize(n, sizeof(std::uint64_t));
  value = VariantReferencePointer::FromAddress(LoadLittleEndian<std::uint64_t>(payload));
}

}  // namespace Kestrel
