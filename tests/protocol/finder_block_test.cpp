#include "protocol/finder_block.h"

#include <gtest/gtest.h>

#include "fakes/fake_debugger.h"
#include "protocol/samples.h"
#include "valuelist/buffer_pool.h"

namespace Tarn::CameraFinding {
namespace {

using nlohmann::json;

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

  json Delivered(std::uint32_t type, const Bytes& bytes) {
    wizard_.delivered = json::array();
    block_ = Kestrel::CreateBuffer(bytes.data(), bytes.size());
    ParseFinderBlock(*receiver_.Get(), *block_, type);
    return wizard_.delivered;
  }

  RecordingWizard wizard_;
  Kestrel::ReferencePointer<Kestrel::Buffer> block_;
  Kestrel::ComPtr<CameraDataCallback::Wrapper> receiver_ =
      Kestrel::MakeComObject<CameraDataCallback::CameraDataInternalCallback, IGenericDataReceivedCallback>(&wizard_);
};

const Bytes kPicture = {1, 2, 3, 4};
constexpr std::uint64_t kMost = ~std::uint64_t{0};
const json kNothing = json::array();

json Picture(const char* text, int bytes) {
  return json::array({{{"picture", text}, {"bytes", bytes}}});
}
json Values(std::vector<std::string> numbers) {
  return json::array({{{"values", "c"}, {"numbers", numbers}}});
}

TEST_F(FinderBlock, OfPictureOrValuesIsDeliveredOnlyWhenItIsWhole) {
  const struct {
    const char* name;
    std::uint32_t type;
    Bytes block;
    json delivered;
  } rows[] = {
      {"picture without an end mark", 1, Block().Text(5, "c").Raw(6, kPicture), Picture("c", 4)},
      {"picture before the text", 1, Block().Raw(6, kPicture).Text(5, "c").Number(0, 4), Picture("c", 4)},
      {"later text and picture win", 1, Block().Text(5, "a").Raw(6, {}).Text(5, "c").Raw(6, kPicture), Picture("c", 4)},
      {"empty picture", 1, Block().Text(5, "c").Raw(6, {}), Picture("c", 0)},
      {"empty text", 1, Block().Text(5, "").Raw(6, kPicture), kNothing},
      {"no picture", 1, Block().Text(5, "c"), kNothing},
      {"what stands behind the end", 1, Block().Text(5, "c").Number(0, 4).Raw(6, kPicture), kNothing},
      {"one byte before a tag", 1, Block().Text(5, "c").Raw(6, kPicture).Number(0, 1), kNothing},
      {"cut in a length", 1, Block().Text(5, "c").Raw(6, kPicture).Number(6, 4).Number(0, 7), kNothing},
      {"picture cut", 1, Block().Text(5, "c").Chunk(6, 5, kPicture), kNothing},
      {"length that wraps", 1, Block().Text(5, "c").Chunk(6, kMost, kPicture), kNothing},
      {"unknown chunk with a length that wraps", 1, Block().Text(5, "c").Raw(6, kPicture).Chunk(99, kMost), kNothing},
      {"values of two chunks", 2, Block().Values(2, 8, {1, 2}).Text(5, "c").Values(1, 8, {3}), Values({"1", "2", "3"})},
      {"fewer values than bytes", 2, Block().Text(5, "c").Values(1, 8, {1, 2}), Values({"1"})},
      {"more values than bytes", 2, Block().Text(5, "c").Values(3, 8, {1, 2}), kNothing},
      {"count that wraps", 2, Block().Text(5, "c").Values(kMost / 8 + 2, 8, {1}), kNothing},
      {"no values", 2, Block().Text(5, "c").Values(0, 8, {}), kNothing},
      {"values cut in their head", 2, Block().Text(5, "c").Values(1, 8, {1}).Raw(7, Bytes(15)), kNothing},
      {"other types", 0, Block().Text(5, "c").Raw(6, kPicture), kNothing},
      {"other types", kMost & 0xFFFFFFFF, Block().Text(5, "c").Raw(6, kPicture), kNothing},
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

TEST_F(FinderBlock, ReportsValuesOfAnotherSizeAndGoesOn) {
  EXPECT_EQ(Delivered(2, Block().Text(5, "c").Values(9, 4, {1}).Values(1, 8, {2})), Values({"2"}));
  EXPECT_EQ(fakes::NarrowDebuggerLines(), std::vector<std::string>{"Invalid struct size in read vector\r\n"});
}

TEST_F(FinderBlock, OfACameraTakesItsChunksInOrder) {
  const auto show = [](const json& delivered) {
    std::string text;
    for (const json& one : delivered) {
      const json& camera = one["camera"];
      for (const char* const key : {"mac", "ip", "vendor", "plugin", "ctt"}) text += camera[key].dump() + " ";
      text += one["type"].dump();
    }
    return text;
  };
  const struct {
    const char* name;
    std::uint32_t type;
    Bytes block;
    const char* shown;
  } rows[] = {
      {"no address", 3, Block().Chunk(12, 0, {9}), ""},
      {"address and code alone", 3, Block().Text(5, "m").Chunk(12, 0, {9}), R"("m" "" "" "UNKNOWN" 9 0)"},
      {"record of another kind is skipped", 3, Block().Text(5, "m").Raw(2, {'V', 'L'}), R"("m" "" "" "UNKNOWN" 2 0)"},
      {"record that is damaged", 3, Block().Text(5, "m").Raw(1, {'V', 'L', 'I', 'T'}), ""},
      {"assembled: the length behind the code is skipped too", 7,
       Block().Text(10, "Sony IPC").Chunk(12, 2, {9, 0xAA, 0xBB}).Text(8, "i").Text(9, "v").Text(10, "Axis IPC"),
       R"("UNKNOWN" "i" "v" "Sony IPC" 9 1)"},
      {"assembled without a plug-in", 7, Block().Text(5, "m"), R"("m" "" "" "UNKNOWN" 2 0)"},
      {"gone: a record chunk is nothing here", 8, Block().Raw(1, {1, 2}).Text(5, "m"), R"("m" "" "" "UNKNOWN" 2 24)"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(show(Delivered(row.type, row.block)), row.shown);
  }
}

TEST_F(FinderBlock, IsParsedToItsEndWithoutACallWhenTheWizardHasGone) {
  receiver_->OnDetach();
  EXPECT_EQ(Delivered(1, Block().Text(5, "c").Raw(6, kPicture)), kNothing);
  EXPECT_EQ(Delivered(2, Block().Text(5, "c").Values(1, 8, {1})), kNothing);
  EXPECT_EQ(Delivered(8, Block().Text(5, "m")), kNothing);
  EXPECT_EQ(block_->GetUnreadLength(), 0U);
}

}  // namespace
}  // namespace Tarn::CameraFinding
