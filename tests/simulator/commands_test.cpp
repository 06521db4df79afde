/// Commands against a world, no thread and no library around it.
#include "simulator/commands.h"

#include <gtest/gtest.h>

#include "protocol/finder_messages.h"
#include "simulator/scenario_reader.h"

namespace simulator {
namespace {

using namespace Tarn::CameraFinding;

/// The type of each block that is left.
std::string TakeAll(World& world) {
  std::string types;
  while (world.NextBlockTime()) types += std::to_string(world.TakeBlock().type) + " ";
  return types;
}

class Commands : public testing::Test {
 protected:
  template <class Message>
  Answer Send(Message message) {
    Kestrel::ValueList command;
    Serialize(command, Direction::kWrite, message);
    return ExecuteCommand(command, world);
  }
  std::string ListedIps() {
    const Answer answer = Send(ListFoundMessage{});
    std::string ips;
    for (const auto& camera : std::get<std::vector<World::Record>>(answer)) ips += camera->ip + " ";
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

TEST_F(Commands, ListCamerasReportThemAndSearchAnew) {
  EXPECT_EQ(ListedIps(), "10.0.0.1 10.0.0.3 ");
  EXPECT_TRUE(std::holds_alternative<std::monostate>(Send(MacAddressMessage{"00:40:8c:00:00:03"})));
  EXPECT_TRUE(std::holds_alternative<std::monostate>(Send(InfoByIpMessage{"10.0.0.2"}))) << "not present";
  EXPECT_EQ(std::get<World::Record>(Send(InfoByIpMessage{"10.0.0.3"}))->mac, "00:40:8C:00:00:03");
  EXPECT_EQ(TakeAll(world), "3 3 5 1 8 ") << "the reports, and the events in the order of their times";
  EXPECT_EQ(ListedIps(), "10.0.0.1 10.0.0.22 ");
  EXPECT_EQ(TakeAll(world), "1 ") << "the last pictures again";
  Send(MacAddressMessage{"00:40:8C:00:00:03"});
  EXPECT_EQ(TakeAll(world), "") << "it is gone";
  Send(BareMessage{});
  EXPECT_EQ(TakeAll(world), "5 1 8 ");
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

}  // namespace
}  // namespace simulator
