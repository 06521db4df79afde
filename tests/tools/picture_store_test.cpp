#include "tools/picture_store.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "tools/crc32.h"
#include "tools/failure.h"

namespace tarnfind {
namespace {

std::span<const std::uint8_t> Bytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

class Pictures : public testing::Test {
 protected:
  void SetUp() override { std::filesystem::remove_all(folder_); }
  void TearDown() override { std::filesystem::remove_all(folder_); }
  std::string Content(const std::string& file) const {
    std::ostringstream content;
    content << std::ifstream(folder_ / file, std::ios::binary).rdbuf();
    return content.str();
  }
  const std::filesystem::path folder_ = std::filesystem::path(testing::TempDir()) / "tarnfind-pictures" / "new";
};

TEST_F(Pictures, AreKeptByteForByteUnderACountedName) {
  PictureStore store(folder_.string());
  EXPECT_EQ(store.Keep(Bytes("\x89PNG\r\n\x1A\nab"), "Cam").file, "Cam-0001.png");
  EXPECT_EQ(store.Keep(Bytes("BMxy"), "Cam").file, "Cam-0002.bmp");
  EXPECT_EQ(Content("Cam-0001.png"), "\x89PNG\r\n\x1A\nab");
  EXPECT_EQ(Content("Cam-0002.bmp"), "BMxy");
}

TEST_F(Pictures, OfAnEarlierRunStay) {
  EXPECT_EQ(PictureStore(folder_.string()).Keep(Bytes("first"), "Cam").file, "Cam-0001.bin");
  EXPECT_EQ(PictureStore(folder_.string()).Keep(Bytes("second"), "Cam").file, "Cam-0002.bin");
  EXPECT_EQ(Content("Cam-0001.bin"), "first");
}

TEST_F(Pictures, ThatCannotBeWrittenAreReported) {
  PictureStore store(folder_.string());
  std::filesystem::remove_all(folder_);
  EXPECT_EQ(store.Keep(Bytes("x"), "Cam").error, "cannot write the picture \"Cam-0001.bin\"");
}

TEST_F(Pictures, NeedAFolder) {
  std::filesystem::create_directories(folder_.parent_path());
  std::ofstream(folder_) << "a file in its place";
  EXPECT_THROW(PictureStore(folder_.string()), Failure);
  EXPECT_THROW(PictureStore((folder_ / "below").string()), Failure);
}

TEST(FileName, IsSafeOnEverySystem) {
  const std::pair<std::string, std::string> rows[] = {
      {"Camera Küche", "Camera Küche"},
      {"../../etc/passwd", "_.._etc_passwd"},
      {"C:\\x<y>|\"?*", "C__x_y_____"},
      {".hidden", "hidden"},
      {"a\x1b[m\nb\xFF", "a_[m_b_"},
      {" dots. . ", "dots"},
      {"...", "camera"},
      {"", "camera"},
      {std::string(119, 'a') + "京", std::string(119, 'a')},
  };
  for (const auto& [text, name] : rows) EXPECT_EQ(SafeFileName(text), name);
}

TEST(PictureExtension, FollowsTheFirstBytes) {
  EXPECT_EQ(PictureExtension(Bytes("\xFF\xD8\xFF\xE0")), "jpg");
  EXPECT_EQ(PictureExtension(Bytes("\x89PNG\r\n\x1A")), "bin");
  EXPECT_EQ(PictureExtension({}), "bin");
}

TEST(Checksum, IsTheOneOfZipAndPng) {
  EXPECT_EQ(Crc32(Bytes("123456789")), 0xCBF43926U);
  EXPECT_EQ(Crc32({}), 0U);
}

}  // namespace
}  // namespace tarnfind
