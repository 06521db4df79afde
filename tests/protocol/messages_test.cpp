#include <gtest/gtest.h>

#include <cstring>

#include "base/exceptions.h"
#include "protocol/camera_reply.h"
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

std::vector<CameraRecord> ReadAsAWhole(std::span<const std::uint8_t> reply) {
  Kestrel::ValueList list;
  DecodeReply(reply, list);
  CameraListMessage message;
  Serialize(list, Direction::kRead, message);
  return message.cameras;
}

/// What comes of a reply: its cameras, or the exception.
using ReadReply = std::vector<CameraRecord> (*)(std::span<const std::uint8_t>);
nlohmann::json OutcomeOf(const Bytes& reply, ReadReply read) {
  try {
    auto cameras = nlohmann::json::array();
    for (const CameraRecord& camera : read(reply)) cameras.push_back(CameraJson(camera));
    return {{"cameras", cameras}};
  } catch (const Kestrel::KestrelException& exception) {
    return {{"throws", exception.GetClassName().substr(6)}, {"text", exception.GetDescription()}};
  }
}

TEST(FinderReply, GivesTheRecordedCamerasOrTheRecordedException) {
  int played = 0;
  for (const auto& [name, expected] : ExpectedOfSamples().items()) {
    if (!name.starts_with("reply-")) continue;
    SCOPED_TRACE(name);
    ++played;
    for (const ReadReply read : {ReadAsAWhole, ReadCameraReply}) EXPECT_EQ(OutcomeOf(ReadSample(name), read), expected);
  }
  EXPECT_EQ(played, 8);
}

TEST(FinderReply, DamagedAtTheSeamsOfItsLinesIsWhatItIsAsAWhole) {
  const Bytes whole = ReadSample("reply-list-300.bin");
  const std::size_t units = (whole.size() - 5) / 2 - 1;  // lines of 78, read 128 at a time
  for (const std::size_t at :
       {0UL, 5UL, 60UL, 75UL, 76UL, 77UL, 78UL, 9983UL, 9984UL, 9985UL, 19968UL, units - 2, units - 1}) {
    for (const char16_t damage : {u'A', u'=', u'\r', u'!', u'\u0338', u'\0'}) {
      SCOPED_TRACE(testing::Message() << at << " " << static_cast<int>(damage));
      Bytes damaged = whole;
      std::memcpy(&damaged[5 + 2 * at], &damage, sizeof damage);
      EXPECT_EQ(OutcomeOf(damaged, ReadCameraReply), OutcomeOf(damaged, ReadAsAWhole));
    }
  }
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
