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
  const std::pair<std::vector<std::size_t>, std::uint64_t> rows[] = {
      {{0}, 0},         {{2731}, 4096},   {{2732}, 8192}, {{10, 4086}, 4096}, {{10, 4086, 1}, 8192},
      {{43691}, 65536}, {{43692}, 69632},
  };
  for (const auto& [sizes, capacity] : rows) {
    Buffer buffer;
    for (const std::size_t n : sizes) buffer.Append(std::string(n, 'x').data(), n);
    EXPECT_EQ(buffer.GetCapacity(), capacity);
    EXPECT_TRUE(std::ranges::equal(buffer.GetBytes(), std::string(std::reduce(sizes.begin(), sizes.end()), 'x')));
  }
}

TEST(Buffer, IsLeftWithoutStorageWhereItCannotGrow) {
  struct Row {
    std::uint64_t added;
    const char* allocation;
    std::int64_t failing;  ///< which allocation the heap refuses
  };
  for (const Row& row : {Row{kHuge, "18446744073709551615", 0}, Row{kHuge - 1, "18446744073709551615", 0},
                         Row{0x5555555555554FFF, "9223372036854775808", 0}, Row{5000, "8192", 1}}) {
    Buffer buffer;
    buffer.Append("a", 1);
    const auto grow = [&] {
      const fakes::FailingAllocation failure(row.failing);
      buffer.Reserve(row.added);
    };
    EXPECT_EQ(ErrorOf(grow), std::string("OutOfMemoryException: Out of memory during allocation of ") + row.allocation +
                                 " bytes in FlatMemory");
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
  EXPECT_TRUE(!__asan_address_is_poisoned(bytes + 12) && __asan_address_is_poisoned(bytes + 13));
  buffer.Reset();
  EXPECT_TRUE(__asan_address_is_poisoned(bytes));
}
#endif

TEST(RawReader, ReadsUpToTheEndAndNotBeyond) {
  char bytes[5] = {};
  for (const std::uint64_t position : {0u, 1u, 3u, 4u}) {
    RawReader reader("wxyz", 4);
    reader.Read(bytes, position);
    for (const std::uint64_t n : {5 - position, kHuge - position, kHuge})
      EXPECT_EQ(ErrorOf([&] { reader.Read(bytes, n); }),
                "IKestrelStream::IKestrelStreamException: RawStreamer - read failed");
    reader.Read(bytes + position, 4 - position);
    reader.Read(bytes, 0);
    EXPECT_STREQ(bytes, "wxyz");
  }
  EXPECT_EQ(ErrorOf([] { RawReader("", 0).Write("", 0); }),
            "IKestrelStream::IKestrelStreamException: RawReader - write not allowed");
}

}  // namespace
}  // namespace Kestrel
