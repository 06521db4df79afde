#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

#include "platform/modules.h"

using namespace platform;

namespace {

using HandOver = int(int);

/// The module lies beside the test program.
std::u16string ModulePath() {
  char16_t path[1024] = {};
  GetModuleFileNameW(nullptr, path, 1024);
  return std::filesystem::path(path).replace_filename(TARN_UNLOAD_MODULE).u16string();
}

HandOver* Function(ModuleHandle module) {
  return reinterpret_cast<HandOver*>(GetProcAddress(module, "HandOver"));
}

TEST(Unload, LeavesNoWorkerInTheModulesCode) {
  const std::u16string path = ModulePath();
  for (int cycle = 0; cycle < 100; ++cycle) {
    const ModuleHandle module = LoadLibraryExW(path.c_str(), 0);
    ASSERT_NE(module, nullptr);
    std::thread other([module] { EXPECT_EQ(Function(module)(5), 5); });
    EXPECT_EQ(Function(module)(5), 5);
    other.join();
    EXPECT_EQ(GetModuleHandleW(path.c_str()), module) << "which is not counted";
    ASSERT_TRUE(FreeLibrary(module));
    ASSERT_EQ(GetModuleHandleW(path.c_str()), nullptr) << "it must really be gone";
  }
}

TEST(UnloadDeathTest, ProcessMayEndInTheMiddleOfHandOvers) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto handOverAndExit = [] {
    HandOver* const handOver = Function(LoadLibraryExW(ModulePath().c_str(), 0));
    handOver(1);
    for (int i = 0; i < 2; ++i)
      std::thread([handOver] {
        while (true) handOver(1000);
      }).detach();
    handOver(100);
    std::exit(0);
  };
  for (int i = 0; i < 5; ++i) EXPECT_EXIT(handOverAndExit(), testing::ExitedWithCode(0), "");
}

}  // namespace
