/// Pictures of cameras, made fit for a browser: decoded here and written anew, so that none of their bytes reaches the
/// browser's own decoders.
///
/// The bytes may be anything. JPEG, PNG and BMP are read, because cameras send those. Checked before anything is
/// decoded: 16 MiB of file, 16384 pixels in each direction, 24 million pixels, and for a JPEG the number of scans, each
/// of which may go over all pixels. While it decodes, 320 MiB of memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

namespace tarnfind {

inline constexpr std::size_t kMostPictureFileBytes = 16 << 20;
inline constexpr std::uint64_t kMostPicturePixels = 24'000'000;
inline constexpr std::size_t kMostPictureMemory = 320 << 20;

/// What a picture becomes: it is scaled down, never up, and keeps its proportions.
struct ShownPicture {
  int width;              ///< at most, in pixels
  int height;             ///< at most
  std::size_t mostBytes;  ///< the quality goes down until it fits
};
inline constexpr ShownPicture kPictureOnPage = {640, 480, std::numeric_limits<std::size_t>::max()};
inline constexpr ShownPicture kPictureInReport = {320, 240, 24 << 10};

/// A JPEG; empty where the picture cannot be shown. Any thread; throws nothing but std::bad_alloc.
std::vector<std::uint8_t> ShowablePicture(std::span<const std::uint8_t> picture, const ShownPicture& shown,
                                          std::uint64_t mostPixels = kMostPicturePixels);

}  // namespace tarnfind
