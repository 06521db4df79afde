/// Commands and blocks against a world, no thread and no library around it.
#include "simulator/commands.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "protocol/finder_messages.h"
#include "protocol/record_wire.h"
#include "simulator/scenario_reader.h"
#include "valuelist/buffer_pool.h"

namespace simulator {
namespace {

using namespace Tarn::CameraFinding;

Bytes Sample(const std::string& name) {
  std::ifstream file(TARN_TEST_DATA "/" + name, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

/// The type of each block that is left.
std::string TakeAll(World& world) {
  std::string types;
  while (world.NextBlockTime()) types += std::to_string(world.TakeBlock().type) + " ";
  return types;
}

class Commands : public testing::Test {
 protected:
  template <class Message>
  Kestrel::ValueList Send(Message message) {
    Kestrel::ValueList command;
    Serialize(command, Direction::kWrite, message);
    return ReplyOf(ExecuteCommand(command, world));
  }
  std::string ListedIps() {
    CameraListMessage list;
    Kestrel::ValueList reply = Send(ListFoundMessage{});
    Serialize(reply, Direction::kRead, list);
    std::string ips;
    for (const CameraRecord& camera : list.cameras) ips += camera.ip + " ";
    return ips;
  }

  World world{std::make_shared<const Scenario>(ReadScenario(R"({
    "cameras": [
      {"name": "a", "mac": "00:40:8C:00:00:01", "ip": "10.0.0.1", "user": "me", "password": "old"},
      {"name": "b", "mac": "00:40:8C:00:00:02", "ip": "10.0.0.2", "present": false},
      {"name": "c", "mac": "00:40:8C:00:00:03", "ip": "10.0.0.3"}],
    "events": [
      {"atMs": 2, "camera": "c", "event": "gone"},
      {"atMs": 1, "camera": "b", "event": "found", "set": {"ip": "10.0.0.22"}},
      {"atMs": 1, "camera": "b", "event": "picture"}]})",
                                                            "s.json"))};
};

TEST_F(Commands, ListTellsWhoIsPresentAndResendsTheirLastPictures) {
  EXPECT_EQ(ListedIps(), "10.0.0.1 10.0.0.3 ");
  EXPECT_EQ(TakeAll(world), "5 1 8 ");
  EXPECT_EQ(ListedIps(), "10.0.0.1 10.0.0.22 ");
  EXPECT_EQ(TakeAll(world), "1 ");
}

TEST_F(Commands, ACameraThatIsAskedForIsPushedAheadOfTheEvents) {
  EXPECT_TRUE(Send(MacAddressMessage{"00:40:8c:00:00:03"}).GetEntries().empty());
  CameraRecord record;
  ReadRecord(Send(InfoByIpMessage{"10.0.0.3"}), record);
  EXPECT_EQ(record.mac, "00:40:8C:00:00:03");
  EXPECT_TRUE(Send(InfoByIpMessage{"10.0.0.2"}).GetEntries().empty()) << "not present";
  EXPECT_EQ(TakeAll(world), "3 3 5 1 8 ");
  Send(MacAddressMessage{"00:40:8C:00:00:03"});  // gone
  EXPECT_EQ(TakeAll(world), "");
  Send(BareMessage{});
  EXPECT_EQ(TakeAll(world), "5 1 8 ") << "the search begins anew";
}

TEST_F(Commands, SetNetworkChangesTheCameraButNotByTheSentinel) {
  NetworkCommand command;
  command.networkCommandType = 4;
  command.mac = "00:40:8C:00:00:01";
  command.ip = "10.9.9.9";
  command.loginPassword = "new";
  command.model = "not to be taken over";
  Send(command);
  const CameraRecord& record = *world.RecordOf(0);
  EXPECT_EQ(record.ip + " " + record.loginUser + " " + record.loginPassword + record.model, "10.9.9.9 me new");
  EXPECT_EQ(TakeAll(world), "4 5 1 8 ");
}

TEST(Blocks, AreThoseOfRecordedTraffic) {
  CameraRecord camera;
  camera.mac = "08:00:23:01:02:03";
  camera.ip = "10.1.2.3";
  camera.vendorDisplayName = "Assembled";
  camera.pluginNames = {"Marten IPC", "V1 IPC"};
  camera.ctt = 4;
  EXPECT_EQ(AssembledBlock(camera).bytes, Sample("block-7-assembled.bin"));

  camera.mac = "AC:CC:8E:00:00:08";
  camera.ctt = 7;
  EXPECT_EQ(GoneBlock(camera).bytes, Sample("block-8-gone.bin"));

  for (const auto type : {fmtCameraKind3, fmtCameraKind1, fmtCameraKind0, fmtCameraKind2}) {
    const Bytes recorded = Sample("block-" + std::to_string(type) + "-camera.bin");
    const auto list = Kestrel::CreateBuffer(recorded.data() + 12, recorded.size() - 12);
    EXPECT_EQ(RecordBlock(type, ReadFirstRecord(*list)).bytes, recorded) << type;
  }
  const Bytes picture = Sample("block-1-picture.bin");
  EXPECT_EQ(PictureBlock("Camera Küche", std::span(picture).subspan(55, 42853)).bytes, picture);

  const std::uint64_t values[] = {1, ~0ULL, 42};
  Bytes expected = Sample("block-2-values.bin");
  expected.erase(expected.begin() + 0x55, expected.end() - 4);  // its second chunk of values
  EXPECT_EQ(ValuesBlock("counter", values).bytes, expected);
}

}  // namespace
}  // namespace simulator
