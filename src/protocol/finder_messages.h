/// The commands of the finder protocol: value lists (value_list.h) without a name. "CMD" stands first, so that the
/// server knows the message before it reads the rest. One serialiser per message serves both ends.
///
///     "CMD" (u32)  then                                         reply that the library reads
///     1            "MAC" text                                   none
///     2            "ListResendPrevPictures" flag                "CAMERAINFOLIST", as in 3
///     3            "CAMERAINFOLIST" list of records             the library never sends it
///     6            "GetInfoByIp" text                           the entries of one record
///     13           nothing                                      none
///     14           "SetNetworkCommandType" u32,                 none
///                  the entries of one record (record_format.h)
///
/// A command 1, byte by byte, before it becomes the text of a request (request_wire.h):
///
///     56 4C 49 53  0B 01 00 00 00 00  02 00 00 00               "VLIS", name "", 2 entries
///     0B 04 00 00 00 43 4D 44 00      06 01 00 00 00            "CMD": 1
///     0B 04 00 00 00 4D 41 43 00      0B 12 00 00 00            "MAC": a text of 18 bytes, terminator included
///     30 30 3A 34 30 3A 38 43 3A 31 32 3A 33 34 3A 35 36 00     "00:40:8C:12:34:56"
///
/// Serialize appends "CMD" and the payload when it writes. It reads the payload only, leaves what is absent as it was,
/// and throws what ValueList::Get and ReadRecord (record_wire.h) throw.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "protocol/camera_record.h"
#include "valuelist/value_list.h"

namespace Tarn::CameraFinding {

inline constexpr std::string_view kCommandKey = "CMD";
inline constexpr std::string_view kMacKey = "MAC";
inline constexpr std::string_view kResendKey = "ListResendPrevPictures";
inline constexpr std::string_view kInfoByIpKey = "GetInfoByIp";
inline constexpr std::string_view kNetworkTypeKey = "SetNetworkCommandType";

enum FinderCommand : std::uint32_t {
  fcSendMacAddress = 1,
  fcListFoundCameras = 2,
  fcCameraInfoList = 3,
  fcGetInfoByIp = 6,
  fcBare = 13,
  fcSetNetwork = 14,
};

enum class Direction { kRead = 0, kWrite = 1 };

struct MacAddressMessage {
  std::string mac;
};
struct ListFoundMessage {
  bool resendPreviousPictures = true;  ///< always written true
};
struct CameraListMessage {
  std::vector<CameraRecord> cameras;
};
struct InfoByIpMessage {
  std::string ip;
};
struct BareMessage {};

void Serialize(Kestrel::ValueList& list, Direction direction, MacAddressMessage& message);
void Serialize(Kestrel::ValueList& list, Direction direction, ListFoundMessage& message);
void Serialize(Kestrel::ValueList& list, Direction direction, CameraListMessage& message);
void Serialize(Kestrel::ValueList& list, Direction direction, InfoByIpMessage& message);
void Serialize(Kestrel::ValueList& list, Direction direction, BareMessage& message);
void Serialize(Kestrel::ValueList& list, Direction direction, NetworkCommand& message);

}  // namespace Tarn::CameraFinding
