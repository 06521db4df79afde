#include "tools/page/camera_picture.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>

namespace tarnfind {
namespace {

std::string Segment(char marker, const std::string& content) {
  const std::size_t length = content.size() + 2;
  return std::string("\xFF") + marker + static_cast<char>(length >> 8) + static_cast<char>(length & 0xFF) + content;
}

/// A grey JPEG. Both tables have the one code "0", which means no difference and the end of a block.
std::string Jpeg(int width, int height, int scans = 1) {
  const auto word = [](int value) {
    return std::string{static_cast<char>(value >> 8), static_cast<char>(value & 0xFF)};
  };
  const std::string oneCode = '\1' + std::string(16, '\0');
  std::string jpeg =
      "\xFF\xD8" + Segment('\xDB', '\0' + std::string(64, '\x10')) +
      Segment(scans == 1 ? '\xC0' : '\xC2', "\x08" + word(height) + word(width) + std::string("\1\1\x11\0", 4)) +
      Segment('\xC4', '\0' + oneCode) + Segment('\xC4', '\x10' + oneCode);
  const auto blocks = static_cast<std::size_t>((width + 7) / 8) * static_cast<std::size_t>((height + 7) / 8);
  // One bit for each block, and in a baseline file another for its end.
  const std::string data((blocks * (scans == 1 ? 2 : 1) + 7) / 8, '\0');
  for (int scan = 0; scan < scans; ++scan) {
    const char* const spectrum = scans == 1 ? "\0\x3F\0" : scan == 0 ? "\0\0\0" : "\1\x3F\0";
    jpeg += Segment('\xDA', std::string("\1\1\0", 3) + std::string(spectrum, 3)) + data;
  }
  return jpeg + "\xFF\xD9";
}

/// "8x8" of a JPEG, and "" of nothing.
std::string SizeOf(const std::vector<std::uint8_t>& jpeg) {
  const std::string text(jpeg.begin(), jpeg.end());
  if (text.empty()) return "";
  const auto at = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const std::size_t frame = text.find("\xFF\xC0");
  return fmt::format("{}x{}", at(frame + 7) * 256 + at(frame + 8), at(frame + 5) * 256 + at(frame + 6));
}

TEST(CameraPicture, IsMadeAnewWithinItsLimits) {
  const std::string png(
      "\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR\0\0\0\1\0\0\0\1\x08\6\0\0\0\x1F\x15\xC4\x89\0\0\0\x0AIDAT\x78\x9C\x63\0\1\0\0\5"
      "\0"
      "\1\x0D\x0A\x2D\xB4\0\0\0\0IEND\xAE\x42\x60\x82",
      67);
  const std::string bmp =
      std::string("BM\x3A\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\1\0\0\0\1\0\0\0\1\0\x18\0\0\0\0\0\4\0\0\0", 38) +
      std::string(16, '\0') + std::string("\1\2\3\0", 4);
  const struct {
    const char* name;
    std::string picture;
    std::uint64_t mostPixels;
    std::string size;
  } rows[] = {
      {"jpeg", Jpeg(8, 8), 64, "8x8"},
      {"a pixel too many", Jpeg(8, 8), 63, ""},
      {"png", png, 64, "1x1"},
      {"bmp", bmp, 64, "1x1"},
      {"bmp with bytes of a table", bmp + "\xFF\xC4" + std::string(20, '\xFF'), 64, "1x1"},
      {"progressive", Jpeg(8, 8, 16), 64, "8x8"},
      {"a scan too many", Jpeg(8, 8, 17), 64, ""},
      {"large", Jpeg(1280, 720), kMostPicturePixels, "640x360"},
      {"high", Jpeg(8, 1000), kMostPicturePixels, "3x480"},
      {"flat", Jpeg(16000, 1), kMostPicturePixels, "640x1"},
      {"too wide", Jpeg(16385, 1), kMostPicturePixels, ""},
      {"huge", Jpeg(16000, 16000).substr(0, 500), kMostPicturePixels, ""},
      {"cut in its head", Jpeg(8, 8).substr(0, 100), 64, ""},
      {"cut png", png.substr(0, 50), 64, ""},
      {"another format", "GIF89a\1\0\1\0\x80\1\0", 64, ""},
      {"text", "<script>", 64, ""},
      {"nothing", "", 64, ""},
      {"too long", Jpeg(8, 8) + std::string(kMostPictureFileBytes, '\0'), 64, ""},
  };
  for (const auto& row : rows) {
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(row.picture.data());
    EXPECT_EQ(SizeOf(ShowablePicture({bytes, row.picture.size()}, kPictureOnPage, row.mostPixels)), row.size)
        << row.name;
  }
}

}  // namespace
}  // namespace tarnfind
