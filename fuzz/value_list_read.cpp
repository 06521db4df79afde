#include <algorithm>

#include "fuzz_target.h"
#include "valuelist/buffer_pool.h"
#include "valuelist/value_list.h"

/// What reads and writes again reads and writes the same, and the position stays inside.
FUZZ_TARGET(input) {
  fuzz::Bounded(input, [&] {
    const auto buffer = fuzz::BufferOf(input);
    Kestrel::ValueList list;
    try {
      list.Read(*buffer);
    } catch (const Kestrel::KestrelException&) {
      fuzz::Check(buffer->GetReadPosition() <= buffer->GetLength(), "the position stays inside");
      return;
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
  });
}
