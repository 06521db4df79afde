/// Credentials leave a recording, and nothing else does.
#include <gtest/gtest.h>

#include "capture/redaction.h"
#include "capture/test_captures.h"
#include "protocol/camera_reply.h"
#include "protocol/finder_messages.h"
#include "protocol/record_equality.h"
#include "protocol/request_wire.h"
#include "valuelist/buffer_pool.h"

namespace capture {
namespace {

using namespace Tarn::CameraFinding;
using namespace std::string_literals;

Bytes Sample(const std::string& name) {
  return BytesOfFile(TARN_TEST_DATA "/" + name);
}

struct EntryRow {
  const char* name;
  std::string bytes;
  std::string redacted;
};
class RedactedEntry : public testing::TestWithParam<EntryRow> {};

TEST_P(RedactedEntry, HasItsLengthAndNoSecret) {
  const EntryRow& row = GetParam();
  Bytes bytes(row.bytes.begin(), row.bytes.end());
  EXPECT_EQ(RedactBinary(bytes), row.bytes != row.redacted);
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), row.redacted);
}

const std::string kUser = "\x0B\x04\0\0\0LUN\0"s, kPassword = "\x0B\x04\0\0\0LPD\0"s;
const std::string kWidePassword = "\x0C\x08\0\0\0L\0P\0D\0\0\0"s;

INSTANTIATE_TEST_SUITE_P(
    Table, RedactedEntry,
    testing::Values(
        EntryRow{"Texts", kUser + "\x0B\x03\0\0\0ab\0"s + kPassword + "\x0B\x04\0\0\0xyz\0!"s,
                 kUser + "\x0B\x03\0\0\0**\0"s + kPassword + "\x0B\x04\0\0\0***\0!"s},
        EntryRow{"WideText", kPassword + "\x0C\x06\0\0\0a\0\x20\x20\0\0"s, kPassword + "\x0C\x06\0\0\0*\0*\0\0\0"s},
        EntryRow{"WideName", kWidePassword + "\x0B\x02\0\0\0a\0"s, kWidePassword + "\x0B\x02\0\0\0*\0"s},
        EntryRow{"Number", kPassword + "\x06\x01\x02\x03\x04\x05"s, kPassword + "\x06****\x05"s},
        EntryRow{"Binary", kPassword + "\x0D\x02\0\0\0ab\0"s, kPassword + "\x0D\x02\0\0\0**\0"s},
        EntryRow{"CutValue", kPassword + "\x0B\x09\0\0\0secr"s, kPassword + "\x0B\x09\0\0\0****"s},
        EntryRow{"CutBeforeTheValue", kPassword + "\x0B\x09"s, kPassword + "\x0B\x09"s},
        EntryRow{"NeverSupplied", kUser + "\x0B\x0B\0\0\0&!*KVMR*9%\0"s, kUser + "\x0B\x0B\0\0\0&!*KVMR*9%\0"s},
        EntryRow{"OtherName", "\x0B\x04\0\0\0MDL\0\x0B\x03\0\0\0ab\0"s, "\x0B\x04\0\0\0MDL\0\x0B\x03\0\0\0ab\0"s},
        EntryRow{"EndsInTheName", "\x0B\x04\0\0\0L"s, "\x0B\x04\0\0\0L"s}),
    [](const auto& row) { return row.param.name; });

/// What is left of the credentials of all cameras in a reply.
std::string CredentialsIn(const Bytes& reply) {
  std::string texts;
  for (const CameraRecord& camera : ReadCameraReply(reply))
    texts += camera.loginUser + "/" + camera.loginPassword + " ";
  return texts;
}

TEST(RedactedReply, IsTheSameReplyWithoutItsCredentials) {
  for (const char* const name : {"reply-list-3.bin", "reply-list-300.bin", "reply-list-2-narrow.bin"}) {
    SCOPED_TRACE(name);
    const Bytes before = Sample(name);
    Bytes after = before;
    ASSERT_TRUE(RedactText(after, TextOfReply(after)));
    ASSERT_EQ(after.size(), before.size());
    auto expected = ReadCameraReply(before);
    for (CameraRecord& camera : expected) {
      if (camera.loginUser == "&!*KVMR*9%") continue;
      camera.loginUser.assign(camera.loginUser.size(), '*');
      camera.loginPassword.assign(camera.loginPassword.size(), '*');
    }
    EXPECT_EQ(ReadCameraReply(after), expected);
    EXPECT_EQ(CredentialsIn(after).find("operator"), std::string::npos);
  }
}

/// Line ends at any place move the characters, not what they mean.
TEST(RedactedReply, NeedsNoUsualLineEnds) {
  const Bytes usual = Sample("reply-list-3.bin");
  Bytes bytes(usual.begin(), usual.begin() + 5);
  std::size_t characters = 0;
  for (std::size_t at = 5; at + 1 < usual.size(); at += 2) {
    if (usual[at] == '\r' || usual[at] == '\n') continue;
    bytes.insert(bytes.end(), {usual[at], usual[at + 1]});
    if (usual[at] != 0 && ++characters % 7 == 0) bytes.insert(bytes.end(), {'\n', 0});
  }
  const auto length = static_cast<std::uint32_t>(bytes.size() - 5);
  std::memcpy(&bytes[1], &length, sizeof length);
  ASSERT_TRUE(RedactText(bytes, TextOfReply(bytes)));
  EXPECT_EQ(CredentialsIn(bytes), "********/********* ********/********* &!*KVMR*9%/&!*KVMR*9% ");
}

TEST(RedactedRequest, IsTheSameRequestWithoutItsCredentials) {
  Bytes request = Sample("request-network-type1.bin");
  ASSERT_TRUE(RedactText(request, kTextOfRequest));
  Kestrel::ValueList command;
  DecodeRequest(request, command);
  NetworkCommand message;
  Serialize(command, Direction::kRead, message);
  EXPECT_EQ(message.loginUser, "********");
  EXPECT_EQ(message.loginPassword, std::string(9, '*'));  // "päss€7" in UTF-8
  EXPECT_EQ(message.mac, "00:40:8C:00:00:07");
  Bytes other = Sample("request-list.bin");
  EXPECT_FALSE(RedactText(other, kTextOfRequest));
  EXPECT_EQ(other, Sample("request-list.bin"));
}

/// A message cut anywhere shows no secret, also where the cut is inside it, and nothing is read beyond the message.
TEST(RedactedBlock, CutAtAnyByteHasNoSecret) {
  const Bytes whole = Sample("block-4-camera.bin");
  ASSERT_TRUE(MayHoldCredentials(whole));
  for (std::size_t n = 0; n <= whole.size(); ++n) {
    Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(n));
    cut.shrink_to_fit();
    RedactBinary(cut);
    EXPECT_EQ(std::string(cut.begin(), cut.end()).find("operato"), std::string::npos) << n;
  }
  EXPECT_FALSE(MayHoldCredentials(Sample("block-1-picture.bin")));
}

}  // namespace
}  // namespace capture
