#include "base/guid.h"

#include "fuzz_target.h"

FUZZ_TARGET(input) {
  fuzz::Bounded(input, [&] {
    const std::string_view text(reinterpret_cast<const char*>(input.data()), input.size());
    Kestrel::Guid guid, again;
    if (!Kestrel::StringToGuid(text, guid)) return;
    fuzz::Check(Kestrel::StringToGuid(Kestrel::GuidToString(guid), again) && again == guid, "a guid comes back");
  });
}
