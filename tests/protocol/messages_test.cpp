#include <gtest/gtest.h>

#include "base/exceptions.h"
#include "protocol/finder_messages.h"
#include "protocol/record_wire.h"
#include "protocol/request_wire.h"
#include "protocol/samples.h"

namespace Tarn::CameraFinding {
namespace {

template <class Message>
Bytes RequestOf(Message message) {
  Kestrel::ValueList command;
  Serialize(command, Direction::kWrite, message);
  return BytesOf(*EncodeRequest(command));
}

/// The payload of a recorded request, read into a message that holds something else.
template <class Message>
Message MessageIn(const char* sample, Message message) {
  Kestrel::ValueList command;
  DecodeRequest(ReadSample(sample), command);
  Serialize(command, Direction::kRead, message);
  return message;
}

NetworkCommand SampleNetworkCommand() {
  NetworkCommand command;
  command.networkCommandType = 1;
  command.loginUser = "operator";
  command.loginPassword = "p\xC3\xA4ss\xE2\x82\xAC\x37";
  command.mac = "00:40:8C:00:00:07";
  command.nip = "0.0.0.0";
  command.ni2 = {"0.0.0.0"};
  command.ip = "192.168.0.9";
  command.subnetMask = "255.255.0.0";
  command.gateway = "192.168.0.1";
  command.icb = command.gcb = command.rbl = command.pcl = true;
  static_cast<CameraProduct&>(command) =
      CameraProduct({"PluginnamePlatzHalter"}, "VendorDisplayName", "M-7", "5.7.1", "");
  return command;
}

TEST(FinderMessages, AreWrittenAsRecordedByteForByte) {
  EXPECT_EQ(RequestOf(MacAddressMessage{"00:40:8C:12:34:56"}), ReadSample("request-send-mac.bin"));
  EXPECT_EQ(RequestOf(InfoByIpMessage{"10.0.0.5"}), ReadSample("request-info-by-ip.bin"));
  EXPECT_EQ(RequestOf(ListFoundMessage{false}), ReadSample("request-list.bin"));  // the flag is always written true
  EXPECT_EQ(RequestOf(BareMessage{}), ReadSample("request-bare.bin"));
  NetworkCommand command = SampleNetworkCommand();
  EXPECT_EQ(RequestOf(command), ReadSample("request-network-type1.bin"));
  command.networkCommandType = 4;
  EXPECT_EQ(RequestOf(command), ReadSample("request-network-type4.bin"));
}

TEST(FinderMessages, AreReadFromTheRecordedBytes) {
  EXPECT_EQ(MessageIn("request-send-mac.bin", MacAddressMessage{}).mac, "00:40:8C:12:34:56");
  EXPECT_EQ(MessageIn("request-info-by-ip.bin", InfoByIpMessage{}).ip, "10.0.0.5");
  EXPECT_TRUE(MessageIn("request-list.bin", ListFoundMessage{false}).resendPreviousPictures);
  const auto command = MessageIn("request-network-type1.bin", NetworkCommand{});
  EXPECT_EQ(command.networkCommandType, 1U);
  EXPECT_EQ(static_cast<const CameraRecord&>(command), SampleNetworkCommand());
  EXPECT_EQ(MessageIn("request-bare.bin", MacAddressMessage{"kept"}).mac, "kept");
}

TEST(FinderRequest, IsRefusedWhenCutOrNotOurs) {
  Kestrel::ValueList command;
  const Bytes request = ReadSample("request-bare.bin");
  for (const std::size_t size : {0U, 3U, 5U})
    EXPECT_THROW(DecodeRequest(std::span(request).first(size), command), Kestrel::BufferException);
  EXPECT_THROW(DecodeRequest(Bytes{0x0B, 0x84, 0, 0}, command), Kestrel::BufferException);
}

TEST(FinderReply, GivesTheRecordedCamerasOrTheRecordedException) {
  int played = 0;
  for (const auto& [name, expected] : ExpectedOfSamples().items()) {
    if (!name.starts_with("reply-")) continue;
    SCOPED_TRACE(name);
    ++played;
    try {
      Kestrel::ValueList reply;
      DecodeReply(ReadSample(name), reply);
      CameraListMessage message;
      Serialize(reply, Direction::kRead, message);
      auto cameras = nlohmann::json::array();
      for (const CameraRecord& camera : message.cameras) cameras.push_back(CameraJson(camera));
      EXPECT_EQ(cameras, expected["cameras"]);
    } catch (const Kestrel::KestrelException& exception) {
      EXPECT_EQ(exception.GetClassName(), "class " + expected.value("throws", ""));
      EXPECT_EQ(exception.GetDescription(), expected.value("text", ""));
    }
  }
  EXPECT_EQ(played, 8);
}

TEST(FinderReply, IsWrittenAsRecordedByteForByte) {
  const Bytes recorded = ReadSample("reply-list-3.bin");
  Kestrel::ValueList reply;
  DecodeReply(recorded, reply);
  CameraListMessage message;
  Serialize(reply, Direction::kRead, message);
  Kestrel::ValueList rewritten;
  WriteRecordList(rewritten, kCameraInfoListKey, message.cameras);
  EXPECT_EQ(BytesOf(*EncodeReply(rewritten)), recorded);
}

}  // namespace
}  // namespace Tarn::CameraFinding
