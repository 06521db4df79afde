/// The worst messages we know: the memory that they take stays within 64 times their length and a mebibyte, and the
/// number of allocations grows with their length and no faster. How time grows is printed.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>

#include "base/base64.h"
#include "base/exception_history.h"
#include "fakes/counting_allocator.h"
#include "protocol/record_wire.h"
#include "wizard/finder_library.h"

namespace wizard {
namespace {

using namespace std::string_literals;

/// A little-endian number of at most 8 bytes.
std::string Number(std::uint64_t value, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> 8 * i);
  return text;
}

/// About that many bytes of one piece.
std::string Repeated(const std::string& piece, std::size_t size) {
  std::string pieces;
  for (std::size_t i = 0; i < size / piece.size(); ++i) pieces += piece;
  return pieces;
}

std::string Counted(const std::string& piece, std::size_t size) {
  return Number(size / piece.size(), 4) + Repeated(piece, size);
}

const std::string kUnnamed = "VLIS\0\0"s;
const std::string kEmptyRecord = kUnnamed + Number(0, 4);
const std::string kCameraChunk = Number(1, 4) + Number(0, 8);

/// A record with one entry: a list of records, or of texts, with these elements.
std::string RecordOf(const std::string& key, const std::string& element, std::size_t size) {
  const std::string list = Number(Tarn::CameraFinding::ListMarker, 4) + Counted(element, size);
  const std::string name = "\x0B" + Number(key.size() + 1, 4) + key + '\0';
  return kUnnamed + Number(1, 4) + name + '\x0D' + Number(list.size(), 4) + list;
}

std::string BlockOfEntries(const std::string& entry, std::size_t size) {
  return kCameraChunk + kUnnamed + Counted(entry, size);
}

/// A list as the server answers it: base64 in UTF-16, behind its tag and length.
std::string ReplyOf(const std::string& list) {
  std::string units;
  for (const char character : Kestrel::Base64Encode(list.data(), list.size())) units += {character, '\0'};
  return '\x0C' + Number(units.size() + 2, 4) + units + "\0\0"s;
}

constexpr std::uint32_t kReply = 0;  ///< in place of a block's type: the answer to the list command

struct GeneratorRow {
  const char* name;
  std::uint32_t messageType;
  std::string (*make)(std::size_t size);
};

const GeneratorRow kGenerators[] = {
    {"SmallestEntries", 3, [](std::size_t n) { return BlockOfEntries("\0\0\0\0"s, n); }},
    {"EntriesOfOneByte", 3, [](std::size_t n) { return BlockOfEntries("\0\0\x0D\1\0\0\0\7"s, n); }},
    {"NamesOfLongDigits", 3,  // 1e308
     [](std::size_t n) { return BlockOfEntries("\x0A\xA0\xC8\xEB\x85\xF3\xCC\xE1\x7F\0\0"s, n); }},
    {"EmptyRecords", 3, [](std::size_t n) { return kCameraChunk + RecordOf("CAMERAINFOLIST", kEmptyRecord, n); }},
    {"EmptyTexts", 3,
     [](std::size_t n) {
       const std::string record = RecordOf("NI2", kEmptyRecord, n);
       return kCameraChunk + RecordOf("CAMERAINFOLIST", record, record.size());
     }},
    {"ACountThatLies", 3,
     [](std::size_t n) { return kCameraChunk + kUnnamed + Number(~0U, 4) + std::string(n, '\0'); }},
    {"ManyChunks", 7, [](std::size_t n) { return Repeated(Number(10, 4) + Number(0, 8) + Number(0, 2), n); }},
    {"ManySingleValues", 2,
     [](std::size_t n) {
       return Repeated(Number(7, 4) + Number(24, 8) + Number(1, 8) + Number(8, 8) + Number(1, 8), n);
     }},
    {"ReplyOfSmallestEntries", kReply, [](std::size_t n) { return ReplyOf(kUnnamed + Counted("\0\0\0\0"s, n)); }},
    {"ReplyOfEmptyRecords", kReply, [](std::size_t n) { return ReplyOf(RecordOf("CAMERAINFOLIST", kEmptyRecord, n)); }},
    {"BinaryAsText", 1,
     [](std::size_t n) { return Number(5, 4) + Number(0, 8) + '\x0D' + Number(n, 4) + std::string(n, 'x'); }},
};

class MemoryBound : public WizardTest, public testing::WithParamInterface<GeneratorRow> {
 protected:
  MemoryBound() { finder_->SetNewCameraDataCallback(&callback_); }
  void TearDown() override {
    finder_.Reset();
    WizardTest::TearDown();
  }

