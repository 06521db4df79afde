#include "tools/display_width.h"

#include <gtest/gtest.h>
#include <locale.h>
#include <wchar.h>

#include "tools/text.h"

namespace tarnfind {
namespace {

TEST(DisplayWidth, IsThatOfTheSystemForAllOfUnicode) {
  const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  const locale_t before = uselocale(utf8);
  for (char32_t codePoint = 0x20; codePoint < 0x110000; ++codePoint) {
    const int cells = wcwidth(static_cast<decltype(L' ')>(codePoint));
    if (cells < 0) continue;  // no character
    std::string text;
    AppendUtf8(text, codePoint);
    ASSERT_EQ(DisplayWidth(text), static_cast<std::size_t>(cells)) << std::hex << static_cast<unsigned>(codePoint);
  }
  uselocale(before);
  freelocale(utf8);
}

}  // namespace
}  // namespace tarnfind
