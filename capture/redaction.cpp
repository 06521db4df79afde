#include "capture/redaction.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <vector>

#include "base/byte_order.h"
#include "protocol/camera_record.h"
#include "valuelist/variant_types.h"

namespace capture {
namespace {

constexpr std::uint8_t kMask = '*';
constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The bytes that an entry's name is written with: tag, length, characters; the terminator may be anything.
struct NamePattern {
  std::string_view bytes;
  std::size_t size;  ///< with the terminator
};
using namespace std::string_view_literals;
constexpr auto kNamePatterns = std::to_array<NamePattern>({
    {"\x0B\x04\0\0\0LUN"sv, 9},
    {"\x0B\x04\0\0\0LPD"sv, 9},
    {"\x0C\x08\0\0\0L\0U\0N\0"sv, 13},
    {"\x0C\x08\0\0\0L\0P\0D\0"sv, 13},
});
/// Where the 'L' stands in each pattern; the search looks for it first.
constexpr std::size_t kAnchor = 5;
static_assert(std::ranges::all_of(kNamePatterns, [](const NamePattern& row) { return row.bytes[kAnchor] == 'L'; }));

const NamePattern* PatternAt(std::span<const std::uint8_t> bytes, std::size_t at) {
  for (const NamePattern& pattern : kNamePatterns)
    if (pattern.bytes.size() <= bytes.size() - at &&
        std::memcmp(bytes.data() + at, pattern.bytes.data(), pattern.bytes.size()) == 0)
      return &pattern;
  return nullptr;
}

/// Calls visit with the offset of the record behind each credential's name, until visit returns true. Returns whether
/// it did.
template <class Visit>
bool VisitCredentials(std::span<const std::uint8_t> bytes, Visit visit) {
  const std::uint8_t* const begin = bytes.data();
  std::size_t from = kAnchor;
  while (from < bytes.size()) {
    const void* const found = std::memchr(begin + from, 'L', bytes.size() - from);
    if (!found) return false;
    from = static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - begin) + 1;
    const NamePattern* const pattern = PatternAt(bytes, from - 1 - kAnchor);
    if (pattern && visit(std::min(bytes.size(), from - 1 - kAnchor + pattern->size))) return true;
  }
  return false;
}

bool IsUnset(std::span<const std::uint8_t> value, std::size_t unitSize) {
  constexpr std::u16string_view kUnset = Tarn::CameraFinding::UnsetCredential;
  if (value.size() != kUnset.size() * unitSize) return false;
  for (std::size_t i = 0; i < kUnset.size(); ++i)
    if (value[i * unitSize] != kUnset[i] || (unitSize == 2 && value[2 * i + 1] != 0)) return false;
  return true;
}

/// Masks the value of the record at the front, as far as its bytes are there. Returns whether it was a secret.
bool MaskRecord(std::span<std::uint8_t> record) {
  if (record.empty()) return false;
  const std::uint8_t tag = record[0];
  std::span<std::uint8_t> value = record.subspan(1);
  std::size_t length = 0;
  if (tag < Kestrel::kVariantTypeCount && Kestrel::kVariantTypes[tag].fixedSize != Kestrel::kVariableSize) {
    length = static_cast<std::size_t>(Kestrel::kVariantTypes[tag].fixedSize);
  } else {
    // An unknown tag is read as one with a length, because it is better to mask too much than too little.
    if (value.size() < sizeof(std::uint32_t)) return false;
    length = Kestrel::LoadLittleEndian<std::uint32_t>(value.data());
    value = value.subspan(sizeof(std::uint32_t));
  }
  const std::size_t unitSize = tag == Kestrel::vtWString ? 2 : 1;
  const bool isText = tag == Kestrel::vtString || tag == Kestrel::vtWString;
  const bool whole = length <= value.size();
  value = value.first(std::min(length, value.size()));
  if (whole && isText) value = value.first(value.size() - std::min(value.size(), unitSize));
  if (value.empty() || IsUnset(value, unitSize)) return false;
  for (std::size_t i = 0; i < value.size(); ++i) value[i] = i % unitSize == 0 ? kMask : std::uint8_t{0};
  return true;
}

/// The six bits that a base64 digit stands for; -1 for any other character.
int DigitOf(std::uint32_t unit) {
  const char* const found = unit > 0 && unit < 0x80 ? std::strchr(kAlphabet, static_cast<int>(unit)) : nullptr;
  return found ? static_cast<int>(found - kAlphabet) : -1;
}

/// Where the digits of a base64 text stand, in their order. Line ends are left out.
std::vector<std::size_t> FindDigits(std::span<const std::uint8_t> message, EmbeddedText text) {
  std::vector<std::size_t> places;
  places.reserve(message.size() / text.unitSize);
  for (std::size_t at = text.offset; at + text.unitSize <= message.size(); at += text.unitSize) {
    const std::uint32_t unit = message[at] | (text.unitSize == 2 ? std::uint32_t{message[at + 1]} << 8 : 0U);
    if (unit == '\r' || unit == '\n') continue;
    if (DigitOf(unit) < 0) break;
    places.push_back(at);
  }
  return places;
}

}  // namespace

