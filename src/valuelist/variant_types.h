/// The 21 types of a variant and what the wire knows about them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Kestrel {

/// The tag of a type is its byte on the wire.
enum VariantType : std::uint8_t {
  vtBool = 0,
  vtChar = 1,
  vtUChar = 2,
  vtSChar = 3,
  vtShort = 4,
  vtUShort = 5,
  vtUInt = 6,
  vtInt = 7,
  vtInt64 = 8,
  vtFloat = 9,
  vtDouble = 10,
  vtString = 11,
  vtWString = 12,
  vtBinaryData = 13,
  vtBlobPtr = 14,
  vtFileTime = 15,
  vtDateTime = 16,
  vtReferencePointer = 17,
  vtGuid = 18,
  vtLong = 19,
  vtUInt64 = 20,
};
inline constexpr std::size_t kVariantTypeCount = 21;

/// The held type of vtLong: a number like that of vtInt, but a type of its own, because the held type decides the tag.
enum class VariantLong : std::int32_t {};

/// Marks a payload of variable size; a length of 32 bits stands before it.
inline constexpr std::uint64_t kVariableSize = ~std::uint64_t{0};

struct VariantTypeRow {
  VariantType tag;
  VariantType writtenTag;
  std::uint64_t fixedSize;  ///< bytes of the payload, or kVariableSize
};

/// Row number = tag.
inline constexpr auto kVariantTypes = std::to_array<VariantTypeRow>({
    {vtBool, vtBool, 1},
    {vtChar, vtChar, 1},
    {vtUChar, vtUChar, 1},
    {vtSChar, vtSChar, 1},
    {vtShort, vtShort, 2},
    {vtUShort, vtUShort, 2},
    {vtUInt, vtUInt, 4},
    {vtInt, vtInt, 4},
    {vtInt64, vtInt64, 8},
    {vtFloat, vtFloat, 4},
    {vtDouble, vtDouble, 8},
    {vtString, vtString, kVariableSize},
    {vtWString, vtWString, kVariableSize},
    {vtBinaryData, vtBinaryData, kVariableSize},
    {vtBlobPtr, vtBlobPtr, kVariableSize},
    {vtFileTime, vtFileTime, 8},
    {vtDateTime, vtDateTime, 8},
    {vtReferencePointer, vtReferencePointer, 8},
    {vtGuid, vtGuid, 16},
    {vtLong, vtLong, 4},
    // Read, but never written: the platform reports and writes such a value as vtInt64 with the same bits.
    {vtUInt64, vtInt64, 8},
});
static_assert(kVariantTypes.size() == kVariantTypeCount);
static_assert([] {
  for (std::size_t i = 0; i < kVariantTypes.size(); ++i)
    if (kVariantTypes[i].tag != i) return false;
  return true;
}());

}  // namespace Kestrel
