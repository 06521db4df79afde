/// The built library, seen from outside through the debugger's file.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/modules.h"

namespace {

TEST(Library, SpeaksInTheOrderOfItsLoadEachTimeItIsLoaded) {
  const std::filesystem::path folder = std::filesystem::temp_directory_path() / "tarn_library_load";
  std::filesystem::remove_all(folder);
  std::filesystem::create_directory(folder);
  std::ofstream(folder / "settings.reg") << "Windows Registry Editor Version 5.00\n\n"
                                            "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrell\\Kestrel\\Socket]\n"
                                            "\"DisableTcpAck\"=dword:00000001\n";
  setenv("TARN_REGISTRY", (folder / "settings.reg").c_str(), 1);
  setenv("TARN_DEBUGGER", (folder / "debugger").c_str(), 1);
  setenv("TARN_SYSTEM_DIRECTORY", "/nowhere", 1);
  for (int i = 0; i < 2; ++i) {
    const platform::ModuleHandle library = platform::LoadLibraryExW(TARN_LIBRARY_FILE, 0);
    ASSERT_TRUE(library);
    platform::FreeLibrary(library);
    EXPECT_FALSE(platform::GetModuleHandleW(TARN_LIBRARY_FILE));
  }
  std::ifstream debugger(folder / "debugger");
  const std::string once = "TCP ACKNOWLEDGES ON SEND() DISABLEDSTATOUT: Failed to load /nowhere\\ws2_32.dll";
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(debugger), {}), once + once);
  std::filesystem::remove_all(folder);
}

}  // namespace
