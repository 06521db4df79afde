/// The pieces of a canonical encoding (value_list.h): bytes that are the same in every message, put together by the
/// compiler, and a writer that sets values between them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

#include "base/byte_order.h"
#include "valuelist/value_list.h"
#include "valuelist/wire_text.h"

namespace Tarn::CameraFinding {

/// Bytes that are the same in every message: what stands before a value, or at the head of a value list.
struct FixedBytes {
  std::array<std::uint8_t, 64> bytes{};
  std::size_t size = 0;

  constexpr FixedBytes& Byte(std::size_t byte) {
    bytes[size++] = static_cast<std::uint8_t>(byte);
    return *this;
  }
  constexpr FixedBytes& Number(std::uint32_t number) {
    for (std::size_t i = 0; i < sizeof number; ++i) Byte(number >> 8 * i & 0xFF);
    return *this;
  }
  constexpr FixedBytes& Text(std::string_view text) {
    Byte(Kestrel::vtString).Number(static_cast<std::uint32_t>(text.size() + 1));
    for (const char c : text) Byte(static_cast<unsigned char>(c));
    return Byte(0);
  }
  /// An entry up to its value.
  constexpr FixedBytes& Entry(std::string_view key, Kestrel::VariantType tag) { return Text(key).Byte(tag); }
};

/// A value list without a name, up to its first entry.
constexpr FixedBytes ValueListHead(std::uint32_t entries) {
  return FixedBytes().Number(Kestrel::ValueListIdentifier).Text("").Number(entries);
}

/// The length before a text or binary data.
inline constexpr std::size_t kLengthSize = sizeof(std::uint32_t);

/// Size in bytes of a value, its length included.
inline std::size_t ValueSize(std::string_view text) {
  return kLengthSize + text.size() + 1;
}
template <class Number>
requires std::is_arithmetic_v<Number> std::size_t ValueSize(Number) {
  return sizeof(Number);
}

/// Writes front to back. Requires a target with room for all that is put.
class CanonicalWriter {
 public:
  explicit CanonicalWriter(std::uint8_t* target) : at_(target) {}

  template <const FixedBytes& fixed>
  void Put() {
    Put(fixed.bytes.data(), fixed.size);
  }
  void PutNumber(std::size_t number) { PutValue(static_cast<std::uint32_t>(number)); }
  void PutValue(const std::string& text) {
    PutNumber(text.size() + 1);
    at_ = Kestrel::PutTerminated(text, at_);
  }
  template <class Number>
  requires std::is_arithmetic_v<Number>
  void PutValue(Number number) {
    Kestrel::StoreLittleEndian(at_, number);
    at_ += sizeof number;
  }

  std::uint8_t* GetEnd() const { return at_; }

 protected:
  std::uint8_t* at_;

 private:
  void Put(const void* bytes, std::size_t size) {
    std::memcpy(at_, bytes, size);
    at_ += size;
  }
};

}  // namespace Tarn::CameraFinding
