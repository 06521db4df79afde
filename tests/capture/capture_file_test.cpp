/// The file: its bytes, cut and damaged captures, frames of any size.
#include <gtest/gtest.h>

#include <algorithm>

#include "capture/file_end.h"
#include "capture/test_captures.h"

namespace capture {
namespace {

/// TarnLiveStream_Start on thread 0x1234 returned 1 after 1.5 µs, at 1970-01-01 00:00:05.
const Bytes kStartCall = {
    0x0A, 0x0D, 0x0D, 0x0A, 0x34, 0,    0,    0,    0x4D, 0x3C, 0x2B, 0x1A, 1,    0, 0, 0,  // section header, 52 bytes
    0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 4,    0,    13,   0,                    // size unknown; application
    't',  'a',  'r',  'n',  ' ',  'r',  'e',  'c',  'o',  'r',  'd',  'e',  'r',  0, 0, 0,  //
    0,    0,    0,    0,    0x34, 0,    0,    0,                                            //
    1,    0,    0,    0,    0x2C, 0,    0,    0,    147,  0,    0,    0,    0,    0, 0, 0,  // interface: USER0
    2,    0,    7,    0,    'T',  'a',  'r',  'n',  'D',  'B',  'I',  0,    9,    0, 1, 0,
    9,    0,    0,    0,                                                                    // name; nanoseconds
    0,    0,    0,    0,    0x2C, 0,    0,    0,                                            //
    6,    0,    0,    0,    0x50, 0,    0,    0,    0,    0,    0,    0,                    // packet, 80 bytes
    0x01, 0,    0,    0,    0x00, 0xF2, 0x05, 0x2A, 0x30, 0,    0,    0,    0x30, 0, 0, 0,  // time; 48 bytes
    1,    48,   0,    2,    0,    1,    0,    0,    0x34, 0x12, 0,    0,    0,    0, 0, 0,  // header: call of row 2
    0xDC, 0x05, 0,    0,    0,    0,    0,    0,    0xCD, 0xAB, 0,    0,    0,    0, 0, 0,  // duration, stream
    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0, 0, 0,  // no body
    0x50, 0,    0,    0};
constexpr std::size_t kSectionStart = 52 + 44;

Bytes Numbered(std::size_t size) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 31 >> 3);
  return bytes;
}

Bytes WithFrames(std::initializer_list<std::size_t> bodies) {
  MemorySink sink;
  FrameWriter writer(sink);
  writer.WriteSectionStart();
  for (const std::size_t size : bodies) {
    const Bytes block = Numbered(size);
    FrameHeader header;
    header.event = FrameEvent::kBlock;
    FrameParts parts;
    parts.Add(PartKind::kBlock, std::as_bytes(std::span(block)));
    writer.WriteFrame(header, 1, parts);
  }
  return sink.bytes;
}

