#include <algorithm>
#include <optional>
#include <vector>

#include "fuzz_target.h"
#include "valuelist/buffer_pool.h"
#include "valuelist/value_list.h"

namespace {

using Written = std::optional<std::vector<std::uint8_t>>;

Written WriteWithoutAddresses(const Kestrel::ValueList& list) {
  Kestrel::ValueList plain;
  plain.SetName(fuzz::WithoutAddress(list.GetName()));
  for (const auto& [name, value] : list.GetEntries()) plain.AddVariant(fuzz::WithoutAddress(name), value);
  const auto written = Kestrel::GetBuffer(Kestrel::SmallBufferList);
  plain.Write(*written);
  return Written(std::in_place, written->GetBytes().begin(), written->GetBytes().end());
}

/// Reads a list and writes it again; nothing where the bytes are refused.
Written ReadAndWrite(fuzz::Bytes bytes) {
  const auto buffer = fuzz::BufferOf(bytes);
  Kestrel::ValueList list;
  try {
    list.Read(*buffer);
  } catch (const Kestrel::OutOfMemoryException&) {
    throw;
  } catch (const Kestrel::KestrelException&) {
    fuzz::Check(buffer->GetReadPosition() <= buffer->GetLength(), "the position stays inside");
    return std::nullopt;
  }
  fuzz::Check(buffer->GetReadPosition() <= buffer->GetLength(), "the position stays inside");
  const auto written = Kestrel::GetBuffer(Kestrel::SmallBufferList);
  list.Write(*written);
  Kestrel::ValueList again;
  again.Read(*written);
  fuzz::Check(written->GetUnreadLength() == 0, "a written list is read to its end");
  fuzz::Check(again.GetEntries().size() == list.GetEntries().size(), "as many entries");
  const auto rewritten = Kestrel::GetBuffer(Kestrel::SmallBufferList);
  again.Write(*rewritten);
  fuzz::Check(std::ranges::equal(written->GetBytes(), rewritten->GetBytes()), "writing is stable");
  return WriteWithoutAddresses(list);
}

}  // namespace

/// First byte: which allocation fails. A list that was read and written again reads and writes the same, and the
/// position stays inside.
FUZZ_TARGET(input) {
  fuzz::Choices choices(input);
  const std::uint8_t failing = choices.Byte();
  fuzz::Bounded(input, [&] {
    // Without memory for its text, a number in the place of a name throws what it throws for any failure, so the list
    // is refused.
    fuzz::WithFailingAllocation(
        failing, [&] { return ReadAndWrite(choices.Rest()); },
        [](const Written& written, const Written&) { return !written; });
  });
}
