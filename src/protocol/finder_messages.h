/// The commands of the finder protocol. One serialiser per message serves both ends.
///
///     code  payload behind "CMD" (vtUInt)                                       reply that is read
///     1     "MAC" text                                                          none
///     2     "ListResendPrevPictures" flag                                       "CAMERAINFOLIST", as code 3
///     3     "CAMERAINFOLIST" list of records                                    -
///     6     "GetInfoByIp" text                                                  a record at the top level
///     13    nothing                                                             none
///     14    "SetNetworkCommandType" u32, then a record                          none
///
/// Writing appends "CMD" and the payload to the list; reading reads the payload only, and leaves what is absent as it
/// was.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "protocol/camera_record.h"
#include "valuelist/value_list.h"

namespace Tarn::CameraFinding {

inline constexpr std::string_view kCommandKey = "CMD";

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