TEST(CaptureFile, ACallIsTheseBytes) {
  MemorySink sink;
  FrameWriter writer(sink);
  FrameHeader header;
  header.function = static_cast<std::uint8_t>(Function::kStart);
  header.thread = 0x1234;
  header.duration = 1500;
  header.stream = 0xABCD;
  ASSERT_TRUE(writer.WriteSectionStart());
  ASSERT_TRUE(writer.WriteFrame(header, 5'000'000'000, {}));
  EXPECT_EQ(sink.bytes, kStartCall);

  const ReadCapture read(kStartCall);
  ASSERT_EQ(read.frames.size(), 1U);
  EXPECT_TRUE(read.frames[0].IsCall(Function::kStart));
  EXPECT_EQ(read.frames[0].time, 5'000'000'000U);
  EXPECT_EQ(read.frames[0].GetStart(), 4'999'998'500U);
  EXPECT_EQ(read.frames[0].offset, kSectionStart);
  EXPECT_EQ(kFunctionNames[read.frames[0].header.function], "TarnLiveStream_Start");
}

TEST(CaptureFile, CutAtAnyByteItIsReadToItsLastWholeBlock) {
  const Bytes whole = WithFrames({0, 5, 300});
  std::vector<std::size_t> ends = {0, 52, kSectionStart};
  for (const std::size_t block : {0, 5, 300}) ends.push_back(ends.back() + 28 + 48 + 12 + (block + 3) / 4 * 4 + 4);
  ASSERT_EQ(whole.size(), ends.back());
  const auto file = std::filesystem::temp_directory_path() / "tarn_capture_cut.pcapng";
  for (std::size_t n = 0; n <= whole.size(); ++n) {
    SCOPED_TRACE(n);
    const std::size_t end = *std::prev(std::ranges::upper_bound(ends, n));
    const ReadCapture read(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(n)));
    EXPECT_EQ(read.frames.size(), static_cast<std::size_t>(std::ranges::count_if(ends, [&](std::size_t frameEnd) {
                return frameEnd > kSectionStart && frameEnd <= n;
              })));
    EXPECT_EQ(read.behindLastBlock, n - end);
    if (n > 0) {
      EXPECT_THROW(ReadCapture(Bytes(n, 'x')), CaptureError) << "a short file of another kind";
    }
    // A recording that goes on does so behind the last whole block.
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(whole.data()), static_cast<std::streamsize>(n));
    EXPECT_EQ(MendFileEnd(file), n == end ? FileEnd::kGood : n < 4 ? FileEnd::kNotOurs : FileEnd::kMended);
    EXPECT_EQ(std::filesystem::file_size(file), n < 4 ? n : end);
  }
  // Damage in front of whole blocks, and the other byte order: nothing is cut off.
  for (const auto& [offset, value] : {std::pair<std::size_t, std::uint8_t>(kSectionStart + 4, 0xFE), {8, 0x1A}}) {
    Bytes damaged(whole.begin(), whole.end() - 1);
    damaged[offset] = value;
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(damaged.data()), static_cast<std::streamsize>(damaged.size()));
    EXPECT_EQ(MendFileEnd(file), FileEnd::kNotOurs) << offset;
    EXPECT_EQ(std::filesystem::file_size(file), damaged.size());
  }
  std::filesystem::remove(file);
}

TEST(CaptureFile, AFrameOfAnySizeComesBackWhole) {
  constexpr std::size_t kFits = kLargestPacket - sizeof(FrameHeader) - sizeof(PartHead);
  struct Row {
    std::size_t size;
    std::uint64_t packets;
  };
  for (const Row row : {Row{0, 1}, {kFits, 1}, {kFits + 1, 2}, {600'000, 3}}) {
    SCOPED_TRACE(row.size);
    const ReadCapture read(WithFrames({row.size, 7}));
    ASSERT_EQ(read.frames.size(), 2U);
    EXPECT_EQ(read.packets, row.packets + 1);
    EXPECT_EQ(read.frames[1].number, row.packets + 1);
    const auto block = read.frames[0].Find(PartKind::kBlock);
    ASSERT_TRUE(block);
    EXPECT_EQ(Bytes(block->begin(), block->end()), Numbered(row.size));
  }
}

TEST(CaptureFile, AFrameWhosePiecesAreMissingIsCutAndTheNextOneIsWhole) {
  Bytes bytes = WithFrames({600'000, 7});
  const auto packetAt = [&](std::size_t offset) {
    return bytes.begin() + static_cast<std::ptrdiff_t>(kSectionStart + offset);
  };
  const std::size_t packet = 28 + kLargestPacket + 4;
  Bytes withoutFirst = bytes;
  withoutFirst.erase(withoutFirst.begin() + kSectionStart,
                     withoutFirst.begin() + static_cast<std::ptrdiff_t>(kSectionStart + packet));
  bytes.erase(packetAt(packet), packetAt(2 * packet));
  const ReadCapture read(bytes);
  ASSERT_EQ(read.frames.size(), 2U);
  EXPECT_TRUE(read.frames[0].IsCut());
  EXPECT_FALSE(read.frames[1].IsCut());
  EXPECT_EQ(ReadCapture(withoutFirst).frames.size(), 1U);
}

struct DamageRow {
  const char* name;
  std::size_t offset;
  std::uint8_t byte;
  const char* text;
};
class DamagedCapture : public testing::TestWithParam<DamageRow> {};

TEST_P(DamagedCapture, IsRefusedWithWhereAndWhat) {
  Bytes bytes = kStartCall;
  bytes[GetParam().offset] = GetParam().byte;
  try {
    const ReadCapture read(bytes);
    FAIL() << read.frames.size() << " frames";
  } catch (const CaptureError& error) {
    EXPECT_STREQ(error.what(), GetParam().text);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Table, DamagedCapture,
    testing::Values(
        DamageRow{"NoCapture", 0, 0x4D, "offset 0: expected a section header, 0x0a0d0d0a, found 0x0a0d0d4d"},
        DamageRow{"OtherByteOrder", 8, 0x1A, "offset 0: expected the byte order mark 0x1a2b3c4d, found 0x1a2b3c1a"},
        DamageRow{"LengthNoMultipleOf4", 4, 0x35, "offset 0: expected a block's length, found 53"},
        DamageRow{"LengthTooSmall", 100, 8, "offset 96: expected a block's length, found 8"},
        DamageRow{"LengthTooLarge", 103, 1, "offset 96: expected a block of at most 1048576 bytes, found 16777296"},
        DamageRow{"OtherLengthBehind", 172, 0x54,
                  "offset 96: expected the block's length 80 again at its end, found 84"},
        DamageRow{"PacketLargerThanBlock", 116, 0x31, "offset 96: expected a packet of at most 48 bytes, found 49"},
        DamageRow{"UnknownInterface", 104, 1, "offset 96: expected an interface below 1, found 1"},
        DamageRow{"NoResolution", 84, 0x7F, "offset 52: expected a resolution of time, found one that no clock has"}),
    [](const auto& row) { return row.param.name; });

struct SkipRow {
  const char* name;
  std::size_t offset;
  std::uint8_t byte;
};
class ForeignPacket : public testing::TestWithParam<SkipRow> {};

TEST_P(ForeignPacket, IsSkippedAndCounted) {
  Bytes bytes = kStartCall;
  bytes[GetParam().offset] = GetParam().byte;
  const ReadCapture read(bytes);
  EXPECT_EQ(read.frames.size(), 0U);
  EXPECT_EQ(read.skipped, 1U);
}

INSTANTIATE_TEST_SUITE_P(Table, ForeignPacket,
                         testing::Values(SkipRow{"OfAnotherLinkType", 60, 1}, SkipRow{"OfALaterVersion", 124, 2},
                                         SkipRow{"WithASmallHeader", 125, 47}, SkipRow{"WithAHeaderBeyondIt", 125, 49},
                                         SkipRow{"OfAnotherBlockType", 96, 5}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace capture
