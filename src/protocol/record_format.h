/// The keys of a camera record and the members that they stand for: the one table behind both directions.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "protocol/camera_record.h"

namespace Tarn::CameraFinding {

/// The member's type decides how it is written: text, u8, flag, u32, u64 or list of texts.
using RecordMember = std::variant<std::string CameraRecord::*, std::uint8_t CameraRecord::*, bool CameraRecord::*,
                                  std::uint32_t CameraRecord::*, std::uint64_t CameraRecord::*,
                                  std::vector<std::string> CameraRecord::*>;

struct RecordKey {
  std::string_view key;
  RecordMember member;
};

/// In wire order.
inline constexpr auto kRecordKeys = std::to_array<RecordKey>({
    {"LUN", &CameraRecord::loginUser},
    {"LPD", &CameraRecord::loginPassword},
    {"CTT", &CameraRecord::ctt},
    {"MAC", &CameraRecord::mac},
    {"NIP", &CameraRecord::nip},
    {"NI2", &CameraRecord::ni2},
    {"IP", &CameraRecord::ip},
    {"SIP", &CameraRecord::subnetMask},
    {"GIP", &CameraRecord::gateway},
    {"DHC", &CameraRecord::dhcpMode},
    {"ICB", &CameraRecord::icb},
    {"GCB", &CameraRecord::gcb},
    {"RBL", &CameraRecord::rbl},
    {"PCL", &CameraRecord::pcl},
    {"DCV", &CameraRecord::deviceFlags},
    {"CVT", &CameraRecord::vendorTypeMask},
    {"PLN", &CameraRecord::pluginNames},
    {"PDN", &CameraRecord::vendorDisplayName},
    {"FVN", &CameraRecord::firmwareVersion},
    {"SER", &CameraRecord::serialNumber},
    {"MDL", &CameraRecord::model},  // last, although the member stands before the two above
});
static_assert(kRecordKeys.size() == 21);

/// Calls visit(row, member of the record) for every row, in wire order; row is a std::integral_constant.
template <class Record, class Visit>
void ForEachMember(Record& record, Visit visit) {
  [&]<std::size_t... row>(std::index_sequence<row...>) {
    (visit(std::integral_constant<std::size_t, row>(),
           record.*std::get<kRecordKeys[row].member.index()>(kRecordKeys[row].member)),
     ...);
  }
  (std::make_index_sequence<kRecordKeys.size()>());
}

}  // namespace Tarn::CameraFinding
