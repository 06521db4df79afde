#include "platform/registry.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
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

/// The value "V" below the key A\B of a file that holds these lines.
std::optional<RegistryValue> ValueIn(const std::string& lines) {
  const RegistryKeys keys =
      ParseRegistryFile("Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\A\\B]\r\n" + lines);
  const auto key = keys.find(u"A\\B");
  const RegistryValue* const value = key == keys.end() ? nullptr : FindValue(key->second, u"v");
  return value ? std::optional(*value) : std::nullopt;
}

struct ValueRow {
  const char* name;
  std::string lines;
  std::uint32_t type;
  Bytes data;
};

class RegistryFile : public testing::TestWithParam<ValueRow> {};

TEST_P(RegistryFile, ValueIsRead) {
  const auto value = ValueIn(GetParam().lines);
  ASSERT_TRUE(value);
  EXPECT_EQ(value->type, GetParam().type);
  EXPECT_EQ(value->data, GetParam().data);
}

INSTANTIATE_TEST_SUITE_P(
    , RegistryFile,
    testing::ValuesIn(std::vector<ValueRow>{
        {"Text", "\"V\"=\"a\xC3\xA4\"", REG_SZ, {'a', 0, 0xE4, 0, 0, 0}},
        {"EmptyText", "\"V\"=\"\"", REG_SZ, {0, 0}},
        {"EscapedText", R"("V"="\\\"")", REG_SZ, {'\\', 0, '"', 0, 0, 0}},
        {"Dword", "\"V\"=dword:0000fFa5", REG_DWORD, {0xA5, 0xFF, 0, 0}},
        {"Binary", "\"V\"=hex:01,02,FE", REG_BINARY, {1, 2, 0xFE}},
        {"NoBytes", "\"V\"=hex:", REG_BINARY, {}},
        {"Qword", "\"V\"=hex(b):01,00,00,00,00,00,00,80", REG_QWORD, {1, 0, 0, 0, 0, 0, 0, 0x80}},
        {"BigEndian", "\"V\"=hex(5):00,00,00,07", REG_DWORD_BIG_ENDIAN, {0, 0, 0, 7}},
        {"ExpandText", "\"V\"=hex(2):25,00,00,00", REG_EXPAND_SZ, {'%', 0, 0, 0}},
        {"UnknownType", "\"V\"=hex(abcd):01", 0xABCD, {1}},
        {"Continued", "\"V\"=hex:01,\\\r\n  02,\\\r\n  03\r\n\"W\"=\"\"", REG_BINARY, {1, 2, 3}},
        {"Indented", "; \"V\"=dword:9\n\t \"V\" = dword:2 \n", REG_DWORD, {2, 0, 0, 0}},
        {"LastOneCounts", "\"V\"=dword:1\n\"v\"=dword:2", REG_DWORD, {2, 0, 0, 0}},
        {"AnotherCaseOfTheRoot", "[hkey_local_machine\\a\\b]\n\"V\"=dword:3", REG_DWORD, {3, 0, 0, 0}},
        {"BadLinesBetween",
         "garbage\n\"V\n=\n\"X\"=hex:1g\n[broken\n[HKEY_LOCAL_MACHINE\\A\\B]\n\"V\"=dword:4",
         REG_DWORD,
         {4, 0, 0, 0}},
    }),
    [](const auto& row) { return row.param.name; });

TEST(RegistryFileSkips, WhatIsMalformedOrElsewhere) {
  for (const char* lines :
       {"\"V\"=dword:", "\"V\"=dword:123456789", "\"V\"=dword:1x", "\"V\"=hex:1,2,xx", "\"V\"=hex(:1", "\"V\"=hex(2:1",
        "\"V\"=\"open", "\"V\"=\"a\"b", "\"V\"=\"a\\", "\"V\"", "\"V=dword:1", "V=dword:1", "\"V\"=other:1",
        ";\"V\"=dword:1", "[HKEY_CURRENT_USER\\A\\B]\n\"V\"=dword:1", "[HKEY_LOCAL_MACHINES\\A\\B]\n\"V\"=dword:1",
        "\"V\"=dword:1\n\"V\"=-", "\"V\"=dword:1\n[-HKEY_LOCAL_MACHINE\\A]", "[HKEY_LOCAL_MACHINE\\A\n\"V\"=dword:1"})
    EXPECT_FALSE(ValueIn(lines)) << lines;
  EXPECT_TRUE(ValueIn("\"V\"=dword:1\n[-HKEY_LOCAL_MACHINE\\A\\Bc]"));
}

TEST(RegistryFileUtf16, IsReadBehindItsByteOrderMark) {
  const std::u16string text =
      u"\uFEFFWindows Registry Editor Version 5.00\r\n[HKEY_LOCAL_MACHINE\\K]\r\n@=\"\u6771\"\r\n";
  const RegistryKeys keys = ParseRegistryFile({reinterpret_cast<const char*>(text.data()), text.size() * 2});
  EXPECT_EQ(FindValue(keys.at(u"K"), u"")->data, (Bytes{0x71, 0x67, 0, 0}));
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
  EXPECT_EQ(RegQueryValueExW(key, u"None", &type, nullptr, &size), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(RegQueryValueExW(key, u"n\u00E4ME", &type, nullptr, &size), ERROR_SUCCESS);
  EXPECT_EQ(size, 4U);
  size = 3;
  EXPECT_EQ(RegQueryValueExW(key, u"N\u00E4me", &type, data, &size), ERROR_MORE_DATA);
  EXPECT_EQ(size, 4U);
  EXPECT_EQ(RegQueryValueExW(key, u"N\u00E4me", &type, data, &size), ERROR_SUCCESS);
  EXPECT_EQ(Bytes(data, data + 4), (Bytes{0xAC, 0x20, 0, 0}));
  size = 8;
  EXPECT_EQ(RegQueryValueExW(key, nullptr, &type, data, &size), ERROR_SUCCESS);
  EXPECT_EQ(type, REG_DWORD);

  char name[5] = {};
  std::uint32_t nameSize = 4;
  EXPECT_EQ(RegEnumValueA(key, 0, name, &nameSize, &type, data, &size), ERROR_MORE_DATA) << "no room for the NUL";
  nameSize = 5;
  size = 1;
  EXPECT_EQ(RegEnumValueA(key, 0, name, &nameSize, &type, data, &size), ERROR_MORE_DATA);
  EXPECT_EQ(size, 2U);
  nameSize = 5;
  EXPECT_EQ(RegEnumValueA(key, 0, name, &nameSize, &type, data, &size), ERROR_SUCCESS);
  EXPECT_STREQ(name, "N\xE4me");
  EXPECT_EQ(nameSize, 4U);
  EXPECT_EQ(Bytes(data, data + 2), (Bytes{0x80, 0}));
  size = 8;
  EXPECT_EQ(RegEnumValueA(key, 1, name, &nameSize, &type, data, &size), ERROR_SUCCESS);
  EXPECT_STREQ(name, "");
  EXPECT_EQ(RegEnumValueA(key, 2, name, &nameSize, &type, data, &size), ERROR_NO_MORE_ITEMS);
  RegCloseKey(key);
}

}  // namespace
