#include "base/base64.h"

#include <string>
#include <vector>

#include "fuzz_target.h"

/// Narrow and wide decoding agree on any text; any bytes come back from their text.
FUZZ_TARGET(input) {
  fuzz::Bounded(input, [&] {
    const std::string text(input.begin(), input.end());
    const std::u16string wide(input.begin(), input.end());
    std::vector<std::uint8_t> fromNarrow(Kestrel::Base64DecodedBound(text.size()));
    std::vector<std::uint8_t> fromWide(fromNarrow.size());
    const auto narrowResult = Kestrel::Base64DecodeTo(text, fromNarrow.data());
    const auto wideResult = Kestrel::Base64DecodeTo(wide, fromWide.data());
    fuzz::Check(narrowResult.byteCount == wideResult.byteCount && narrowResult.success == wideResult.success,
                "the same end");
    fromNarrow.resize(narrowResult.byteCount);
    fromWide.resize(wideResult.byteCount);
    fuzz::Check(fromNarrow == fromWide, "the same bytes");

    const std::string encoded = Kestrel::Base64Encode(input.data(), input.size());
    std::vector<std::uint8_t> back;
    fuzz::Check(Kestrel::Base64Decode(encoded, back), "an encoded text is one");
    fuzz::Check(std::equal(back.begin(), back.end(), input.begin(), input.end()), "bytes come back");
  });
}
