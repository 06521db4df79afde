/// The pictures that a page may ask for: those that its lines have named, nothing else of the folder.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace tarnfind {

/// The bytes of the file. Of a file that is too large, kMostPictureFileBytes and one more, so that ShowablePicture
/// refuses it. Nothing where it cannot be read.
std::optional<std::vector<std::uint8_t>> ReadPictureFile(const std::filesystem::path& file);

/// One thread adds, any thread finds.
class PagePictures {
 public:
  explicit PagePictures(std::filesystem::path folder) : folder_(std::move(folder)) {}

  /// name: of a file inside the folder, as PictureStore made it. The oldest name goes where there are too many.
  void Add(const std::string& name);
  /// Empty where no line has named it.
  std::optional<std::filesystem::path> Find(const std::string& name) const;

 private:
  const std::filesystem::path folder_;
  mutable std::mutex mutex_;
  std::unordered_set<std::string> names_;
  std::deque<std::string> order_;
};

}  // namespace tarnfind
