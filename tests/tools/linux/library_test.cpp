#include "tools/library.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "tools/failure.h"
#include "tools/platform.h"

namespace tarnfind {
namespace {

TEST(Library, NamesTheFileThatIsAtFault) {
  const std::filesystem::path folder = std::filesystem::absolute(testing::TempDir()) / "library_test";
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  const std::filesystem::path finder = folder / platform::LibraryFileName();
  const std::filesystem::path platformLibrary = folder / platform::PlatformLibraryFileName();
  const auto complaint = [&] {
    try {
      LoadFinderLibrary(finder.string());
      return std::string("loaded");
    } catch (const NoChannel& error) {
      return error.Step() + ": " + error.what();
    }
  };
  EXPECT_TRUE(complaint().starts_with("library: the finder library " + finder.string() + " is missing"));
  std::ofstream(finder) << "no library";
  EXPECT_TRUE(complaint().starts_with("library: the finder library " + finder.string() + " cannot be loaded: "));
  std::filesystem::copy_file(platform::ExecutableFolder() / platform::LibraryFileName(), finder,
                             std::filesystem::copy_options::overwrite_existing);
  EXPECT_TRUE(complaint().starts_with("platform library: the video server's platform library libTarnDBI.so, which"));
  EXPECT_TRUE(complaint().ends_with(" is missing; put it beside that file"));
  std::ofstream(platformLibrary) << "no library";
  EXPECT_TRUE(complaint().starts_with("platform library: the video server's platform library " +
                                      platformLibrary.string() + ", which the finder library "));
  std::filesystem::remove_all(folder);
}

/// The library knows no page 850, and takes 1252.
TEST(SystemText, IsInThePageThatTheLibraryUses) {
  setenv("TARN_ANSI_CODE_PAGE", "850", 1);
  EXPECT_EQ(ErrorText(std::runtime_error("\xFC")), "ü");
  unsetenv("TARN_ANSI_CODE_PAGE");
}

}  // namespace
}  // namespace tarnfind
