#include "diagnostics/text_format.h"

#include <cstring>
#include <string>

#include "base/exceptions.h"
#include "fuzz_target.h"

/// First byte: how many arguments, the rest a format in UTF-16. The output is bounded, and an error keeps its format.
FUZZ_TARGET(input) {
  fuzz::Choices choices(input);
  const std::size_t count = choices.Below(12);
  const std::u16string arguments[12] = {u"", u"A", u"{0}", u"a longer argument than most"};
  std::u16string format(choices.Rest().size() / sizeof(char16_t), u'\0');
  std::memcpy(format.data(), choices.Rest().data(), format.size() * sizeof(char16_t));
  std::u16string output = u"kept";
  try {
    Kestrel::Text::Format(format.c_str(), output, {arguments, count});
  } catch (const Kestrel::Text::InvalidFormatStringException& error) {
    fuzz::Check(error.GetFormatString() == format.c_str(), "an error keeps its format");
  }
  fuzz::Check(output.starts_with(u"kept") && output.size() <= 4 + 513 * format.size(),
              "the output is appended, within bounds");
}
