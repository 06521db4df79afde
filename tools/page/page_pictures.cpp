#include "tools/page/page_pictures.h"

#include <algorithm>
#include <fstream>

#include "tools/page/camera_picture.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

constexpr std::size_t kMostNames = 100'000;

}  // namespace

std::optional<std::vector<std::uint8_t>> ReadPictureFile(const std::filesystem::path& file) {
  std::error_code failed;
  const std::uintmax_t size = std::filesystem::file_size(file, failed);
  std::ifstream stream(file, std::ios::binary);
  if (failed || !stream) return std::nullopt;
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(std::min<std::uintmax_t>(size, kMostPictureFileBytes + 1)));
  stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!stream) return std::nullopt;
  return bytes;
}

void PagePictures::Add(const std::string& name) {
  const std::lock_guard lock(mutex_);
  if (!names_.insert(name).second) return;
  order_.push_back(name);
  if (order_.size() <= kMostNames) return;
  names_.erase(order_.front());
  order_.pop_front();
}

std::optional<std::filesystem::path> PagePictures::Find(const std::string& name) const {
  const std::lock_guard lock(mutex_);
  if (!names_.contains(name)) return std::nullopt;
  return folder_ / PathFromUtf8(name);
}

}  // namespace tarnfind
