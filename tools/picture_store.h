/// The folder that received pictures are kept in.
#pragma once

#include <cstdint>
#include <deque>
#include <filesystem>
#include <limits>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace tarnfind {

struct PictureFolder {
  std::string path = {};  ///< UTF-8; empty: no pictures are kept
  std::uint64_t mostBytes = std::numeric_limits<std::uint64_t>::max();
};

/// Any thread may keep a picture.
class PictureStore {
 public:
  struct Kept {
    std::string file;   ///< name inside the folder; empty where the picture could not be kept
    std::string error;  ///< folder and reason; empty where the picture was kept
  };

  /// Makes the folder where it is missing; throws Failure where that does not work.
  explicit PictureStore(const PictureFolder& folder);

  /// Writes the picture to a file that did not exist: the camera's text, a number, and an extension by content. Leaves
  /// no file behind where that fails. Where the pictures of this store have more bytes than they may, the oldest go.
  Kept Keep(std::span<const std::uint8_t> picture, std::string_view cameraText);

 private:
  /// Counts the newest picture, and removes the oldest above the limit; the newest stays however large it is.
  void RemoveOldest(const std::filesystem::path& newest, std::uint64_t size);

  std::mutex mutex_;
  std::filesystem::path folder_;
  const std::uint64_t mostBytes_;
  std::uint64_t lastNumber_ = 0;
  std::uint64_t keptBytes_ = 0;
  std::deque<std::pair<std::filesystem::path, std::uint64_t>> kept_;  ///< with their sizes, the oldest first
};

/// Of a camera's text, which leaves room for the number and the extension where a name may have 255 bytes.
inline constexpr std::size_t kMostCameraTextBytes = 120;

/// A text as a file name that every system takes, or as its beginning: no separators, reserved or control characters,
/// no dots and blanks at its ends, at most so many bytes, never empty.
std::string SafeFileName(std::string_view text, std::size_t mostBytes);
/// "png", "jpg" or "bmp" by the first bytes, else "bin".
std::string_view PictureExtension(std::span<const std::uint8_t> picture);

}  // namespace tarnfind
