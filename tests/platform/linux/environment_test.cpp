#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "platform/registry.h"

using namespace platform;

namespace {

TEST(EnvironmentStrings, KnownNamesAreReplacedAndTheRestStays) {
  setenv("TARN_TEST_A", "x\xC3\xA4", 1);
  setenv("TARN_TEST_EMPTY", "", 1);
  const std::pair<std::u16string, std::u16string> rows[] = {
      {u"", u""},
      {u"plain", u"plain"},
      {u"<%TARN_TEST_A%>", u"<x\u00E4>"},
      {u"%tarn_test_a%%Tarn_Test_A%", u"x\u00E4x\u00E4"},
      {u"[%TARN_TEST_EMPTY%]", u"[]"},
      {u"%TARN_TEST_NONE%", u"%TARN_TEST_NONE%"},
      {u"%TARN_TEST_NONE%TARN_TEST_A%", u"%TARN_TEST_NONEx\u00E4"},
      {u"100% %% of %TARN_TEST_A", u"100% %% of %TARN_TEST_A"},
  };
  for (const auto& [source, expanded] : rows) {
    char16_t target[64] = {};
    EXPECT_EQ(ExpandEnvironmentStringsW(source.c_str(), target, 64), expanded.size() + 1);
    EXPECT_EQ(std::u16string(target), expanded);
  }
  char narrow[8] = {};
  EXPECT_EQ(ExpandEnvironmentStringsA("%TARN_TEST_A%\xE4", nullptr, 0), 4U);
  EXPECT_EQ(ExpandEnvironmentStringsA("%TARN_TEST_A%\xE4", narrow, 3), 4U);
  EXPECT_STREQ(narrow, "");
  EXPECT_EQ(ExpandEnvironmentStringsA("%TARN_TEST_A%\xE4", narrow, 4), 4U);
  EXPECT_STREQ(narrow, "x\xE4\xE4");
}

}  // namespace
