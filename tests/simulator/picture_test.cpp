/// Pictures through a decoder of their own, slow and literal: check sums bit by bit, no tables.
#include "simulator/picture.h"

#include <gtest/gtest.h>

#include <string>

namespace simulator {
namespace {

using Bytes = std::vector<std::uint8_t>;

std::uint32_t BigEndian(const Bytes& bytes, std::size_t at) {
  return static_cast<std::uint32_t>(bytes.at(at) << 24 | bytes.at(at + 1) << 16 | bytes.at(at + 2) << 8 |
                                    bytes.at(at + 3));
}

std::uint32_t SlowCrc(const Bytes& bytes, std::size_t from, std::size_t to) {
  std::uint32_t crc = ~0U;
  for (std::size_t i = from; i < to; ++i)
    for (int bit = 0; bit < 8; ++bit) {
      const bool odd = ((crc ^ (bytes.at(i) >> bit)) & 1) != 0;
      crc = (crc >> 1) ^ (odd ? 0xEDB88320 : 0);
    }
  return ~crc;
}

struct Decoded {
  std::string chunks;
  Bytes header, pixels;
};

/// Fails the test where a length, a check sum or the stored block is wrong.
Decoded Decode(const Bytes& file) {
  EXPECT_EQ(Bytes(file.begin(), file.begin() + 8), (Bytes{0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A}));
  Decoded decoded;
  for (std::size_t at = 8; at < file.size();) {
    const std::size_t begin = at + 8, end = begin + BigEndian(file, at);
    const std::string type(file.begin() + static_cast<std::ptrdiff_t>(at) + 4,
                           file.begin() + static_cast<std::ptrdiff_t>(begin));
    EXPECT_EQ(BigEndian(file, end), SlowCrc(file, at + 4, end)) << type;
    decoded.chunks += type + " ";
    (type == "IHDR" ? decoded.header : decoded.pixels)
        .insert((type == "IHDR" ? decoded.header : decoded.pixels).end(),
                file.begin() + static_cast<std::ptrdiff_t>(begin), file.begin() + static_cast<std::ptrdiff_t>(end));
    at = end + 4;
  }
  Bytes& zlib = decoded.pixels;
  EXPECT_EQ((zlib.at(0) << 8 | zlib.at(1)) % 31, 0);
  EXPECT_EQ(zlib.at(2), 1) << "one last stored block";
  const std::size_t length = static_cast<std::size_t>(zlib.at(3) | zlib.at(4) << 8);
  EXPECT_EQ(length ^ 0xFFFF, static_cast<std::size_t>(zlib.at(5) | zlib.at(6) << 8));
  EXPECT_EQ(zlib.size(), 7 + length + 4);
  std::uint64_t low = 1, high = 0;
  for (std::size_t i = 0; i < length; ++i) high += low += zlib.at(7 + i);
  EXPECT_EQ(BigEndian(zlib, 7 + length), high % 65521 << 16 | low % 65521);
  decoded.pixels = Bytes(zlib.begin() + 7, zlib.end() - 4);
  return decoded;
}

TEST(Picture, IsAWholePngOfAFewKilobytes) {
  for (const std::uint64_t number : {1ULL, 17ULL, 100'000ULL}) {
    const Bytes file = MakePicture(3, number, 1);
    EXPECT_LT(file.size(), 6000U);
    const Decoded decoded = Decode(file);
    EXPECT_EQ(decoded.chunks, "IHDR IDAT IEND ");
    EXPECT_EQ(decoded.header, (Bytes{0, 0, 0, 96, 0, 0, 0, 56, 8, 0, 0, 0, 0}));
    ASSERT_EQ(decoded.pixels.size(), 56U * 97U);
    for (std::size_t row = 0; row < 56; ++row) EXPECT_EQ(decoded.pixels[row * 97], 0) << "filter of row " << row;
  }
}

TEST(Picture, DiffersByCameraAndByPicture) {
  EXPECT_EQ(MakePicture(3, 1, 1), MakePicture(3, 1, 1));
  EXPECT_NE(MakePicture(3, 1, 1), MakePicture(3, 2, 1));
  EXPECT_NE(MakePicture(3, 1, 1), MakePicture(3, 1, 2));
}

}  // namespace
}  // namespace simulator
