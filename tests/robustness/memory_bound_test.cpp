/// The worst messages we know: the memory that they take stays within 64 times their length and a mebibyte, and the
/// number of allocations grows with their length and no faster.
#include <cstring>

#include "fakes/counting_allocator.h"
#include "protocol/record_wire.h"
#include "wizard/finder_library.h"

namespace wizard {
namespace {

/// Little-endian pieces of a message.
class Wire {
 public:
  Wire& Number(std::uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) bytes_.push_back(static_cast<std::uint8_t>(value >> 8 * i));
    return *this;
  }
  Wire& Text(std::string_view text) {
    Number(11, 1).Number(text.size() + 1, 4);
    bytes_.insert(bytes_.end(), text.begin(), text.end());
    return Number(0, 1);
  }
  Wire& Raw(const Bytes& bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    return *this;
  }
  Wire& Identifier() { return Number(0x53494C56, 4); }
  const Bytes& Take() const { return bytes_; }

 private:
  Bytes bytes_;
};

/// Grows a message to about that many bytes.
Bytes Repeated(const Bytes& piece, std::size_t size) {
  Wire wire;
  for (std::size_t i = 0; i < size / piece.size(); ++i) wire.Raw(piece);
  return wire.Take();
}

/// A camera block of type 3 with these entries in its value list.
Bytes BlockOfEntries(const Bytes& entry, std::size_t size) {
  const Bytes entries = Repeated(entry, size);
  return Wire()
      .Number(1, 4)
      .Number(0, 8)
      .Identifier()
      .Number(0, 1)
      .Number(0, 1)
      .Number(entries.size() / entry.size(), 4)
      .Raw(entries)
      .Take();
}

/// A camera block whose list of records, or of texts in its one record, has these elements.
Bytes BlockOfElements(std::string_view key, const Bytes& element, std::size_t size) {
  const Bytes elements = Repeated(element, size);
  const Bytes list = Wire()
                         .Number(Tarn::CameraFinding::ListMarker, 4)
                         .Number(elements.size() / element.size(), 4)
                         .Raw(elements)
                         .Take();
  return Wire()
      .Number(1, 4)
      .Number(0, 8)
      .Identifier()
      .Number(0, 1)
      .Number(0, 1)
      .Number(1, 4)
      .Text(key)
      .Number(13, 1)
      .Number(list.size(), 4)
      .Raw(list)
      .Take();
}

struct GeneratorRow {
  const char* name;
  std::uint32_t messageType;
  Bytes (*make)(std::size_t size);
};

const Bytes kEmptyElement = Wire().Identifier().Number(0, 1).Number(0, 1).Number(0, 4).Take();

const GeneratorRow kGenerators[] = {
    {"SmallestEntries", 3,
     [](std::size_t size) {
       return BlockOfEntries({0, 0, 0, 0}, size);
     }},
    {"EntriesWithOneByteOfData", 3,
     [](std::size_t size) {
       return BlockOfEntries({0, 0, 13, 1, 0, 0, 0, 7}, size);
     }},
    {"EntriesWithAnEmptyBlob", 3,
     [](std::size_t size) {
       return BlockOfEntries({0, 0, 14, 1, 0, 0, 0, 7}, size);
     }},
    {"NamesOfLongDigits", 3,
     [](std::size_t size) {
       return BlockOfEntries({10, 0xA0, 0xC8, 0xEB, 0x85, 0xF3, 0xCC, 0xE1, 0x7F, 0, 0}, size);  // 1e308
     }},
    {"EmptyRecords", 3, [](std::size_t size) { return BlockOfElements("CAMERAINFOLIST", kEmptyElement, size); }},
    {"EmptyTexts", 3,
     [](std::size_t size) {
       const Bytes texts = Repeated(kEmptyElement, size);
       const Bytes list =
           Wire().Number(Tarn::CameraFinding::ListMarker, 4).Number(texts.size() / 10, 4).Raw(texts).Take();
       const Bytes record = Wire()
                                .Identifier()
                                .Number(0, 1)
                                .Number(0, 1)
                                .Number(1, 4)
                                .Text("NI2")
                                .Number(13, 1)
                                .Number(list.size(), 4)
                                .Raw(list)
                                .Take();
       return BlockOfElements("CAMERAINFOLIST", record, record.size());
     }},
    {"HonestCountsThatLie", 3,
     [](std::size_t size) {
       Bytes block = BlockOfEntries({0, 0, 0, 0}, size);
       std::memset(block.data() + 18, 0xFF, 4);  // the entry count
       return block;
     }},
    {"ManyChunks", 7,
     [](std::size_t size) { return Repeated(Wire().Number(10, 4).Number(0, 8).Number(0, 2).Take(), size); }},
    {"ManyTexts", 2,
     [](std::size_t size) { return Repeated(Wire().Number(5, 4).Number(0, 8).Number(0, 2).Take(), size); }},
    {"ManySingleValues", 2,
     [](std::size_t size) {
       return Repeated(Wire().Number(7, 4).Number(24, 8).Number(1, 8).Number(8, 8).Number(1, 8).Take(), size);
     }},
    {"OneLongText", 1,
     [](std::size_t size) {
       return Wire().Number(5, 4).Number(0, 8).Number(11, 1).Number(size, 4).Raw(Bytes(size, 'x')).Take();
     }},
    {"BinaryAsText", 1,
     [](std::size_t size) {
       return Wire().Number(5, 4).Number(0, 8).Number(13, 1).Number(size, 4).Raw(Bytes(size, 'x')).Take();
     }},
};

struct Cost {
  std::int64_t peak, allocations;
};

class MemoryBound : public WizardTest, public testing::WithParamInterface<GeneratorRow> {
 protected:
  Cost CostOf(std::size_t size, std::size_t& messageSize) {
    const Bytes block = GetParam().make(size);
    messageSize = block.size();
    const fakes::HeapUse before = fakes::GetHeapUse();
    const std::int64_t allocations = fakes::CountAllocations();
    fakes::ResetHeapPeak();
    dbi.Push(GetParam().messageType, block);
    return {fakes::GetHeapUse().peak - before.bytes, fakes::CountAllocations() - allocations};
  }
};

TEST_P(MemoryBound, IsKeptAndAllocationsGrowWithTheLength) {
  ICameraFinder* created = nullptr;
  GetFindingInterface(kServer, kChannel, &created);
  const auto finder = ComPtr<ICameraFinder>::Attach(created);
  RecordingCallback callback;
  finder->SetNewCameraDataCallback(&callback);
  std::int64_t allocationsBefore = 0;
  for (const std::size_t size : {4096U, 65536U, 131072U, 262144U, 1048576U}) {
    std::size_t messageSize = 0;
    const Cost cost = CostOf(size, messageSize);
    EXPECT_LE(cost.peak, 64 * static_cast<std::int64_t>(messageSize) + (1 << 20)) << messageSize;
    if (size == 131072U || size == 262144U) {
      EXPECT_LE(cost.allocations, allocationsBefore * 5 / 2 + 64) << messageSize;
    }
    allocationsBefore = cost.allocations;
  }
}

INSTANTIATE_TEST_SUITE_P(Worst, MemoryBound, testing::ValuesIn(kGenerators),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace wizard
