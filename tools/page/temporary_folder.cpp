#include "tools/page/temporary_folder.h"

#include <fmt/format.h>

#include <random>
#include <system_error>

#include "tools/failure.h"

namespace tarnfind {

TemporaryFolder::TemporaryFolder() {
  constexpr int kAttempts = 10;
  std::random_device random;
  std::error_code failed;
  for (int i = 0; i < kAttempts; ++i) {
    const std::filesystem::path parent = std::filesystem::temp_directory_path(failed);
    if (failed) break;
    path_ = parent / fmt::format("tarnfind-{:08x}{:08x}", random(), random());
    if (!std::filesystem::create_directory(path_, failed)) continue;  // that name is taken
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all, failed);
    if (!failed) return;
    break;
  }
  throw Failure(fmt::format("cannot make a temporary folder: {}", failed.message()));
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code left;  // what is still being written stays
  std::filesystem::remove_all(path_, left);
}

}  // namespace tarnfind
