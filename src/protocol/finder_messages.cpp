#include "protocol/finder_messages.h"

#include "protocol/record_wire.h"

namespace Tarn::CameraFinding {
namespace {

void WriteHeader(Kestrel::ValueList& list, FinderCommand command) {
  list.Add(kCommandKey, static_cast<std::uint32_t>(command));
}

void SerializeText(Kestrel::ValueList& list, Direction direction, FinderCommand command, std::string_view key,
                   std::string& text) {
  if (direction == Direction::kRead) {
    list.Get(key, text);
    return;
  }
  WriteHeader(list, command);
  list.Add(key, std::string_view(text));
}

}  // namespace

void Serialize(Kestrel::ValueList& list, Direction direction, MacAddressMessage& message) {
  SerializeText(list, direction, fcSendMacAddress, kMacKey, message.mac);
}

void Serialize(Kestrel::ValueList& list, Direction direction, ListFoundMessage& message) {
  if (direction == Direction::kRead) {
    list.Get(kResendKey, message.resendPreviousPictures);
    return;
  }
  WriteHeader(list, fcListFoundCameras);
  list.Add(kResendKey, true);
}

void Serialize(Kestrel::ValueList& list, Direction direction, CameraListMessage& message) {
  if (direction == Direction::kRead) {
    ReadRecordList(list, kCameraInfoListKey, message.cameras);
    return;
  }
  WriteHeader(list, fcCameraInfoList);
  WriteRecordList(list, kCameraInfoListKey, message.cameras);
}

void Serialize(Kestrel::ValueList& list, Direction direction, InfoByIpMessage& message) {
  SerializeText(list, direction, fcGetInfoByIp, kInfoByIpKey, message.ip);
}

void Serialize(Kestrel::ValueList& list, Direction direction, BareMessage&) {
  if (direction == Direction::kWrite) WriteHeader(list, fcBare);
}

void Serialize(Kestrel::ValueList& list, Direction direction, NetworkCommand& message) {
  if (direction == Direction::kRead) {
    list.Get(kNetworkTypeKey, message.networkCommandType);
    ReadRecord(list, message);
    return;
  }
  WriteHeader(list, fcSetNetwork);
  list.Add(kNetworkTypeKey, message.networkCommandType);
  WriteRecord(list, message);
}

}  // namespace Tarn::CameraFinding