EmbeddedText TextOfReply(std::span<const std::uint8_t> reply) {
  if (reply.empty()) return {0, 0};
  if (reply[0] == Kestrel::vtWString) return {5, 2};
  return {5, reply[0] == Kestrel::vtString ? std::size_t{1} : 0};
}

bool RedactPart(PartKind kind, std::span<std::uint8_t> payload) {
  switch (kind) {
    case PartKind::kRequest:
      return RedactText(payload, kTextOfRequest);
    case PartKind::kReply:
      return RedactText(payload, TextOfReply(payload));
    case PartKind::kBlock:
      return RedactBinary(payload);
    default:
      return false;
  }
}

bool RedactBody(std::span<std::uint8_t> body) {
  bool any = false;
  while (body.size() >= sizeof(PartHead)) {
    const auto head = Kestrel::LoadLittleEndian<PartHead>(body.data());
    body = body.subspan(sizeof head);
    const std::uint64_t length = std::uint64_t{head.lengthHigh} << 32 | head.lengthLow;
    const auto here = static_cast<std::size_t>(std::min<std::uint64_t>(length, body.size()));
    any = RedactPart(head.kind, body.first(here)) || any;
    body = body.subspan(here);
  }
  return any;
}

bool MayHoldCredentials(std::span<const std::uint8_t> bytes) {
  return VisitCredentials(bytes, [](std::size_t) { return true; });
}

bool RedactBinary(std::span<std::uint8_t> bytes) {
  bool any = false;
  VisitCredentials(bytes, [&](std::size_t record) {
    any = MaskRecord(bytes.subspan(record)) || any;
    return false;
  });
  return any;
}

bool RedactText(std::span<std::uint8_t> message, EmbeddedText text) {
  if (text.unitSize == 0 || text.offset > message.size()) return false;
  const std::vector<std::size_t> digits = FindDigits(message, text);
  // A group of two or three digits at the end gives one or two bytes.
  std::vector<std::uint8_t> bytes(digits.size() * 6 / 8 + 1);
  for (std::size_t i = 0; i < digits.size(); ++i) {
    const auto bits = static_cast<unsigned>(DigitOf(message[digits[i]])) << 10 >> i * 6 % 8;
    bytes[i * 6 / 8] = static_cast<std::uint8_t>(bytes[i * 6 / 8] | bits >> 8);
    if (i * 6 / 8 + 1 < bytes.size()) bytes[i * 6 / 8 + 1] = static_cast<std::uint8_t>(bits);
  }
  const std::vector<std::uint8_t> before = bytes;
  if (!RedactBinary(bytes)) return false;
  const auto digitOf = [](const std::vector<std::uint8_t>& from, std::size_t i) {
    const std::size_t at = i * 6 / 8;
    const unsigned pair = unsigned{from[at]} << 8 | (at + 1 < from.size() ? from[at + 1] : 0U);
    return pair << i * 6 % 8 >> 10 & 63U;
  };
  for (std::size_t i = 0; i < digits.size(); ++i)
    if (digitOf(bytes, i) != digitOf(before, i))
      message[digits[i]] = static_cast<std::uint8_t>(kAlphabet[digitOf(bytes, i)]);
  return true;
}

}  // namespace capture
