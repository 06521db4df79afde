#include "base/registry_value.h"

#include <gtest/gtest.h>

#include "base/debug_out_settings.h"
#include "fakes/fake_system.h"

namespace Kestrel {
namespace {

using namespace platform;
using fakes::Bytes;

template <class Char>
Bytes TextBytes(const std::string& text) {
  Bytes bytes;
  for (const char unit : text) {
    bytes.push_back(static_cast<std::uint8_t>(unit));
    bytes.resize(bytes.size() + sizeof(Char) - 1);
  }
  return bytes;
}

constexpr std::optional<std::uint32_t> kNone;

TEST(RegistryValue, OfBytesIsANumberByTheRulesOfItsType) {
  const struct {
    std::uint32_t type;
    Bytes data;
    std::optional<std::uint32_t> number;
  } rows[] = {{REG_DWORD, {1, 2, 3, 0x84}, 0x84030201},
              {REG_DWORD, {1, 2, 3}, kNone},
              {REG_BINARY, {5, 0, 0, 0}, 5},
              {REG_BINARY, {5, 0, 0, 0, 0}, kNone},
              {REG_DWORD_BIG_ENDIAN, {0x84, 3, 2, 1}, 0x84030201},
              {REG_DWORD_BIG_ENDIAN, {0, 0, 0, 0, 5}, kNone},
              {REG_QWORD, {0xFF, 0xFF, 0xFF, 0x7F, 0, 0, 0, 0}, 0x7FFFFFFF},
              {REG_QWORD, {0, 0, 0, 0x80, 0, 0, 0, 0}, kNone},
              {REG_QWORD, {0, 0, 0, 0x80, 0xFF, 0xFF, 0xFF, 0xFF}, 0x80000000},
              {REG_QWORD, {5, 0, 0, 0}, kNone},
              {REG_MULTI_SZ, {'5'}, kNone}};
  for (const auto& row : rows)
    EXPECT_EQ(NumberOfRegistryValue<char>(row.type, row.data), row.number) << row.type << " of " << row.data.size();
}

TEST(RegistryValue, OfTextIsADecimalNumber) {
  const struct {
    std::uint32_t type;
    std::string text;
    std::optional<std::uint32_t> number;
  } rows[] = {{REG_SZ, std::string("\x01 \t5\0x", 6), 5},
              {REG_SZ, "5x", kNone},
              {REG_SZ, "5 ", kNone},
              {REG_SZ, " ", kNone},
              {REG_SZ, "-1", 0xFFFFFFFF},
              {REG_SZ, "-", kNone},
              {REG_SZ, "!5", kNone},
              {REG_SZ, "2147483647", 0x7FFFFFFF},
              {REG_SZ, "2147483648", kNone},
              {REG_SZ, "18446744073709551621", kNone},
              {REG_SZ, "%FIVE%", kNone},
              {REG_EXPAND_SZ, "%FIVE%", 5},
              {REG_EXPAND_SZ, "%LONG%", 6},
              {REG_EXPAND_SZ, "%FAILURE%", kNone}};
  for (const auto& row : rows) {
    EXPECT_EQ(NumberOfRegistryValue<char>(row.type, TextBytes<char>(row.text)), row.number) << row.text;
    EXPECT_EQ(NumberOfRegistryValue<char16_t>(row.type, TextBytes<char16_t>(row.text)), row.number) << row.text;
  }
}

using Limits = std::vector<std::pair<const char*, std::uint32_t>>;

void ExpectLimits(const DebugOutSettings& settings, const Limits& limits) {
  for (const auto& [source, limit] : limits) {
    EXPECT_EQ(settings.IsEnabled(source, limit - 1), limit > 0) << (source ? source : "null");
    EXPECT_FALSE(settings.IsEnabled(source, limit)) << (source ? source : "null");
  }
}

TEST(DebugOutSettings, WithoutAKeyAreTheDefaults) {
  fakes::ResetSystem();
  const DebugOutSettings settings;
  EXPECT_EQ(settings.GetConsoleTimeMode(), ctmNone);
  EXPECT_EQ(settings.GetDebugWindowSourcePrefix(), spModule);
  ExpectLimits(settings, {{nullptr, 4}, {"", 4}, {"NET", 4}});
}

TEST(DebugOutSettings, AreClampedAndFiltersIgnoreCase) {
  const std::u16string key = u"Software\\Vantrell\\Tarn\\DebugOut";
  fakes::ResetSystem();
  fakes::TheSystem().keys[key] = {{"ConsoleTimeMode", REG_SZ, TextBytes<char16_t>(std::string(1000, ' ') + "7")},
                                  {"DebugWindowSourcePrefix", REG_BINARY, Bytes(4, 0xFF)}};
  fakes::TheSystem().keys[key + u"\\Filter"] = {
      {"finder", REG_DWORD, {5, 0, 0, 0}},      {"NET", REG_DWORD, {1, 0, 0, 0}},
      {"Net", REG_DWORD, {0, 0, 0, 0}},         {"", REG_SZ, {'2'}},
      {"negative", REG_DWORD, {0, 0, 0, 0x80}}, {"text", REG_SZ, {'5', 'x'}},
      {"huge", REG_BINARY, Bytes(2 << 20)},     {"T\xFCr", REG_SZ, {'3'}},
      {std::string(300, 'n'), REG_SZ, {'9'}}};
  const DebugOutSettings settings;
  EXPECT_EQ(settings.GetConsoleTimeMode(), 3u);
  EXPECT_EQ(settings.GetDebugWindowSourcePrefix(), 2u);
  ExpectLimits(settings, {{"FINDER", 5},
                          {"Finder", 5},
                          {"finders", 2},
                          {"net", 0},
                          {nullptr, 2},
                          {"", 2},
                          {"negative", 2},
                          {"text", 2},
                          {"huge", 2},
                          {"t\xFCR", 3},
                          {"T\xDCR", 2},
                          {std::string(300, 'N').c_str(), 9}});
}

}  // namespace
}  // namespace Kestrel
