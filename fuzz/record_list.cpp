#include <vector>

#include "fuzz_target.h"
#include "protocol/record_equality.h"
#include "protocol/record_wire.h"
#include "valuelist/buffer_pool.h"

using namespace Tarn::CameraFinding;

/// A list block: records that were read and written again read the same.
FUZZ_TARGET(input) {
  fuzz::Bounded(input, [&] {
    Kestrel::ValueList list;
    list.AddBinaryData(kCameraInfoListKey, fuzz::BufferOf(input));
    std::vector<CameraRecord> records, again;
    TextList texts;
    try {
      ReadStringList(list, kCameraInfoListKey, texts);
    } catch (const Kestrel::KestrelException&) {
    }
    try {
      ReadRecordList(list, kCameraInfoListKey, records);
    } catch (const Kestrel::KestrelException&) {
      return;
    }
    Kestrel::ValueList written;
    WriteRecordList(written, kCameraInfoListKey, records);
    ReadRecordList(written, kCameraInfoListKey, again);
    fuzz::Check(again == records, "records come back");
  });
}
