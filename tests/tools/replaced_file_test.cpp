#include "tools/replaced_file.h"

#include <gtest/gtest.h>

#include <iterator>

#include "tools/failure.h"

namespace tarnfind {
namespace {

namespace fs = std::filesystem;

class Replacing : public testing::Test {
 protected:
  Replacing() {
    fs::remove_all(folder_);
    fs::create_directories(folder_);
    std::ofstream(file_) << "before";
  }
  ~Replacing() override { fs::remove_all(folder_); }

  static std::string Content(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  }
  std::string Part() const { return file_.string() + ".part"; }

  const fs::path folder_ = fs::path(testing::TempDir()) / "tarnfind-replaced";
  const fs::path file_ = folder_ / "file";
};

TEST_F(Replacing, TakesPlaceWhenAllIsWrittenAndLeavesTheOldFileOtherwise) {
  {
    ReplacedFile unfinished(file_.string());
    unfinished.Stream() << "a half";
    EXPECT_EQ(Content(file_), "before");
  }
  EXPECT_EQ(Content(file_), "before");
  EXPECT_FALSE(fs::exists(Part()));
  ReplacedFile written(file_.string());
  written.Write(std::as_bytes(std::span("all of it", 9)));
  EXPECT_EQ(Content(file_), "before");
  written.Finish();
  EXPECT_EQ(Content(file_), "all of it");
  EXPECT_FALSE(fs::exists(Part()));
}

TEST_F(Replacing, TouchesNothingThatIsInTheWay) {
  const auto errorOf = [](const fs::path& path) -> std::string {
    try {
      ReplacedFile(path.string());
      return {};
    } catch (const Failure& failure) {
      return failure.what();
    }
  };
  EXPECT_EQ(errorOf(folder_), "cannot write \"" + folder_.string() + "\": it is no ordinary file");
  std::ofstream(Part()) << "somebody's";
  EXPECT_EQ(errorOf(file_),
            "cannot write \"" + file_.string() + "\": \"" + Part() + "\" is in the way; rename or remove it");
  EXPECT_EQ(Content(Part()) + " " + Content(file_), "somebody's before");
}

TEST_F(Replacing, KeepsALinkAndThePermissions) {
  std::error_code cannot;
  fs::create_symlink(file_, folder_ / "link", cannot);
  if (cannot) GTEST_SKIP() << "no links here";
  constexpr fs::perms kMine = fs::perms::owner_read | fs::perms::owner_write;
  fs::permissions(file_, kMine);
  ReplacedFile written((folder_ / "link").string());
  EXPECT_EQ(fs::status(Part()).permissions(), kMine) << "while it is written, too";
  written.Stream() << "after";
  written.Finish();
  EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
  EXPECT_EQ(Content(file_), "after");
  EXPECT_EQ(fs::status(file_).permissions(), kMine);
}

}  // namespace
}  // namespace tarnfind