  static Bytes MessageOf(std::size_t size) {
    const std::string text = GetParam().make(size);
    return Bytes(text.begin(), text.end());
  }
  void Send(const Bytes& message) {
    if (GetParam().messageType != kReply) {
      dbi.Push(GetParam().messageType, message);
      return;
    }
    dbi.SetReply(message);
    finder_->ListFoundCameras(nullptr);
  }
  /// The shortest of some runs.
  double SecondsFor(const Bytes& message) {
    double shortest = 1e9;
    for (int i = 0; i < 3; ++i) {
      const auto start = std::chrono::steady_clock::now();
      Send(message);
      shortest = std::min(shortest, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return shortest;
  }

 private:
  CountingCallback callback_;
  ComPtr<ICameraFinder> finder_ = MakeFinderBy(GetFindingInterface);
};

TEST_P(MemoryBound, IsKeptAndAllocationsGrowWithTheLength) {
  std::int64_t allocationsBefore = 0;
  for (const std::size_t size : {4096U, 65536U, 131072U, 262144U, 1048576U}) {
    SCOPED_TRACE(size);
    const Bytes message = MessageOf(size);
    const std::int64_t held = fakes::GetHeapUse().bytes, allocationsSoFar = fakes::CountAllocations();
    fakes::ResetHeapPeak();
    Send(message);
    EXPECT_LE(fakes::GetHeapUse().peak - held, 64 * static_cast<std::int64_t>(message.size()) + (1 << 20));
    const std::int64_t allocations = fakes::CountAllocations() - allocationsSoFar;
    if (size == 131072U || size == 262144U) {
      EXPECT_LE(allocations, allocationsBefore * 5 / 2 + 64);
    }
    allocationsBefore = allocations;
  }
  std::printf("twice the length takes %.2f times as long\n",
              SecondsFor(MessageOf(524288)) / SecondsFor(MessageOf(262144)));
}

/// 512 exceptions with a text that the server chose: the history, which the library makes at its load, keeps a part.
TEST_F(WizardTest, LongTextsOfRefusedBlocksDoNotStay) {
  const auto finder = MakeFinderBy(GetFindingInterface);
  CountingCallback callback;
  finder->SetNewCameraDataCallback(&callback);
  const std::string record = kUnnamed + Number(1, 4) + "\x0B" + Number(4, 4) + "ICB\0\x0B"s + Number((1 << 16) + 1, 4) +
                             std::string(1 << 16, 'x') + '\0';
  const std::string text = kCameraChunk + RecordOf("CAMERAINFOLIST", record, record.size());
  const Bytes block(text.begin(), text.end());
  dbi.Push(3, block);  // fills the pool of buffers
  const Kestrel::ExceptionHistory history;
  const std::int64_t before = fakes::GetHeapUse().bytes;
  for (int i = 0; i < 512; ++i) dbi.Push(3, block);
  EXPECT_EQ(history.Entries().size(), 512U);
  EXPECT_LE(fakes::GetHeapUse().bytes - before, static_cast<std::int64_t>(Kestrel::ExceptionHistory::kMostBytes));
}

INSTANTIATE_TEST_SUITE_P(Worst, MemoryBound, testing::ValuesIn(kGenerators),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace wizard
