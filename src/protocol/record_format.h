/// The form of a camera record on the wire: the keys with the members that they stand for, and the lists of records and
/// of texts. Writer and readers take everything from here.
///
/// A record is 21 entries of a value list (value_list.h), in the order of kRecordKeys. A list, of records or of texts,
/// is one entry of binary data:
///
///     list    := FF 45 43 42 count:u32 element[count]      nothing stands between the elements
///     element := a value list without a name               a record: its 21 entries; a text: the one entry "mac"
///
/// A pushed "CAMERAINFOLIST" with one record, byte by byte:
///
///     56 4C 49 53  0B 01 00 00 00 00  01 00 00 00                            "VLIS", name "", 1 entry
///     0B 0F 00 00 00 43 41 4D 45 52 41 49 4E 46 4F 4C 49 53 54 00            key "CAMERAINFOLIST"
///     0D 2A 02 00 00                                                         binary data, 554 bytes:
///       FF 45 43 42  01 00 00 00                                             a list of 1 record
///       56 4C 49 53  0B 01 00 00 00 00  15 00 00 00                          "VLIS", name "", 21 entries
///       0B 04 00 00 00 4C 55 4E 00  0B 09 00 00 00 6F 70 ... 00              "LUN": text "operator"
///       0B 04 00 00 00 4C 50 44 00  0B 0A 00 00 00 70 C3 ... 00              "LPD": text, UTF-8
///       0B 04 00 00 00 43 54 54 00  02 00                                    "CTT": u8 0
///       ...
///       0B 04 00 00 00 4E 49 32 00  0D 51 00 00 00                           "NI2": binary data, 81 bytes:
///         FF 45 43 42  02 00 00 00                                           a list of 2 texts
///         56 4C 49 53  0B 01 00 00 00 00  01 00 00 00                        "VLIS", name "", 1 entry
///         0B 04 00 00 00 6D 61 63 00  0B 08 00 00 00 30 2E ... 00            "mac": text "0.0.0.0"
///         ...
///       0B 04 00 00 00 49 43 42 00  00 01                                    "ICB": flag, true
///       0B 04 00 00 00 44 43 56 00  06 00 00 02 00                           "DCV": u32 0x20000
///       0B 04 00 00 00 43 56 54 00  08 40 00 00 00 00 00 00 00               "CVT": u64 0x40, written with tag 8
///       ...
///
/// The canonical encoding of a record or list is what the writer writes: every key once and in its place, every value
/// with the tag of its member's type, no list with a name. A reader takes any other form too, by the rules of value
/// lists.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

#include "protocol/camera_record.h"

namespace Tarn::CameraFinding {

/// The bytes FF 45 43 42.
inline constexpr std::uint32_t ListMarker = 0x424345FF;
inline constexpr std::string_view kCameraInfoListKey = "CAMERAINFOLIST";
/// The key of every text in a list of texts, whatever the list holds: the other end looks for no other.
inline constexpr std::string_view kListElementKey = "mac";

/// The member's type decides how it is written: text, u8, flag, u32, u64 or list of texts.
using RecordMember =
    std::variant<std::string CameraRecord::*, std::uint8_t CameraRecord::*, bool CameraRecord::*,
                 std::uint32_t CameraRecord::*, std::uint64_t CameraRecord::*, TextList CameraRecord::*>;

struct RecordKey {
  std::string_view key;
  RecordMember member;
};

/// In wire order, which the server's reader expects. It is not the order of the members.
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
    {"MDL", &CameraRecord::model},  // last, although the member stands before FVN and SER
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
