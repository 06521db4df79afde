/// A folder for one run, which only this user may look into.
#pragma once

#include <cstdint>
#include <filesystem>

namespace tarnfind {

/// How many bytes of pictures a run may keep in it.
inline constexpr std::uint64_t kMostTemporaryPictureBytes = 256 << 20;

class TemporaryFolder {
 public:
  /// Throws Failure where it cannot be made.
  TemporaryFolder();
  /// Removes it with all that is in it.
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace tarnfind
