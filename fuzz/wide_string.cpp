#include "fuzz_target.h"
#include "valuelist/value_list.h"

FUZZ_TARGET(input) {
  fuzz::Bounded(input, [&] {
    const auto buffer = fuzz::BufferOf(input);
    std::u16string text = u"before";
    try {
      Kestrel::ReadWideString(*buffer, text);
      if (input[0] == Kestrel::vtWString)
        fuzz::Check(text.size() * sizeof(char16_t) + sizeof(char16_t) <= input.size(), "no unit from outside");
    } catch (const Kestrel::KestrelException&) {
    }
    fuzz::Check(buffer->GetReadPosition() <= buffer->GetLength(), "the position stays inside");
  });
}
