#include "capture/capture_reader.h"

#include <algorithm>
#include <cstring>

#include "base/byte_order.h"
#include "base/hex_digits.h"

namespace capture {
namespace {

constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;
/// No section of the recorder has more than one; merged files have some.
constexpr std::size_t kMostInterfaces = 4096;
constexpr std::size_t kSectionFixedSize = 16;
constexpr std::size_t kInterfaceFixedSize = 8;
constexpr std::size_t kPacketFixedSize = sizeof(PacketHead) - kBlockHeadSize;
constexpr std::uint16_t kResolutionOption = 9;

/// Requires that the bytes reach so far.
template <class Number>
Number NumberAt(std::span<const std::uint8_t> bytes, std::size_t offset) {
  return Kestrel::LoadLittleEndian<Number>(bytes.data() + offset);
}

std::string Hex(std::uint32_t number) {
  std::string text = "0x";
  for (int shift = 28; shift >= 0; shift -= 4) text += Kestrel::kLowerHexDigits[number >> shift & 15];
  return text;
}

/// What if_tsresol means: a power of 10, or with the highest bit a power of 2. 0 where that is too large.
std::uint64_t UnitsPerSecond(std::uint8_t resolution) {
  const bool binary = (resolution & 0x80) != 0;
  const unsigned exponent = resolution & 0x7FU;
  if (binary) return exponent < 63 ? std::uint64_t{1} << exponent : 0;
  std::uint64_t units = 1;
  for (unsigned i = 0; i < exponent && units != 0; ++i) units = units > UINT64_MAX / 10 ? 0 : units * 10;
  return units;
}

std::uint64_t Nanoseconds(std::uint64_t time, std::uint64_t unitsPerSecond) {
  const std::uint64_t rest = time % unitsPerSecond;
  const auto part = static_cast<std::uint64_t>(static_cast<double>(rest) * 1e9 / static_cast<double>(unitsPerSecond));
  const bool exact = kNanosecondsPerSecond % unitsPerSecond == 0;
  return time / unitsPerSecond * kNanosecondsPerSecond +
         (exact ? rest * (kNanosecondsPerSecond / unitsPerSecond) : part);
}

/// Takes numbers and texts from the front of a payload; false where bytes are missing.
class PayloadCursor {
 public:
  explicit PayloadCursor(std::span<const std::uint8_t> rest) : rest_(rest) {}

  bool Take(std::size_t size, std::span<const std::uint8_t>& taken) {
    if (size > rest_.size()) return false;
    taken = rest_.first(size);
    rest_ = rest_.subspan(size);
    return true;
  }
  template <class Number>
  bool Take(Number& number) {
    std::span<const std::uint8_t> bytes;
    if (!Take(sizeof number, bytes)) return false;
    number = Kestrel::LoadLittleEndian<Number>(bytes.data());
    return true;
  }
  template <class Unit>
  bool Take(std::basic_string<Unit>& text) {
    std::uint32_t size = 0;
    std::span<const std::uint8_t> bytes;
    if (!Take(size) || !Take(size, bytes)) return false;
    text.resize(size / sizeof(Unit));
    Kestrel::LoadLittleEndian(bytes.data(), std::span(text));
    return true;
  }

