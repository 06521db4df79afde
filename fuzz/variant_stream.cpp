#include <algorithm>
#include <vector>

#include "fuzz_target.h"
#include "valuelist/stream.h"
#include "valuelist/variant.h"

namespace {

/// Keeps what is written.
class Sink final : public Kestrel::IKestrelStream {
 public:
  void Write(const void* source, std::uint64_t n) override {
    const auto* const first = static_cast<const std::uint8_t*>(source);
    bytes.insert(bytes.end(), first, first + n);
  }
  void Read(void*, std::uint64_t) override { fuzz::Check(false, "nobody reads what is written"); }
  std::vector<std::uint8_t> bytes;
};

template <class Target>
void Convert(const Kestrel::Variant& value) {
  try {
    value.To<Target>();
  } catch (const Kestrel::KestrelException&) {
  }
}

}  // namespace

/// First byte: the tag. Values of a fixed size write what they have read; every conversion ends.
FUZZ_TARGET(input) {
  if (input.empty()) return;
  fuzz::Bounded(input, [&] {
    Kestrel::RawReader reader(input.data() + 1, input.size() - 1);
    try {
      Kestrel::Variant value = Kestrel::Variant::Create(input[0]);
      value.ReadFromStream(reader);
      Sink sink;
      value.WriteToStream(sink);
      const bool exact = value.GetFixedSize() != Kestrel::kVariableSize && input[0] != Kestrel::vtBool;
      if (exact)
        fuzz::Check(std::equal(sink.bytes.begin(), sink.bytes.end(), input.data() + 1), "what is read is written");
      const Kestrel::Variant copy = value;
      Convert<unsigned char>(copy);
      Convert<bool>(copy);
      Convert<std::uint32_t>(copy);
      Convert<std::uint64_t>(copy);
      Convert<std::string>(copy);
      Convert<std::u16string>(copy);
    } catch (const Kestrel::KestrelException&) {
    }
    fuzz::Check(reader.GetPosition() <= input.size() - 1, "the position stays inside");
  });
}
