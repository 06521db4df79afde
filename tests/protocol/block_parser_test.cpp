#include "protocol/block_parser.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "fakes/fake_debugger.h"
#include "protocol/block_format.h"
#include "protocol/recording_wizard.h"
#include "valuelist/buffer_pool.h"

namespace Tarn::CameraFinding {
namespace {

/// Writes a block chunk by chunk.
class Block {
 public:
  Block& Chunk(std::uint32_t tag, std::uint64_t length, const Bytes& payload = {}) {
    Number(tag, 4);
    Number(length, 8);
    bytes_.insert(bytes_.end(), payload.begin(), payload.end());
    return *this;
  }
  Block& Raw(std::uint32_t tag, const Bytes& payload) { return Chunk(tag, payload.size(), payload); }
  /// The length of a text chunk is not used, so it is wrong here.
  Block& Text(std::uint32_t tag, std::string_view text) {
    Bytes payload = {0x0C, static_cast<std::uint8_t>(text.size() * 2 + 2), 0, 0, 0};
    for (const char c : text) payload.insert(payload.end(), {static_cast<std::uint8_t>(c), 0});
    payload.insert(payload.end(), {0, 0});
    return Chunk(tag, 0, payload);
  }
  Block& Values(std::uint64_t count, std::uint64_t size, const std::vector<std::uint64_t>& values) {
    Number(ctValues, 4);
    Number(16 + values.size() * 8, 8);
    Number(count, 8);
    Number(size, 8);
    for (const std::uint64_t value : values) Number(value, 8);
    return *this;
  }
  Block& Number(std::uint64_t value, int size) {
    for (int i = 0; i < size; ++i) bytes_.push_back(static_cast<std::uint8_t>(value >> 8 * i));
    return *this;
  }
  operator Bytes() const { return bytes_; }

 private:
  Bytes bytes_;
};

class FinderBlock : public testing::Test {
 protected:
  FinderBlock() { fakes::ClearDebuggerLines(); }

  std::string Delivered(std::uint32_t type, const Bytes& bytes) {
    wizard_.delivered.clear();
    block_ = Kestrel::CreateBuffer(bytes.data(), bytes.size());
    ParseFinderBlock(current_, *block_, type);
    return wizard_.delivered;
  }

