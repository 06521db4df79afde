#include "valuelist/buffer.h"

#include <gtest/gtest.h>

#include <limits>
#include <numeric>
#include <string>
#include <vector>

#include "fakes/counting_allocator.h"
#include "valuelist/error_of.h"
#include "valuelist/poison.h"
#include "valuelist/stream.h"

namespace Kestrel {
namespace {

constexpr std::uint64_t kHuge = std::numeric_limits<std::uint64_t>::max();

TEST(Buffer, GrowsByHalfOfWhatIsNeededInPages) {
  using Sizes = std::vector<std::uint64_t>;
  const std::pair<Sizes, std::uint64_t> rows[] = {
      {{0}, 0},           {{1}, 4096},           {{2731}, 4096},   {{2732}, 8192},   {{4096}, 8192},
      {{10, 4086}, 4096}, {{10, 4086, 1}, 8192}, {{43691}, 65536}, {{43692}, 69632},
  };
  for (const auto& [sizes, capacity] : rows) {
    SCOPED_TRACE(testing::PrintToString(sizes));
    Buffer buffer;
    for (const std::uint64_t n : sizes) buffer.Append(std::string(n, 'x').data(), n);
    EXPECT_EQ(buffer.GetCapacity(), capacity);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer.GetData()) % FlatMemory::kAlignment, 0u);
    EXPECT_TRUE(std::ranges::equal(buffer.GetBytes(), std::string(std::reduce(sizes.begin(), sizes.end()), 'x')));
  }
}

TEST(Buffer, IsLeftWithoutStorageWhereItCannotGrow) {
  struct Row {
    std::uint64_t added, allocation;
    std::int64_t failing;  ///< which allocation the heap refuses
  };
  for (const auto& [added, allocation, failing] :
       {Row{kHuge, kHuge, 0}, Row{kHuge - 1, kHuge, 0}, Row{0x5555555555554FFF, 0x8000000000000000, 0},
        Row{5000, 8192, 1}}) {
    const std::string expected = "OutOfMemoryException: Out of memory during allocation of " +
                                 std::to_string(allocation) + " bytes in FlatMemory";
    Buffer buffer;
    buffer.Append("a", 1);
    const fakes::FailingAllocation failure(failing);
    EXPECT_EQ(ErrorOf([&] { buffer.Reserve(added); }), expected);
    EXPECT_TRUE(buffer.GetCapacity() == 0 && buffer.GetLength() == 0 && !buffer.GetData());
  }
}

TEST(Buffer, ReadsLittleEndianNumbersAndRefusesMoreThanIsThere) {
  Buffer buffer;
  buffer.Append("\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A\x0B\x0C\xF1\xF2\xF3\xF4", 16);
  EXPECT_EQ(buffer.ReadUInt32(), 0x04030201u);
  EXPECT_EQ(buffer.ReadUInt64(), 0x0C0B0A0908070605u);
  EXPECT_EQ(buffer.ReadUInt8(), 0xF1u);
  for (const std::uint64_t n : {std::uint64_t{4}, kHuge - 12, kHuge}) {
    EXPECT_EQ(ErrorOf([&] { buffer.Take(n); }), kTooFewBytes) << n;
    EXPECT_EQ(buffer.GetUnreadLength(), 3u);
  }
  buffer.Take(3);
  buffer.Take(0);
}

#ifdef TARN_POISONS_MEMORY
TEST(Buffer, PoisonsWhatIsBehindItsLength) {
  Buffer buffer;
  const std::uint8_t* const bytes = buffer.Reserve(13);
  EXPECT_FALSE(__asan_address_is_poisoned(bytes + 12));
  EXPECT_TRUE(__asan_address_is_poisoned(bytes + 13));
  buffer.Truncate(3);
  EXPECT_TRUE(__asan_address_is_poisoned(bytes + 3));
}
#endif

TEST(RawReader, ReadsUpToTheEndAndNotBeyond) {
  struct Row {
    std::uint64_t first, second;
    bool reads;
  };
  for (const auto& [first, second, reads] : {Row{0, 4, true}, Row{0, 5, false}, Row{3, 1, true}, Row{3, 2, false},
                                             Row{4, 0, true}, Row{4, 1, false}, Row{1, kHuge, false}}) {
    RawReader reader("wxyz", 4);
    std::string bytes(5, '?');
    reader.Read(bytes.data(), first);
    EXPECT_EQ(ErrorOf([&] { reader.Read(bytes.data() + first, second); }),
              reads ? "" : "IKestrelStream::IKestrelStreamException: RawStreamer - read failed");
    EXPECT_EQ(bytes, std::string("wxyz", reads ? first + second : first).append("?????").substr(0, 5));
  }
  EXPECT_EQ(ErrorOf([] { RawReader("", 0).Write("", 0); }),
            "IKestrelStream::IKestrelStreamException: RawReader - write not allowed");
}

}  // namespace
}  // namespace Kestrel
