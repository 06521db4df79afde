/// Numbers from and to the bytes of the wire, which are little-endian and not aligned.
///
/// All machines that this library is built for are little-endian, so the bytes of a number in memory are its bytes on
/// the wire, and one instruction moves them. The same holds for code units of UTF-16 and for the structures of the wire
/// whose fields lie without gaps (Guid, FileTime). This is the one place that asserts it.
#pragma once

#include <bit>
#include <cstring>
#include <ranges>
#include <span>
#include <type_traits>

namespace Kestrel {

static_assert(std::endian::native == std::endian::little, "numbers have the byte order of the wire in memory");

/// What lies in memory as it lies on the wire.
template <class T>
concept WireValue = std::is_trivially_copyable_v<T> && !std::is_pointer_v<T> && !std::ranges::range<T>;

/// The value whose bytes begin at `bytes`. Requires sizeof(Value) readable bytes there. Not for bool, because only 0
/// and 1 may be copied into one: load a byte and compare it.
template <WireValue Value>
Value LoadLittleEndian(const void* bytes) {
  static_assert(!std::is_same_v<Value, bool>);
  Value value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

/// Requires sizeof value writable bytes at `bytes`. The type of the value decides how many bytes are written, so name
/// it where the argument is an expression: StoreLittleEndian<std::uint32_t>(bytes, size).
template <WireValue Value>
void StoreLittleEndian(void* bytes, const Value& value) {
  std::memcpy(bytes, &value, sizeof value);
}

/// The same for values in a row, such as the code units of a text; `bytes` may be null where there are none.
template <WireValue Value>
void LoadLittleEndian(const void* bytes, std::span<Value> values) {
  if (!values.empty()) std::memcpy(values.data(), bytes, values.size_bytes());
}
template <WireValue Value>
void StoreLittleEndian(void* bytes, std::span<const Value> values) {
  if (!values.empty()) std::memcpy(bytes, values.data(), values.size_bytes());
}

}  // namespace Kestrel
