#include "platform/registry.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "platform/error_codes.h"
#include "platform/linux/registry_file.h"

using namespace platform;

namespace {

using Bytes = std::vector<std::uint8_t>;

/// The value "V" below the key A\Bc of a file that holds these lines.
std::optional<RegistryValue> ValueIn(const std::string& lines) {
  const RegistryKeys keys =
      ParseRegistryFile("Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\A\\Bc]\r\n" + lines);
  const auto key = keys.find(u"A\\BC");
  const RegistryValue* const value = key == keys.end() ? nullptr : FindValue(key->second, u"v");
  return value ? std::optional(*value) : std::nullopt;
}

TEST(RegistryFile, ValuesOfAllFormsAreRead) {
  const struct {
    const char* name;
    std::string lines;
    std::uint32_t type;
    Bytes data;
  } rows[] = {
      {"text", "\"V\"=\"a\xC3\xA4\"", REG_SZ, {'a', 0, 0xE4, 0, 0, 0}},
      {"empty text", "\"V\"=\"\"", REG_SZ, {0, 0}},
      {"escaped text", R"("V"="\\\"")", REG_SZ, {'\\', 0, '"', 0, 0, 0}},
      {"dword", "\"V\"=dword:0000fFa5", REG_DWORD, {0xA5, 0xFF, 0, 0}},
      {"binary", "\"V\"=hex:01,02,FE", REG_BINARY, {1, 2, 0xFE}},
      {"qword", "\"V\"=hex(b):01,00,00,00,00,00,00,80", REG_QWORD, {1, 0, 0, 0, 0, 0, 0, 0x80}},
      {"continued, with blanks", "\"V\" = hex:01,\\\r\n  02", REG_BINARY, {1, 2}},
      {"continued", "\"V\"=hex:01,\\\r\n  02,\\\r\n  03\r\n\"W\"=\"\"", REG_BINARY, {1, 2, 3}},
      {"indented", "; \"V\"=dword:9\n\t \"V\" = dword:2 \n", REG_DWORD, {2, 0, 0, 0}},
      {"last one counts", "\"V\"=dword:1\n\"v\"=dword:2", REG_DWORD, {2, 0, 0, 0}},
      {"behind bad lines", "\"V\n=\n[broken\n[hkey_local_machine\\a\\bc]\n\"V\"=dword:4", REG_DWORD, {4, 0, 0, 0}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const auto value = ValueIn(row.lines);
    ASSERT_TRUE(value);
    EXPECT_EQ(value->type, row.type);
    EXPECT_EQ(value->data, row.data);
  }
}

TEST(RegistryFile, WhatIsMalformedOrElsewhereIsSkipped) {
  for (const char* lines :
       {"\"V\"=dword:", "\"V\"=dword:123456789", "\"V\"=dword:1x", "\"V\"=hex:1,2,xx", "\"V\"=hex(:1", "\"V\"=hex(2:1",
        "\"V\"=\"open", "\"V\"=\"a\"b", "\"V\"=\"a\\", "\"V\"", "\"V=dword:1", "V=dword:1", "\"V\"=other:1",
        "[HKEY_CURRENT_USER\\A\\Bc]\n\"V\"=dword:1", "[HKEY_LOCAL_MACHINES\\A\\Bc]\n\"V\"=dword:1",
        "\"V\"=dword:1\n\"V\"=-", "\"V\"=dword:1\n[-HKEY_LOCAL_MACHINE\\A]", "[HKEY_LOCAL_MACHINE\\A\n\"V\"=dword:1"})
    EXPECT_FALSE(ValueIn(lines)) << lines;
  EXPECT_TRUE(ValueIn("\"V\"=dword:1\n[-HKEY_LOCAL_MACHINE\\A\\B]"));
}

TEST(RegistryFile, Utf16IsReadBehindItsByteOrderMark) {
  const std::u16string text =
      u"\uFEFFWindows Registry Editor Version 5.00\r\n[HKEY_LOCAL_MACHINE\\K]\r\n@=\"\u6771\"\r\n";
  const RegistryKeys keys = ParseRegistryFile({reinterpret_cast<const char*>(text.data()), text.size() * 2});
  EXPECT_EQ(FindValue(keys.at(u"K"), u"")->data, (Bytes{0x71, 0x67, 0, 0}));
}

TEST(RegistryFile, WhatIsNoFileHasNoKeys) {
  const std::filesystem::path folder = std::filesystem::path(testing::TempDir()) / "platform_tests_registry";
  std::filesystem::create_directory(folder);
  const std::filesystem::path pipe = folder / "pipe", large = folder / "large";
  mkfifo(pipe.c_str(), 0600);
  std::fstream writer(pipe);
  writer << "[HKEY_LOCAL_MACHINE\\K]\n" << std::flush;
  std::ofstream(large) << "[HKEY_LOCAL_MACHINE\\K]\n";
  std::filesystem::resize_file(large, 16 << 20);
  EXPECT_EQ(ReadRegistryFile(large.c_str()).size(), 1U);
  std::filesystem::resize_file(large, (16 << 20) + 1);
  const std::string none = folder / "none";
  for (const char* path : {"", none.c_str(), folder.c_str(), pipe.c_str(), large.c_str(), "/dev/zero"})
    EXPECT_TRUE(ReadRegistryFile(path).empty()) << path;
  std::filesystem::remove_all(folder);
}

/// The file is read once in a process, so everything that goes through the interface is one test.
TEST(Registry, HandsOutKeysAndValues) {
  const std::filesystem::path path = std::filesystem::path(testing::TempDir()) / "platform_tests.reg";
  std::ofstream(path)
      << "[HKEY_LOCAL_MACHINE\\Software\\Vendor\\Product]\n\"N\xC3\xA4me\"=\"\xE2\x82\xAC\"\n@=dword:7\n";
  setenv("TARN_REGISTRY", path.c_str(), 1);

  RegistryKey *software = nullptr, *key = nullptr;
  ASSERT_EQ(RegOpenKeyExW(nullptr, u"SOFTWARE", kReadKey64, &software), ERROR_SUCCESS);
  EXPECT_EQ(RegOpenKeyExW(software, u"Vendor\\Missing", kReadKey64, &key), ERROR_FILE_NOT_FOUND);
  ASSERT_EQ(RegOpenKeyExW(software, u"vendor\\PRODUCT", kReadKey64, &key), ERROR_SUCCESS);
  RegCloseKey(software);
  std::filesystem::remove(path);

  std::uint32_t type = 0, size = 0;
  std::uint8_t data[8] = {};
  size = 3;
  EXPECT_EQ(RegQueryValueExW(key, u"N\u00E4me", &type, data, &size), ERROR_MORE_DATA);
  EXPECT_EQ(size, 4U);
  EXPECT_EQ(RegQueryValueExW(key, u"n\u00E4ME", &type, data, &size), ERROR_SUCCESS);
  EXPECT_EQ(Bytes(data, data + 4), (Bytes{0xAC, 0x20, 0, 0}));
  size = 8;
  EXPECT_EQ(RegQueryValueExW(key, nullptr, &type, data, &size), ERROR_SUCCESS);
  EXPECT_EQ(type, REG_DWORD);
  EXPECT_EQ(RegQueryValueExW(key, nullptr, nullptr, nullptr, &size), ERROR_SUCCESS);
  EXPECT_EQ(RegQueryValueExW(key, nullptr, nullptr, data, nullptr), ERROR_INVALID_PARAMETER);

  std::string name = "xxxxxx";
  std::uint32_t nameSize = 4;
  EXPECT_EQ(RegEnumValueA(key, 0, name.data(), &nameSize, &type, data, &size), ERROR_MORE_DATA);
  nameSize = 5;  // has room for the NUL
  EXPECT_EQ(RegEnumValueA(key, 0, name.data(), &nameSize, &type, data, &size), ERROR_SUCCESS);
  EXPECT_EQ(name, std::string("N\xE4me\0x", 6));
  EXPECT_EQ(nameSize, 4U);
  EXPECT_EQ(Bytes(data, data + 2), (Bytes{0x80, 0}));
  EXPECT_EQ(RegEnumValueA(key, 2, name.data(), &nameSize, &type, data, &size), ERROR_NO_MORE_ITEMS);
  RegCloseKey(key);
}

TEST(EnvironmentStrings, KnownNamesAreReplacedAndTheRestStays) {
  setenv("TARN_TEST_A", "x\xC3\xA4", 1);
  const std::pair<std::u16string, std::u16string> rows[] = {
      {u"%tarn_test_a%<%Tarn_Test_A%>", u"x\u00E4<x\u00E4>"},
      {u"%TARN_TEST_NONE%TARN_TEST_A%", u"%TARN_TEST_NONEx\u00E4"},
      {u"100% %% of %TARN_TEST_A", u"100% %% of %TARN_TEST_A"},
  };
  for (const auto& [source, expanded] : rows) {
    char16_t target[64] = {};
    EXPECT_EQ(ExpandEnvironmentStringsW(source.c_str(), target, 64), expanded.size() + 1);
    EXPECT_EQ(std::u16string(target), expanded);
  }
  char narrow[8] = {};
  EXPECT_EQ(ExpandEnvironmentStringsA("%TARN_TEST_A%\xE4", narrow, 3), 4U) << "does not fit";
  EXPECT_EQ(ExpandEnvironmentStringsA("%TARN_TEST_A%\xE4", narrow, 4), 4U);
  EXPECT_STREQ(narrow, "x\xE4\xE4");
}

}  // namespace
