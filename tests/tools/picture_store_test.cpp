#include "tools/picture_store.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "tools/failure.h"

namespace tarnfind {
namespace {

std::span<const std::uint8_t> Bytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

TEST(Pictures, AreKeptByteForByteUnderNewNamesOrReported) {
  const std::filesystem::path folder = std::filesystem::path(testing::TempDir()) / "tarnfind-pictures" / "new";
  const auto content = [&](const std::string& name) {
    std::ifstream file(folder / name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  };
  std::filesystem::remove_all(folder);
  PictureStore store({folder.string()});
  EXPECT_EQ(store.Keep(Bytes("\x89PNG\r\n\x1A\nab"), "Cam").file, "Cam-0001.png");
  EXPECT_EQ(store.Keep(Bytes("first"), "Cam").file, "Cam-0002.bin");
  EXPECT_EQ(store.Keep(Bytes("\xFF\xD8\xFF\xE0"), "Cam").file, "Cam-0003.jpg");
  // A later run.
  EXPECT_EQ(PictureStore({folder.string()}).Keep(Bytes("second"), "Cam").file, "Cam-0001.bin");
  EXPECT_EQ(PictureStore({folder.string()}).Keep(Bytes("third"), "Cam").file, "Cam-0003.bin");
  EXPECT_EQ(content("Cam-0001.png"), "\x89PNG\r\n\x1A\nab");
  EXPECT_EQ(content("Cam-0002.bin"), "first");
  // Of 10 bytes at most.
  PictureStore small({folder.string(), 10});
  for (const char* const picture : {"12345", "67890", "x"}) small.Keep(Bytes(picture), "S");
  EXPECT_FALSE(std::filesystem::exists(folder / "S-0001.bin"));
  EXPECT_EQ(content("S-0002.bin") + content("S-0003.bin"), "67890x");

  std::filesystem::remove_all(folder);
  EXPECT_EQ(store.Keep(Bytes("x"), "Cam").error,
            "cannot keep pictures in \"" + folder.string() + "\": No such file or directory");
  std::ofstream(folder) << "a file in its place";
  EXPECT_THROW(PictureStore({folder.string()}), Failure);
  EXPECT_THROW(PictureStore({(folder / "below").string()}), Failure);
  std::filesystem::remove_all(folder.parent_path());
}

TEST(FileName, IsSafeOnEverySystem) {
  const std::pair<std::string, std::string> rows[] = {
      {"Camera Küche", "Camera Küche"},
      {"../../etc/passwd", "_.._etc_passwd"},
      {"C:\\x<y>|\"?*", "C__x_y_____"},
      {"a\x1b[m\nb\xFF", "a_[m_b_"},
      {" dots. . ", "dots"},
      {"...", "camera"},
      {std::string(119, 'a') + "京", std::string(119, 'a')},
  };
  for (const auto& [text, name] : rows) EXPECT_EQ(SafeFileName(text, kMostCameraTextBytes), name);
}

}  // namespace
}  // namespace tarnfind
