#include <string>

#include "fuzz_target.h"
#include "valuelist/variant.h"

/// First byte: the tag, the rest a text. The text of a value reads back as the same value, where its form allows that.
FUZZ_TARGET(input) {
  fuzz::Choices choices(input);
  const auto tag = choices.Below(Kestrel::kVariantTypeCount);
  const std::string_view text(reinterpret_cast<const char*>(choices.Rest().data()), choices.Rest().size());
  fuzz::Bounded(input, [&] {
    Kestrel::Variant value = Kestrel::Variant::Create(tag);
    try {
      value.FromString(text);
      const std::string told = value.ToString();
      const bool parsesBack = tag == Kestrel::vtBool || (tag >= Kestrel::vtShort && tag <= Kestrel::vtInt64) ||
                              tag == Kestrel::vtString || tag == Kestrel::vtGuid || tag == Kestrel::vtLong;
      if (!parsesBack) return;
      value.FromString(told);
      fuzz::Check(value.ToString() == told, "the text form is stable");
    } catch (const Kestrel::KestrelException&) {
    }
  });
}
