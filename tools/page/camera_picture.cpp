#include "tools/page/camera_picture.h"

#include <stb/stb_image.h>
#include <stb/stb_image_resize.h>
#include <stb/stb_image_write.h>

#include <algorithm>
#include <memory>
#include <string_view>

namespace tarnfind {

namespace {

constexpr int kMostSide = 16384;
/// Ordinary progressive files have ten scans or so; small pictures may have more.
constexpr std::uint64_t kMostFullScans = 16;
constexpr int kChannels = 3;
constexpr int kQualities[] = {80, 60, 40, 20, 5};

/// How often "FF DA" stands in the file, which begins a scan of a JPEG.
std::uint64_t CountScans(std::span<const std::uint8_t> picture) {
  std::uint64_t scans = 0;
  for (std::size_t i = 1; i < picture.size(); ++i) scans += picture[i - 1] == 0xFF && picture[i] == 0xDA;
  return scans;
}

/// Whether no table of codes has more of them than stb has room for, which does not check. Wherever "FF C4" stands it
/// may begin such tables: stb reads on behind damage.
bool FitCodeTables(std::span<const std::uint8_t> picture) {
  constexpr std::size_t kMostCodes = 256, kLengths = 16;
  constexpr int kMostPlaces = 256;  // far more than any file has; each may take a while
  int places = 0;
  const auto byte = [&](std::size_t at) -> std::size_t { return at < picture.size() ? picture[at] : 0; };
  for (std::size_t start = 0; start + 1 < picture.size(); ++start) {
    if (picture[start] != 0xFF || picture[start + 1] != 0xC4) continue;
    if (++places > kMostPlaces) return false;
    const std::size_t end = start + 2 + byte(start + 2) * 256 + byte(start + 3);
    for (std::size_t table = start + 4; table < end;) {
      std::size_t codes = 0;
      for (std::size_t i = 1; i <= kLengths; ++i) codes += byte(table + i);
      if (codes > kMostCodes) return false;
      table += 1 + kLengths + codes;
    }
  }
  return true;
}

bool IsWithinLimits(std::span<const std::uint8_t> picture, std::uint64_t mostPixels) {
  int width = 0, height = 0, channels = 0;
  // In other formats than JPEG, for which stb wants this byte, the same bytes stand among the pixels.
  const bool mayBeJpeg = !picture.empty() && picture[0] == 0xFF;
  // The tables first, because asking for the size reads those before it.
  if (picture.size() > kMostPictureFileBytes || (mayBeJpeg && !FitCodeTables(picture)) ||
      !stbi_info_from_memory(picture.data(), static_cast<int>(picture.size()), &width, &height, &channels))
    return false;
  if (width < 1 || height < 1 || width > kMostSide || height > kMostSide) return false;
  const std::uint64_t pixels = static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
  return pixels <= mostPixels && (!mayBeJpeg || CountScans(picture) * pixels <= kMostFullScans * mostPixels);
}

struct FreePixels {
  void operator()(stbi_uc* pixels) const { stbi_image_free(pixels); }
};

struct Pixels {
  int width;
  int height;
  std::vector<std::uint8_t> bytes;  ///< red, green, blue; empty: there are none
};

/// As large as fits, at least one pixel in each direction.
Pixels Decode(std::span<const std::uint8_t> picture, const ShownPicture& shown) {
  int width = 0, height = 0, channels = 0;
  const std::unique_ptr<stbi_uc, FreePixels> decoded(
      stbi_load_from_memory(picture.data(), static_cast<int>(picture.size()), &width, &height, &channels, kChannels));
  if (!decoded) return {};
  const double scale =
      std::min({1.0, static_cast<double>(shown.width) / width, static_cast<double>(shown.height) / height});
  Pixels scaled = {std::max(1, static_cast<int>(width * scale)), std::max(1, static_cast<int>(height * scale)), {}};
  scaled.bytes.resize(static_cast<std::size_t>(scaled.width) * static_cast<std::size_t>(scaled.height) * kChannels);
  if (!stbir_resize_uint8(decoded.get(), width, height, 0, scaled.bytes.data(), scaled.width, scaled.height, 0,
                          kChannels))
    return {};
  return scaled;
}

std::vector<std::uint8_t> Encode(const Pixels& pixels, int quality) {
  std::vector<std::uint8_t> jpeg;
  const auto append = [](void* target, void* bytes, int count) {
    const auto* const begin = static_cast<const std::uint8_t*>(bytes);
    auto& written = *static_cast<std::vector<std::uint8_t>*>(target);
    written.insert(written.end(), begin, begin + count);
  };
  stbi_write_jpg_to_func(append, &jpeg, pixels.width, pixels.height, kChannels, pixels.bytes.data(), quality);
  return jpeg;
}

}  // namespace

std::vector<std::uint8_t> ShowablePicture(std::span<const std::uint8_t> picture, const ShownPicture& shown,
                                          std::uint64_t mostPixels) {
  if (!IsWithinLimits(picture, mostPixels)) return {};
  const Pixels pixels = Decode(picture, shown);
  if (pixels.bytes.empty()) return {};
  for (const int quality : kQualities)
    if (std::vector<std::uint8_t> jpeg = Encode(pixels, quality); jpeg.size() <= shown.mostBytes) return jpeg;
  return {};
}

}  // namespace tarnfind
