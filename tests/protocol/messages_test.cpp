#include <gtest/gtest.h>

#include <cstring>
#include <utility>

#include "base/base64.h"
#include "base/exceptions.h"
#include "protocol/camera_reply.h"
#include "protocol/finder_messages.h"
#include "protocol/record_equality.h"
#include "protocol/record_wire.h"
#include "protocol/recording_wizard.h"
#include "protocol/request_wire.h"

namespace Tarn::CameraFinding {
namespace {

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

Bytes BytesOf(const Kestrel::ReferencePointer<Kestrel::Buffer>& buffer) {
  return Bytes(buffer->GetBytes().begin(), buffer->GetBytes().end());
}

/// The request must be that of the list which the serialiser writes.
template <class Message>
void ExpectTheRequestOfItsList(Message message) {
  Kestrel::ValueList written;
  Serialize(written, Direction::kWrite, message);
  EXPECT_EQ(BytesOf(EncodeRequest(message)), BytesOf(EncodeRequest(written)));
}

TEST(FinderMessages, AreRequestedAsTheirListsAre) {
  ExpectTheRequestOfItsList(ListFoundMessage{false});
  ExpectTheRequestOfItsList(BareMessage{});
  using namespace std::string_literals;
  // The lengths end a line of base64, pass the size of one buffer class, and leave each number of padding characters.
  for (const std::string& text :
       {""s, "a"s, "p\xC3\xA4ss\xE2\x82\xAC"s, "\xFF\0end"s, std::string(57, 'b'), std::string(70'000, 'c')}) {
    SCOPED_TRACE(text.size());
    ExpectTheRequestOfItsList(MacAddressMessage{text});
    ExpectTheRequestOfItsList(InfoByIpMessage{text});
    NetworkCommand command;
    command.networkCommandType = 0x80000001;
    ExpectTheRequestOfItsList(command);
    command = SampleNetworkCommand();
    command.loginUser = command.serialNumber = text;
    command.vendorTypeMask = 0xFEDCBA9876543210;
    command.ni2 = {text, "", text};
    command.pluginNames = {};
    ExpectTheRequestOfItsList(command);
  }
}

TEST(FinderMessages, AreWhatWasRecorded) {
  EXPECT_EQ(MessageIn("request-send-mac.bin", MacAddressMessage{}).mac, "00:40:8C:12:34:56");
  EXPECT_EQ(MessageIn("request-info-by-ip.bin", InfoByIpMessage{}).ip, "10.0.0.5");
  EXPECT_TRUE(MessageIn("request-list.bin", ListFoundMessage{false}).resendPreviousPictures);
  for (const std::uint32_t number : {1U, 4U}) {
    const std::string name = "request-network-type" + std::to_string(number) + ".bin";
    const auto command = MessageIn(name.c_str(), NetworkCommand{});
    EXPECT_EQ(command.networkCommandType, number);
    NetworkCommand sample = SampleNetworkCommand();
    EXPECT_EQ(static_cast<const CameraRecord&>(command), sample);
    sample.networkCommandType = number;
    EXPECT_EQ(BytesOf(EncodeRequest(sample)), ReadSample(name));
  }
  EXPECT_EQ(MessageIn("request-bare.bin", MacAddressMessage{"kept"}).mac, "kept");

  Kestrel::ValueList pushed;
  CameraListMessage cameras{ReadCameraReply(ReadSample("reply-list-3.bin"))}, read;
  Serialize(pushed, Direction::kWrite, cameras);
  Serialize(pushed, Direction::kRead, read);
  std::uint32_t code = 0;
  EXPECT_TRUE(pushed.Get(kCommandKey, code) && code == 3);
  EXPECT_EQ(read.cameras, cameras.cameras);
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
using Outcome = std::pair<std::vector<CameraRecord>, std::string>;
Outcome OutcomeOf(const Bytes& reply, std::vector<CameraRecord> (*read)(std::span<const std::uint8_t>)) {
  try {
    return {read(reply), ""};
  } catch (const Kestrel::KestrelException& exception) {
    return {{}, exception.GetClassName() + " " + exception.GetDescription()};
  }
}

TEST(FinderReply, IsTheSameByLinesAsItIsAsAWhole) {
  for (const char* const name :
       {"list-0", "list-2-narrow", "list-3", "list-cut", "list-300", "empty-text", "bad-tag"}) {
    const Bytes reply = ReadSample("reply-" + std::string(name) + ".bin");
    EXPECT_EQ(OutcomeOf(reply, ReadCameraReply), OutcomeOf(reply, ReadAsAWhole)) << name;
  }
  const Bytes whole = ReadSample("reply-list-300.bin");
  EXPECT_EQ(ReadCameraReply(whole).size(), 300U);
  // Damage in the lengths and at the seams: lines of 78 units, read 128 at a time.
  const std::size_t last = (whole.size() - 5) / 2 - 2;
  for (const std::size_t at :
       std::vector<std::size_t>{0, 47, 48, 49, 50, 51, 75, 76, 77, 9983, 9984, 9985, 19968, last}) {
    for (const char16_t damage : {u'A', u'/', u'=', u'\r', u'!', u'\u0338', u'\0'}) {
      SCOPED_TRACE(testing::Message() << at << " " << static_cast<int>(damage));
      Bytes damaged = whole;
      std::memcpy(&damaged[5 + 2 * at], &damage, sizeof damage);
      EXPECT_EQ(OutcomeOf(damaged, ReadCameraReply), OutcomeOf(damaged, ReadAsAWhole));
    }
  }
  Bytes joined = whole;  // the 201st line goes on in the 200th: longer than usual, and allowed
  joined.erase(joined.begin() + 5 + 2 * (200 * 78 - 2), joined.begin() + 5 + 2 * 200 * 78);
  joined[1] = static_cast<std::uint8_t>(joined[1] - 4);
  EXPECT_EQ(ReadCameraReply(joined).size(), 300U);

  // A "=" at a window's end ends the text, although canonical bytes go on behind it.
  std::string text;
  for (std::size_t at = 5; at + 2 < whole.size(); at += 2) text += static_cast<char>(whole[at]);
  Bytes list;
  Kestrel::Base64Decode(text, list);
  constexpr std::size_t kBytes = 128 * 57 - 1;
  Bytes ended(whole.begin(), whole.begin() + 5);
  for (const char c :
       Kestrel::Base64Encode(list.data(), kBytes) + Kestrel::Base64Encode(&list[kBytes], list.size() - kBytes) + '\0')
    ended.insert(ended.end(), {static_cast<std::uint8_t>(c), 0});
  const auto length = static_cast<std::uint32_t>(ended.size() - 5);
  std::memcpy(&ended[1], &length, sizeof length);
  EXPECT_EQ(OutcomeOf(ended, ReadCameraReply), OutcomeOf(ended, ReadAsAWhole));
}

TEST(FinderReply, IsWrittenAsRecordedByteForByte) {
  const Bytes recorded = ReadSample("reply-list-3.bin");
  Kestrel::ValueList list;
  WriteRecordList(list, kCameraInfoListKey, ReadCameraReply(recorded));
  EXPECT_EQ(BytesOf(EncodeReply(list)), recorded);
}

}  // namespace
}  // namespace Tarn::CameraFinding