 private:
  std::span<const std::uint8_t> rest_;
};

}  // namespace

std::optional<std::span<const std::uint8_t>> Frame::Find(PartKind kind) const {
  std::span<const std::uint8_t> rest = body;
  while (rest.size() >= sizeof(PartHead)) {
    const auto head = NumberAt<PartHead>(rest, 0);
    rest = rest.subspan(sizeof head);
    const std::uint64_t length = std::uint64_t{head.lengthHigh} << 32 | head.lengthLow;
    const auto here = static_cast<std::size_t>(std::min<std::uint64_t>(length, rest.size()));
    if (head.kind == kind) return rest.first(here);
    rest = rest.subspan(here);
  }
  return std::nullopt;
}

std::vector<std::uint64_t> Frame::GetArguments() const {
  const auto payload = Find(PartKind::kArguments).value_or(std::span<const std::uint8_t>());
  std::vector<std::uint64_t> arguments(payload.size() / sizeof(std::uint64_t));
  Kestrel::LoadLittleEndian(payload.data(), std::span(arguments));
  return arguments;
}

std::optional<ErrorRecord> ReadErrorRecord(std::span<const std::uint8_t> payload) {
  PayloadCursor cursor(payload);
  ErrorRecord record;
  const bool whole = cursor.Take(record.errorClass) && cursor.Take(record.errorCode) && cursor.Take(record.className) &&
                     cursor.Take(record.description) && cursor.Take(record.additionalText);
  return whole ? std::optional(record) : std::nullopt;
}

bool CaptureReader::Next(Frame& frame) {
  Packet packet;
  do {
    if (held_) {
      packet = *held_;
      held_.reset();
    } else if (!NextPacket(packet)) {
      return false;
    }
    if (packet.header.bodyOffset != 0) ++skipped_;
  } while (packet.header.bodyOffset != 0);  // a piece whose beginning is missing
  frame.header = packet.header;
  frame.number = packets_;
  frame.offset = packet.offset;
  frame.time = packet.time;
  frame.section = packet.section;
  frame.body.clear();
  // A packet may hold more than its frame says; those bytes belong to nothing.
  const std::uint64_t most = std::min<std::uint64_t>(kLargestBody, frame.header.bodySize);
  const auto take = [&frame, most](std::span<const std::uint8_t> bytes) {
    const auto taken = bytes.first(std::min<std::size_t>(most - frame.body.size(), bytes.size()));
    frame.body.insert(frame.body.end(), taken.begin(), taken.end());
  };
  take(packet.bytes);
  std::uint64_t seen = packet.bytes.size();
  while (seen < frame.header.bodySize) {
    if (!NextPacket(packet)) break;
    if (packet.header.bodyOffset != seen || packet.header.bodySize != frame.header.bodySize ||
        packet.header.thread != frame.header.thread) {
      held_ = packet;  // the bytes stay in block_ until the next block is read
      break;
    }
    seen += packet.bytes.size();
    take(packet.bytes);
  }
  return true;
}

bool CaptureReader::NextPacket(Packet& packet) {
  while (!ended_) {
    blockOffset_ = nextOffset_;
    std::uint32_t head[2];
    const std::size_t got = source_.Read(head, sizeof head);
    const std::uint32_t firstType = kSectionHeader;
    if (blockOffset_ == 0 && std::memcmp(head, &firstType, std::min(got, sizeof firstType)) != 0)
      Refuse("a section header, " + Hex(kSectionHeader), got < sizeof firstType ? "other bytes" : Hex(head[0]));
    if (got < sizeof head) {
      behindLastBlock_ = got;
      ended_ = true;
      break;
    }
    const auto [type, length] = head;
    if (length < kBlockHeadSize + kBlockTailSize || length % 4 != 0) Refuse("a block's length", std::to_string(length));
    const bool known = type == kSectionHeader || type == kInterfaceDescription || type == kEnhancedPacket;
    if (known && length > kLargestBlock)
      Refuse("a block of at most " + std::to_string(kLargestBlock) + " bytes", std::to_string(length));
    if (!(known ? ReadBlock(length) : SkipBlock(length))) {
      ended_ = true;
      break;
    }
    nextOffset_ = blockOffset_ + length;
    if (type == kSectionHeader) BeginSection();
    if (type == kInterfaceDescription) AddInterface();
    if (type == kEnhancedPacket && ReadPacket(packet)) return true;
  }
  return false;
}

bool CaptureReader::ReadBlock(std::uint32_t length) {
  block_.resize(length - kBlockHeadSize);
  const std::size_t got = source_.Read(block_.data(), block_.size());
  if (got < block_.size()) {
    behindLastBlock_ = kBlockHeadSize + got;
    return false;
  }
  block_.resize(block_.size() - kBlockTailSize);
  const auto again = Kestrel::LoadLittleEndian<std::uint32_t>(block_.data() + block_.size());
  if (again != length)
    Refuse("the block's length " + std::to_string(length) + " again at its end", std::to_string(again));
  return true;
}

bool CaptureReader::SkipBlock(std::uint32_t length) {
  ++skipped_;
  std::uint8_t room[4096];
  std::uint64_t left = length - kBlockHeadSize;
  while (left > 0) {
    const auto some = static_cast<std::size_t>(std::min<std::uint64_t>(left, sizeof room));
    const std::size_t got = source_.Read(room, some);
    left -= got;
    if (got < some) {
      behindLastBlock_ = length - left;
      return false;
    }
  }
  return true;
}

void CaptureReader::BeginSection() {
  if (block_.size() < kSectionFixedSize) Refuse("a section header of 28 bytes", std::to_string(block_.size()));
  const auto order = NumberAt<std::uint32_t>(block_, 0);
  if (order != kByteOrderMagic) Refuse("the byte order mark " + Hex(kByteOrderMagic), Hex(order));
  interfaces_.clear();
  ++sections_;
}

void CaptureReader::AddInterface() {
  if (block_.size() < kInterfaceFixedSize) Refuse("an interface of 20 bytes", std::to_string(block_.size()));
  if (interfaces_.size() == kMostInterfaces) Refuse("no more than 4096 interfaces", "another one");
  Interface added;
  added.isOurs = NumberAt<std::uint16_t>(block_, 0) == kLinkTypeUser0;
  auto options = std::span<const std::uint8_t>(block_).subspan(kInterfaceFixedSize);
  while (options.size() >= 4) {
    const auto code = NumberAt<std::uint16_t>(options, 0);
    const std::size_t length = NumberAt<std::uint16_t>(options, 2);
    if (code == 0 || length > options.size() - 4) break;
    if (code == kResolutionOption && length == 1) added.unitsPerSecond = UnitsPerSecond(options[4]);
    options = options.subspan(std::min(options.size(), 4 + (length + 3) / 4 * 4));
  }
  if (added.unitsPerSecond == 0) Refuse("a resolution of time", "one that no clock has");
  interfaces_.push_back(added);
}

bool CaptureReader::ReadPacket(Packet& packet) {
  ++packets_;
  if (block_.size() < kPacketFixedSize) Refuse("a packet of 32 bytes", std::to_string(block_.size()));
  const auto interfaceNumber = NumberAt<std::uint32_t>(block_, 0);
  const std::size_t captured = NumberAt<std::uint32_t>(block_, 12);
  const std::size_t room = block_.size() - kPacketFixedSize;
  if (captured > room) Refuse("a packet of at most " + std::to_string(room) + " bytes", std::to_string(captured));
  if (interfaceNumber >= interfaces_.size())
    Refuse("an interface below " + std::to_string(interfaces_.size()), std::to_string(interfaceNumber));
  const Interface& from = interfaces_[interfaceNumber];
  const auto bytes = std::span<const std::uint8_t>(block_).subspan(kPacketFixedSize, captured);
  if (!from.isOurs || captured < sizeof(FrameHeader) || bytes[0] != kVersion || bytes[1] < sizeof(FrameHeader) ||
      bytes[1] > captured) {
    ++skipped_;
    return false;
  }
  packet.header = NumberAt<FrameHeader>(bytes, 0);
  packet.bytes = bytes.subspan(packet.header.headerSize);
  const std::uint64_t time =
      std::uint64_t{NumberAt<std::uint32_t>(block_, 4)} << 32 | NumberAt<std::uint32_t>(block_, 8);
  packet.time = Nanoseconds(time, from.unitsPerSecond);
  packet.offset = blockOffset_;
  packet.section = sections_;
  return true;
}

void CaptureReader::Refuse(const std::string& expected, const std::string& found) const {
  throw CaptureError("offset " + std::to_string(blockOffset_) + ": expected " + expected + ", found " + found);
}

}  // namespace capture
