/// The equality of records, which only tests need.
#pragma once

#include "protocol/record_format.h"

namespace Tarn::CameraFinding {

inline bool operator==(const CameraRecord& left, const CameraRecord& right) {
  bool same = true;
  ForEachMember(left, [&](auto row, const auto& value) {
    same = same && value == right.*std::get<kRecordKeys[row].member.index()>(kRecordKeys[row].member);
  });
  return same;
}

}  // namespace Tarn::CameraFinding
