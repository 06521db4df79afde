#include "valuelist/wire_text.h"

#include <gtest/gtest.h>

#include <vector>

namespace Kestrel {
namespace {

TEST(WireText, IsCopiedWithoutAByteBeyondTheReadableOnes) {
  const std::string all = "0123456789abcdefghi";
  for (std::size_t readable = 0; readable <= all.size(); ++readable) {
    const std::vector<char> bytes(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(readable));
    for (std::size_t size = 0; size <= readable; ++size) {
      const WireText text{{bytes.data(), size}, readable};
      EXPECT_EQ(text.MakeString(), all.substr(0, size));
      for (std::string target : {std::string(), std::string("before"), std::string(40, 'x')}) {
        text.AssignTo(target);
        EXPECT_EQ(target, all.substr(0, size));
      }
    }
  }
}

TEST(WireText, IsPutWithItsTerminatorAndNothingBeyond) {
  for (std::size_t size = 0; size <= 20; ++size) {
    const std::string text = std::string("0123456789abcdefghij").substr(0, size);
    std::vector<std::uint8_t> bytes(size + 1, 0xFF);
    EXPECT_EQ(PutTerminated(text, bytes.data()), bytes.data() + bytes.size());
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), std::string(text.c_str(), size + 1));
  }
}

}  // namespace
}  // namespace Kestrel