  RecordingWizard wizard_;
  CurrentWizard current_{&wizard_};
  Kestrel::ReferencePointer<Kestrel::Buffer> block_;
};

const Bytes kPicture = {1, 2, 3, 4};
/// A list of one record with two of its keys, the mask in a byte: not canonical.
constexpr char kShortRecord[] =
    "VLIS\x0B\1\0\0\0\0\1\0\0\0\x0B\x0F\0\0\0CAMERAINFOLIST\0\x0D\x31\0\0\0\xFF\x45\x43\x42\1\0\0\0"
    "VLIS\x0B\1\0\0\0\0\2\0\0\0\x0B\4\0\0\0MAC\0\x0B\2\0\0\0m\0\x0B\4\0\0\0CVT\0\2\1";
constexpr std::uint64_t kMost = ~std::uint64_t{0};

TEST_F(FinderBlock, IsDeliveredOnlyWhenItIsWhole) {
  const struct {
    const char* name;
    std::uint32_t type;
    Bytes block;
    const char* delivered;
  } rows[] = {
      {"picture without an end mark", 1, Block().Text(5, "c").Raw(6, kPicture), "c picture 4"},
      {"picture before the text", 1, Block().Raw(6, kPicture).Text(5, "c").Number(0, 4), "c picture 4"},
      {"later text and picture win", 1, Block().Text(5, "a").Raw(6, {}).Text(5, "c").Raw(6, kPicture), "c picture 4"},
      {"empty picture", 1, Block().Text(5, "c").Raw(6, {}), "c picture 0"},
      {"empty text", 1, Block().Text(5, "").Raw(6, kPicture), ""},
      {"no picture", 1, Block().Text(5, "c"), ""},
      {"what stands behind the end", 1, Block().Text(5, "c").Number(0, 4).Raw(6, kPicture), ""},
      {"one byte before a tag", 1, Block().Text(5, "c").Raw(6, kPicture).Number(0, 1), ""},
      {"cut in a length", 1, Block().Text(5, "c").Raw(6, kPicture).Number(6, 4).Number(0, 7), ""},
      {"picture cut", 1, Block().Text(5, "c").Chunk(6, 5, kPicture), ""},
      {"length that wraps", 1, Block().Text(5, "c").Chunk(6, kMost, kPicture), ""},
      {"unknown chunk with a length that wraps", 1, Block().Text(5, "c").Raw(6, kPicture).Chunk(99, kMost), ""},
      {"values of two chunks", 2, Block().Values(2, 8, {1, 2}).Text(5, "c").Values(1, 8, {3}), "c values 1 2 3"},
      {"fewer values than bytes", 2, Block().Text(5, "c").Values(1, 8, {1, 2}), "c values 1"},
      {"more values than bytes", 2, Block().Text(5, "c").Values(3, 8, {1, 2}), ""},
      {"count that wraps", 2, Block().Text(5, "c").Values(kMost / 8 + 2, 8, {1}), ""},
      {"no values", 2, Block().Text(5, "c").Values(0, 8, {}), ""},
      {"values cut in their head", 2, Block().Text(5, "c").Values(1, 8, {1}).Raw(7, Bytes(15)), ""},
      {"type 0", 0, Block().Text(5, "c").Raw(6, kPicture), ""},
      {"camera without an address", 3, Block().Chunk(12, 0, {9}), ""},
      {"record of another kind is skipped", 3, Block().Text(5, "m").Raw(2, {'V', 'L'}).Chunk(12, 0, {9}),
       "||||||m|&!*KVMR*9%|&!*KVMR*9%|UNKNOWN||100009|0|0|0 kind 3 type 0"},
      {"record of two keys", 3, Block().Raw(1, Bytes(kShortRecord, std::end(kShortRecord) - 1)),
       "||||||m|&!*KVMR*9%|&!*KVMR*9%|UNKNOWN||100002|3|0|1 kind 3 type 3"},
      {"damaged record", 3, Block().Text(5, "m").Raw(1, {'V', 'L', 'I', 'T'}), ""},
      {"assembled: the length behind the code is skipped too", 7,
       Block().Text(10, "Sony IPC").Chunk(12, 2, {9, 0xAA, 0xBB}).Text(8, "i").Text(9, "v").Text(10, "Axis IPC"),
       "v|i||||v|UNKNOWN|||Sony IPC|v|010009|0|131072|0 kind 3 type 1"},
      {"assembled without a plug-in", 7, Block().Text(5, "m"), "||||||m|||UNKNOWN||010002|0|131072|0 kind 3 type 0"},
      {"gone: a record chunk is nothing here", 8, Block().Raw(1, {1, 2}).Text(5, "m"),
       "||||||m|&!*KVMR*9%|&!*KVMR*9%|UNKNOWN||100002|24|0|18446744073709551615 kind 4 type 24"},
      {"type 9", 9, Block().Text(5, "m"), ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(Delivered(row.type, row.block), row.delivered);
  }
  EXPECT_EQ(fakes::NarrowDebuggerLines().size(), 0U);
}

TEST_F(FinderBlock, HandsThePictureOverInPlace) {
  const Bytes bytes = Block().Text(5, "c").Raw(6, kPicture);
  Delivered(1, bytes);
  EXPECT_EQ(wizard_.lastPicture, block_->GetData() + bytes.size() - kPicture.size());
}

TEST_F(FinderBlock, ReportsValuesOfAnotherSizeAndAWizardThatThrowsAtValues) {
  EXPECT_EQ(Delivered(2, Block().Text(5, "c").Values(9, 4, {1}).Values(1, 8, {2})), "c values 2");
  EXPECT_EQ(fakes::NarrowDebuggerLines(), std::vector<std::string>{"Invalid struct size in read vector\r\n"});
  wizard_.onCall = [] { throw std::runtime_error("closed"); };
  EXPECT_NE(Delivered(1, Block().Text(5, "c").Raw(6, kPicture)) + Delivered(8, Block().Text(5, "m")), "");
  EXPECT_TRUE(fakes::DebuggerLines().empty());
  Delivered(2, Block().Text(5, "c").Values(1, 8, {2}));
  EXPECT_EQ(fakes::DebuggerLines(), std::vector<std::u16string>{u"Wizzard wurde schon geschlossen\r\n"});
}

TEST_F(FinderBlock, IsParsedToItsEndWithoutACallWhenTheWizardHasGone) {
  current_ = nullptr;
  EXPECT_EQ(Delivered(1, Block().Text(5, "c").Raw(6, kPicture)), "");
  EXPECT_EQ(Delivered(2, Block().Text(5, "c").Values(1, 8, {1})), "");
  EXPECT_EQ(Delivered(8, Block().Text(5, "m")), "");
  EXPECT_EQ(block_->GetUnreadLength(), 0U);
}

}  // namespace
}  // namespace Tarn::CameraFinding
