/// Pictures, read by a decoder of the test's own, which knows stored data only.
#include "simulator/picture.h"

#include <gtest/gtest.h>

#include <span>
#include <string>

#include "base/crc32.h"

namespace simulator {
namespace {

using Bytes = std::vector<std::uint8_t>;

std::uint32_t BigEndian(std::span<const std::uint8_t> bytes) {
  return static_cast<std::uint32_t>(bytes[0] << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3]);
}

/// Takes one chunk off a file whose length and check sum are right.
Bytes TakeChunk(std::span<const std::uint8_t>& file, const std::string& type) {
  const std::size_t length = BigEndian(file);
  if (file.size() < 12 + length) throw std::out_of_range(type);
  const auto checked = file.subspan(4, 4 + length);
  EXPECT_EQ(std::string(checked.begin(), checked.begin() + 4), type);
  EXPECT_EQ(BigEndian(file.subspan(8 + length)), Kestrel::Crc32(checked));
  file = file.subspan(12 + length);
  return Bytes(checked.begin() + 4, checked.end());
}

TEST(Crc32, OfTheUsualCheckText) {
  EXPECT_EQ(Kestrel::Crc32(Bytes{'1', '2', '3', '4', '5', '6', '7', '8', '9'}), 0xCBF43926U);
}

TEST(Picture, IsAWholePng) {
  constexpr std::size_t kPixels = 5432;  // 56 rows of 96, each behind its filter
  for (const std::uint64_t number : {1ULL, 17ULL, 100'000ULL}) {
    const Bytes bytes = MakePicture(3, number, 1);
    auto file = std::span(bytes).subspan(8);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 8), "\x89PNG\r\n\x1A\n");
    EXPECT_EQ(TakeChunk(file, "IHDR"), (Bytes{0, 0, 0, 96, 0, 0, 0, 56, 8, 0, 0, 0, 0}));
    const Bytes zlib = TakeChunk(file, "IDAT");
    EXPECT_TRUE(TakeChunk(file, "IEND").empty());
    EXPECT_TRUE(file.empty());

    ASSERT_EQ(zlib.size(), 7 + kPixels + 4);
    EXPECT_EQ((zlib[0] << 8 | zlib[1]) % 31, 0);
    EXPECT_EQ(zlib[2], 1) << "one last stored block";
    EXPECT_EQ(BigEndian(std::span(zlib).subspan(3)), 0x3815C7EAU) << "5432 bytes, and the complement";
    std::uint64_t low = 1, high = 0;
    for (std::size_t i = 0; i < kPixels; ++i) {
      high += low += zlib[7 + i];
      ASSERT_TRUE(i % 97 != 0 || zlib[7 + i] == 0) << "filter of row " << i / 97;
    }
    EXPECT_EQ(BigEndian(std::span(zlib).last(4)), high % 65521 << 16 | low % 65521);
  }
  EXPECT_NE(MakePicture(3, 1, 1), MakePicture(3, 2, 1));
  EXPECT_NE(MakePicture(3, 1, 1), MakePicture(3, 1, 2));
}

}  // namespace
}  // namespace simulator
