#include <cstring>
#include <string>

#include "base/exceptions.h"
#include "fuzz_target.h"
#include "time/date_time_parser.h"
#include "time/date_time_text.h"

/// A time that was parsed is written in both fixed forms, and each of them parses to the same time.
FUZZ_TARGET(input) {
  fuzz::Bounded(input, [&] {
    std::u16string text(input.size() / sizeof(char16_t), u'\0');
    std::memcpy(text.data(), input.data(), text.size() * sizeof(char16_t));
    const auto quietly = [](auto parse) {
      try {
        parse();
      } catch (const Kestrel::KestrelException&) {
      }
    };
    quietly([&] {
      std::size_t consumed = 0;
      const platform::SystemTime time = Kestrel::ParseSystemTime(text, &consumed);
      fuzz::Check(consumed <= text.size(), "no unit from outside is consumed");
      for (const std::uint32_t form : {Kestrel::dtsmSlashes, Kestrel::dtsmDashes}) {
        const std::u16string told = Kestrel::SystemTimeToWideStr(time, form);
        fuzz::Check(Kestrel::SystemTimeToWideStr(Kestrel::ParseSystemTime(told), form) == told, "a time comes back");
      }
    });
    quietly([&] { Kestrel::ParseDateTime(text); });
    quietly([&] { Kestrel::ParseLocalDateTime(text); });
  });
}
