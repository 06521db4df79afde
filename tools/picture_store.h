/// The folder that received pictures are kept in.
#pragma once

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <span>
#include <string>
#include <string_view>

namespace tarnfind {

/// Any thread may keep a picture.
class PictureStore {
 public:
  struct Kept {
    std::string file;   ///< name inside the folder; empty where the picture could not be kept
    std::string error;  ///< folder and reason; empty where the picture was kept
  };

  /// Makes the folder where it is missing; throws Failure where that does not work.
  explicit PictureStore(const std::string& folder);

  /// Writes the picture to a file that did not exist: the camera's text, a number, and an extension by content. Leaves
  /// no file behind where that fails.
  Kept Keep(std::span<const std::uint8_t> picture, std::string_view cameraText);

 private:
  std::mutex mutex_;
  std::filesystem::path folder_;
  std::uint64_t lastNumber_ = 0;
};

/// A camera's text as the beginning of a file name that every system takes: no separators, reserved or control
/// characters, no dots and blanks at its ends, bounded in length, never empty.
std::string SafeFileName(std::string_view cameraText);
/// "png", "jpg" or "bmp" by the first bytes, else "bin".
std::string_view PictureExtension(std::span<const std::uint8_t> picture);

}  // namespace tarnfind
