#include "tools/page/page_pictures.h"

namespace tarnfind {

namespace {

constexpr std::size_t kMostNames = 100'000;

}  // namespace

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
  return folder_ / std::filesystem::path(std::u8string(name.begin(), name.end()));
}

}  // namespace tarnfind
