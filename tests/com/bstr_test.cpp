#include "com/bstr.h"

#include <gtest/gtest.h>

#include <new>

#include "fakes/fake_com.h"
#include "platform/com.h"

namespace {

using namespace std::string_literals;

std::u16string TextOf(BSTR text) {
  return {text, SysStringByteLen(text) / sizeof(OLECHAR)};
}

struct BstrCase {
  const char* name;
  std::string utf8;
  std::u16string wide;
};
class Bstr : public testing::TestWithParam<BstrCase> {};

TEST_P(Bstr, HoldsTheTextUpToTheFirstNulAndIsTheOnlyOneLeft) {
  const int before = fakes::LiveBstrs();
  for (const BSTR text : {Kestrel::MakeBstr(GetParam().wide), Kestrel::MakeBstrFromUtf8(GetParam().utf8)}) {
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(TextOf(text), GetParam().wide.c_str());
    EXPECT_EQ(Kestrel::TakeBstrAsUtf8(text), GetParam().utf8.c_str());
  }
  EXPECT_EQ(fakes::LiveBstrs(), before);
}

INSTANTIATE_TEST_SUITE_P(, Bstr,
                         testing::ValuesIn(std::vector<BstrCase>{
                             {"Empty", "", u""},
                             {"Ascii", "10.0.0.5", u"10.0.0.5"},
                             {"BeyondAscii", "p\xC3\xA4ss\xE2\x82\xAC\xF0\x9F\x93\xB7", u"p\u00E4ss\u20AC\U0001F4F7"},
                             {"NulInside", "ab\0cd"s, u"ab\0cd"s},
                             {"NulFirst", "\0ab"s, u"\0ab"s},
                         }),
                         [](const auto& row) { return row.param.name; });

TEST(BstrTaken, NullCountsAsEmpty) {
  EXPECT_EQ(Kestrel::TakeBstrAsUtf8(nullptr), "");
  EXPECT_EQ(Kestrel::Utf8FromNulTerminated(nullptr), "");
}

TEST(BstrMaking, EndsInBadAllocWithNothingLeftWhereverMemoryRunsOut) {
  const int before = fakes::LiveBstrs();
  for (const int failing : {1, 2}) {
    fakes::FailBstr(failing);
    EXPECT_THROW(Kestrel::MakeBstrFromUtf8("camera"), std::bad_alloc);
    EXPECT_EQ(fakes::LiveBstrs(), before);
  }
}

}  // namespace
