#include "capture/frame_writer.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string_view>

#include "base/byte_order.h"  // asserts that numbers have the byte order of the file

namespace capture {
namespace {

template <class Value>
platform::BytePiece BytesOf(const Value& value) {
  return std::as_bytes(std::span(&value, 1));
}

constexpr std::byte kPadding[4] = {};

/// Both blocks that a section begins with.
struct SectionStart {
  std::uint32_t sectionType = kSectionHeader;
  std::uint32_t sectionLength = 52;
  std::uint32_t byteOrder = kByteOrderMagic;
  std::uint16_t major = 1;
  std::uint16_t minor = 0;
  std::uint32_t size[2] = {0xFFFFFFFF, 0xFFFFFFFF};  // not known: the section is still growing
  std::uint16_t applicationOption = 4;               // shb_userappl
  std::uint16_t applicationLength = 13;
  char application[16] = "tarn recorder";
  std::uint32_t endOfSectionOptions = 0;
  std::uint32_t sectionLengthAgain = 52;
  std::uint32_t interfaceType = kInterfaceDescription;
  std::uint32_t interfaceLength = 44;
  std::uint16_t linkType = kLinkTypeUser0;
  std::uint16_t reserved = 0;
  std::uint32_t snapLength = 0;
  std::uint16_t nameOption = 2;  // if_name
  std::uint16_t nameLength = 7;
  char name[8] = "TarnDBI";
  std::uint16_t resolutionOption = 9;  // if_tsresol
  std::uint16_t resolutionLength = 1;
  std::uint8_t resolution[4] = {9};  // 10 to the power of -9
  std::uint32_t endOfOptions = 0;
  std::uint32_t interfaceLengthAgain = 44;
};
static_assert(sizeof(SectionStart) == 52 + 44);

}  // namespace

void FrameParts::Add(PartKind kind, std::span<const std::byte> payload) {
  if (payload.empty() && kind != PartKind::kReply && kind != PartKind::kBlock) return;
  const std::uint64_t length = payload.size();
  heads_[count_] = {kind, static_cast<std::uint32_t>(length), static_cast<std::uint32_t>(length >> 32)};
  pieces_[2 * count_] = BytesOf(heads_[count_]);
  pieces_[2 * count_ + 1] = payload;
  ++count_;
  size_ += sizeof(PartHead) + length;
}

void FrameParts::AddEncoded(std::span<const std::byte> parts) {
  pieces_[2 * count_] = parts;
  pieces_[2 * count_ + 1] = {};
  ++count_;
  size_ += parts.size();
}

bool FrameWriter::WriteSectionStart() {
  constexpr SectionStart start;
  const platform::BytePiece piece = BytesOf(start);
  return sink_.Append({&piece, 1});
}

bool FrameWriter::WriteFrame(FrameHeader header, std::uint64_t time, const FrameParts& parts) {
  constexpr std::uint64_t kMostOfAPacket = kLargestPacket - sizeof(FrameHeader);
  header.bodySize = parts.GetSize();
  std::array<platform::BytePiece, 2 * FrameParts::kMost> left{};
  std::ranges::copy(parts.GetPieces(), left.begin());
  std::size_t next = 0;
  do {
    // As many pieces as fit into a packet; the last one may have to be cut.
    std::array<platform::BytePiece, 2 * FrameParts::kMost> packet{};
    std::size_t count = 0;
    std::uint64_t room = std::min(kMostOfAPacket, header.bodySize - header.bodyOffset);
    const std::uint64_t size = room;
    while (room > 0) {
      platform::BytePiece& piece = left[next];
      packet[count++] = piece.first(static_cast<std::size_t>(std::min<std::uint64_t>(room, piece.size())));
      room -= packet[count - 1].size();
      piece = piece.subspan(packet[count - 1].size());
      if (piece.empty()) ++next;
    }
    if (!WritePacket(header, time, {packet.data(), count})) return false;
    header.bodyOffset += size;
  } while (header.bodyOffset < header.bodySize);
  return true;
}

bool FrameWriter::WritePacket(const FrameHeader& header, std::uint64_t time,
                              std::span<const platform::BytePiece> pieces) {
  std::size_t size = sizeof header;
  for (const platform::BytePiece piece : pieces) size += piece.size();
  const std::size_t padding = (4 - size % 4) % 4;

  PacketHead head;
  head.timeHigh = static_cast<std::uint32_t>(time >> 32);
  head.timeLow = static_cast<std::uint32_t>(time);
  head.capturedSize = head.originalSize = static_cast<std::uint32_t>(size);
  head.blockLength = static_cast<std::uint32_t>(sizeof head + size + padding + kBlockTailSize);

  std::array<platform::BytePiece, 2 * FrameParts::kMost + 4> all{};
  std::size_t count = 0;
  all[count++] = BytesOf(head);
  all[count++] = BytesOf(header);
  for (const platform::BytePiece piece : pieces) all[count++] = piece;
  all[count++] = platform::BytePiece(kPadding).first(padding);
  all[count++] = BytesOf(head.blockLength);
  return sink_.Append({all.data(), count});
}

}  // namespace capture
