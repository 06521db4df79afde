#include <cstring>
#include <string>

#include "fuzz_target.h"
#include "valuelist/value_list.h"

/// The text form, from UTF-16 units.
FUZZ_TARGET(input) {
  fuzz::Bounded(input, [&] {
    std::u16string text(input.size() / sizeof(char16_t), u'\0');
    std::memcpy(text.data(), input.data(), text.size() * sizeof(char16_t));
    Kestrel::ValueList list;
    try {
      list.FromText(text);
    } catch (const Kestrel::KestrelException&) {
      return;
    }
    const std::u16string written = list.ToText();
    Kestrel::ValueList again;
    again.FromText(written);
    fuzz::Check(again.ToText() == written, "the text form is stable");
  });
}
