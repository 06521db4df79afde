#include "simulator/record_fields.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <limits>

#include "base/hex_digits.h"

namespace simulator {
namespace {

bool IsMac(std::string_view text) {
  constexpr std::size_t kLength = 17;
  if (text.size() != kLength) return false;
  for (std::size_t i = 0; i < kLength; ++i) {
    const bool asExpected =
        i % 3 == 2 ? text[i] == ':' : Kestrel::kUpperHexDigits.find(text[i]) != std::string_view::npos;
    if (!asExpected) return false;
  }
  return true;
}

/// Four numbers up to 255 with dots between them.
bool IsIpAddress(std::string_view text) {
  const char* position = text.data();
  const char* const end = position + text.size();
  for (int part = 0; part < 4; ++part) {
    if (part > 0 && (position == end || *position++ != '.')) return false;
    std::uint8_t number = 0;
    const auto [next, error] = std::from_chars(position, end, number);
    if (error != std::errc()) return false;
    position = next;
  }
  return position == end;
}

bool ReadFlag(const JsonCursor& value) {
  return value.Flag();
}

std::uint8_t ReadCode(const JsonCursor& value) {
  return static_cast<std::uint8_t>(value.Number(0, std::numeric_limits<std::uint8_t>::max()));
}

std::string ReadText(const JsonCursor& value) {
  return value.Text();
}

Tarn::CameraFinding::TextList ReadTexts(const JsonCursor& value) {
  Tarn::CameraFinding::TextList texts;
  for (std::size_t i = 0; i < value.ElementCount(); ++i) texts.push_back(value.Child(i).Text());
  return texts;
}

/// An IP address; an empty text means that there is none.
std::string ReadAddress(const JsonCursor& value) {
  const std::string& text = value.Text();
  if (!text.empty() && !IsIpAddress(text)) value.Fail("must be an IP address such as 10.0.0.5, or empty");
  return text;
}

Tarn::CameraFinding::TextList ReadAddresses(const JsonCursor& value) {
  Tarn::CameraFinding::TextList addresses;
  for (std::size_t i = 0; i < value.ElementCount(); ++i) addresses.push_back(ReadAddress(value.Child(i)));
  return addresses;
}

/// A number, or a text with its hexadecimal form, because that form is easier to read for a mask.
template <class Mask>
Mask ReadMask(const JsonCursor& value) {
  constexpr Mask kHighest = std::numeric_limits<Mask>::max();
  if (value.Node().kind != JsonNode::Kind::kText) return static_cast<Mask>(value.Number(0, kHighest));
  const std::string& text = value.Text();
  Mask mask = 0;
  const char* const end = text.data() + text.size();
  if (text.starts_with("0x")) {
    const auto [next, error] = std::from_chars(text.data() + 2, end, mask, 16);
    if (error == std::errc() && next == end) return mask;
  }
  value.Fail("must be a number up to " + std::to_string(kHighest) + ", or its hexadecimal form such as \"0x40\"");
}

template <auto kMember, auto kRead>
RecordChange Change(const JsonCursor& value) {
  return [read = kRead(value)](CameraRecord& record) { record.*kMember = read; };
}

struct RecordMemberRow {
  std::string_view key;
  RecordChange (*read)(const JsonCursor& value);
};

constexpr auto kRecordMembers = std::to_array<RecordMemberRow>({
    {"user", Change<&CameraRecord::loginUser, ReadText>},
    {"password", Change<&CameraRecord::loginPassword, ReadText>},
    {"ctt", Change<&CameraRecord::ctt, ReadCode>},
    {"nip", Change<&CameraRecord::nip, ReadAddress>},
    {"ni2", Change<&CameraRecord::ni2, ReadAddresses>},
    {"ip", Change<&CameraRecord::ip, ReadAddress>},
    {"subnetMask", Change<&CameraRecord::subnetMask, ReadAddress>},
    {"gateway", Change<&CameraRecord::gateway, ReadAddress>},
    {"dhcpMode", Change<&CameraRecord::dhcpMode, ReadCode>},
    {"icb", Change<&CameraRecord::icb, ReadFlag>},
    {"gcb", Change<&CameraRecord::gcb, ReadFlag>},
    {"rbl", Change<&CameraRecord::rbl, ReadFlag>},
    {"pcl", Change<&CameraRecord::pcl, ReadFlag>},
    {"deviceFlags", Change<&CameraRecord::deviceFlags, ReadMask<std::uint32_t>>},
    {"vendorTypeMask", Change<&CameraRecord::vendorTypeMask, ReadMask<std::uint64_t>>},
    {"plugins", Change<&CameraRecord::pluginNames, ReadTexts>},
    {"vendor", Change<&CameraRecord::vendorDisplayName, ReadText>},
    {"model", Change<&CameraRecord::model, ReadText>},
    {"firmware", Change<&CameraRecord::firmwareVersion, ReadText>},
    {"serial", Change<&CameraRecord::serialNumber, ReadText>},
});

}  // namespace

std::optional<RecordChange> ReadRecordMember(std::string_view key, const JsonCursor& value) {
  for (const RecordMemberRow& row : kRecordMembers)
    if (row.key == key) return row.read(value);
  return std::nullopt;
}

std::vector<std::string_view> RecordMemberKeys() {
  std::vector<std::string_view> keys;
  for (const RecordMemberRow& row : kRecordMembers) keys.push_back(row.key);
  return keys;
}

std::string ReadMac(const JsonCursor& value) {
  std::string mac = NormalizedMac(value.Text());
  if (!IsMac(mac)) value.Fail("must be a hardware address such as 00:40:8C:12:34:56");
  return mac;
}

std::string NormalizedMac(std::string mac) {
  std::transform(mac.begin(), mac.end(), mac.begin(),
                 [](char c) { return c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c; });
  return mac;
}

}  // namespace simulator
