#include "simulator/picture.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "base/crc32.h"
#include "simulator/random.h"

namespace simulator {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kWidth = 96;
constexpr std::uint32_t kHeight = 56;

/// Digits of 3 by 5 blocks, a row per entry, the left block in bit 2.
constexpr std::uint32_t kGlyphWidth = 3;
constexpr std::uint32_t kGlyphHeight = 5;
constexpr std::array<std::array<std::uint8_t, kGlyphHeight>, 10> kGlyphs = {{
    {7, 5, 5, 5, 7},
    {2, 6, 2, 2, 7},
    {7, 1, 7, 4, 7},
    {7, 1, 7, 1, 7},
    {5, 5, 7, 1, 1},
    {7, 4, 7, 1, 7},
    {7, 4, 7, 5, 7},
    {7, 1, 1, 1, 1},
    {7, 5, 7, 5, 7},
    {7, 5, 7, 1, 7},
}};

/// Grey values, row after row; a filter byte of 0 stands before each row, as PNG wants it.
class Image {
 public:
  Image() : rows_(std::size_t{kHeight} * (kWidth + 1)) {}

  std::uint8_t& At(std::uint32_t x, std::uint32_t y) { return rows_[y * (kWidth + 1) + 1 + x]; }
  const Bytes& Rows() const { return rows_; }

 private:
  Bytes rows_;
};

void DrawGradient(Image& image, Random random) {
  const auto base = static_cast<std::uint32_t>(random.Below(64));
  const auto perColumn = static_cast<std::uint32_t>(random.Below(2));
  const auto perRow = static_cast<std::uint32_t>(1 + random.Below(2));
  for (std::uint32_t y = 0; y < kHeight; ++y)
    for (std::uint32_t x = 0; x < kWidth; ++x)
      image.At(x, y) = static_cast<std::uint8_t>(std::min(base + x * perColumn + y * perRow, 200U));
}

/// In the middle, as large as fits.
void DrawNumber(Image& image, std::string_view digits) {
  const auto columns = static_cast<std::uint32_t>(digits.size()) * (kGlyphWidth + 1);
  const std::uint32_t block = std::clamp(kWidth / columns, 1U, kHeight / (kGlyphHeight + 1));
  const std::uint32_t left = (kWidth - std::min(kWidth, columns * block)) / 2;
  const std::uint32_t top = (kHeight - kGlyphHeight * block) / 2;
  for (std::uint32_t y = 0; y < kGlyphHeight * block; ++y) {
    for (std::uint32_t x = 0; x < columns * block && left + x < kWidth; ++x) {
      const std::uint32_t column = x / block;
      const auto& glyph = kGlyphs[static_cast<std::size_t>(digits[column / (kGlyphWidth + 1)] - '0')];
      const std::uint32_t bit = kGlyphWidth - column % (kGlyphWidth + 1);  // 0 is the gap behind a digit
      if (bit > 0 && (glyph[y / block] >> (bit - 1) & 1) != 0) image.At(left + x, top + y) = 255;
    }
  }
}

void DrawColumn(Image& image, std::uint32_t x) {
  for (std::uint32_t y = 0; y < kHeight; ++y) image.At(x, y) ^= 0xFF;
}

void AppendBigEndian(Bytes& bytes, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

void Append(Bytes& bytes, std::span<const std::uint8_t> added) {
  bytes.insert(bytes.end(), added.begin(), added.end());
}

std::uint32_t Adler32(std::span<const std::uint8_t> bytes) {
  std::uint32_t low = 1;
  std::uint32_t high = 0;
  for (const std::uint8_t byte : bytes) {
    low = (low + byte) % 65521;
    high = (high + low) % 65521;
  }
  return high << 16 | low;
}

/// length:u32 type payload crc:u32, big-endian; the check sum covers type and payload.
void AppendPngChunk(Bytes& file, std::string_view type, std::span<const std::uint8_t> payload) {
  AppendBigEndian(file, static_cast<std::uint32_t>(payload.size()));
  const std::size_t checked = file.size();
  file.insert(file.end(), type.begin(), type.end());
  Append(file, payload);
  AppendBigEndian(file, Kestrel::Crc32(std::span(file).subspan(checked)));
}

/// A zlib stream (RFC 1950) of one stored block (RFC 1951). Nothing is compressed, because that keeps the code short,
/// and the files have only a few kilobytes.
Bytes ZlibStored(std::span<const std::uint8_t> bytes) {
  static_assert(kHeight * (kWidth + 1) <= 0xFFFF, "a stored block has a length of 16 bits");
  const auto length = static_cast<std::uint32_t>(bytes.size());
  const auto lowByte = [](std::uint32_t value) { return static_cast<std::uint8_t>(value); };
  Bytes stream = {0x78, 0x01, 0x01, lowByte(length), lowByte(length >> 8), lowByte(~length), lowByte(~length >> 8)};
  Append(stream, bytes);
  AppendBigEndian(stream, Adler32(bytes));
  return stream;
}

Bytes PngFile(const Image& image) {
  Bytes file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  Bytes header;
  AppendBigEndian(header, kWidth);
  AppendBigEndian(header, kHeight);
  Append(header, std::array<std::uint8_t, 5>{8, 0, 0, 0, 0});  // 8 bits of grey, not interlaced
  AppendPngChunk(file, "IHDR", header);
  AppendPngChunk(file, "IDAT", ZlibStored(image.Rows()));
  AppendPngChunk(file, "IEND", {});
  return file;
}

}  // namespace

std::vector<std::uint8_t> MakePicture(std::uint64_t seed, std::uint64_t cameraNumber, std::uint32_t pictureNumber) {
  Image image;
  DrawGradient(image, Random{seed, cameraNumber});
  DrawNumber(image, std::to_string(cameraNumber));
  DrawColumn(image, pictureNumber % kWidth);
  return PngFile(image);
}

}  // namespace simulator
