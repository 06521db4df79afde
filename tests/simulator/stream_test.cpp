/// Deliveries: what arrives, in what order, and that nobody waits for anybody.
#include <gtest/gtest.h>

#include <cstdlib>
#include <future>
#include <set>
#include <string>
#include <thread>

#include "simulator/dbi_library.h"
#include "simulator/default_scenario.h"

namespace simulator {
namespace {

std::string InstantDefault() {
  std::string scenario(kDefaultScenario);
  const std::string speed = "\"speed\": 1";
  return scenario.replace(scenario.find(speed), speed.size(), "\"speed\": \"instant\"");
}

/// n events of one camera, and what else the scenario says.
std::string Events(int count, const std::string& members = "") {
  std::string events;
  for (int i = 0; i < count; ++i)
    events += (i == 0 ? "" : ",") + std::string(R"({"atMs": 1, "camera": "a", "event": "gone"})");
  return R"({"speed": "instant", "cameras": [{"name": "a", "mac": "00:40:8C:12:34:56"}], )" + members +
         R"("events": [)" + events + "]}";
}

std::vector<Delivered> Deliver(const std::string& scenario, std::size_t count) {
  const DbiLibrary dbi(scenario);
  Receiver receiver;
  Tarn::TTarnLiveStream* const stream = dbi.StartStream(&receiver);
  std::vector<Delivered> blocks = receiver.WaitForBlocks(count);
  EXPECT_TRUE(dbi.setCallback(stream, kUnregisterDataCallback, &receiver));
  EXPECT_TRUE(receiver.WaitForReferences(0));
  dbi.destroy(stream);
  EXPECT_EQ(receiver.detached, 0);
  EXPECT_EQ(blocks.size(), count);
  blocks.resize(count);
  return blocks;
}

TEST(Delivery, OfTheDefaultWorldIsTheSameEachTimeAndUsesAllTypes) {
  const std::vector<Delivered> blocks = Deliver(InstantDefault(), 37);
  EXPECT_EQ(blocks, Deliver(InstantDefault(), 37));
  std::set<std::uint32_t> types;
  for (const Delivered& block : blocks) types.insert(block.first);
  EXPECT_EQ(types.size(), 8U);
}

TEST(Delivery, BlockFaultsCutAndAlterTheCountedBlocks) {
  std::vector<Delivered> expected = Deliver(Events(4), 4);
  expected[1].second.resize(5);
  expected[2].second[0] ^= 7;
  EXPECT_EQ(Deliver(Events(4, R"("blockFaults": [
      {"block": 2, "cutAt": 5, "delayMs": 1}, {"block": 3, "alterAt": 0, "alterMask": 7}, {"block": 4, "cutAt": 999}],)"),
                    4),
            expected);
}

TEST(Delivery, EventsWaitForARegistrationWhichTakesThePlaceOfTheOneBefore) {
  const DbiLibrary dbi(Events(500));
  Receiver first, second;
  Tarn::TTarnLiveStream* const stream = dbi.StartStream();
  dbi.SendAndRelease(stream, "request-send-mac.bin");  // pushes to nobody
  first.onBlock = [&] { EXPECT_TRUE(dbi.setCallback(stream, kRegisterDataCallback, &second)); };
  EXPECT_TRUE(dbi.setCallback(stream, kRegisterDataCallback, &first));
  EXPECT_EQ(first.WaitForBlocks(1).at(0).first, 8U);
  EXPECT_TRUE(first.WaitForReferences(0));
  EXPECT_TRUE(dbi.setCallback(stream, kUnregisterDataCallback, &first));
  for (int i = 0; i < 20; ++i) dbi.SendAndRelease(stream, "request-list.bin");  // meanwhile
  EXPECT_EQ(second.WaitForBlocks(499).size(), 499U);
  dbi.destroy(stream);
  EXPECT_EQ(second.detached, 1);
  EXPECT_TRUE(second.WaitForReferences(0));
}

/// As the finder does it: a worker ends everything while the delivery thread waits for that worker. What the callback
/// throws before that ends nothing.
TEST(Delivery, GoesOnAfterACallbackHasThrownAndMayEndTheStreamFromInside) {
  const DbiLibrary dbi(Events(5));
  Receiver receiver;
  Tarn::TTarnLiveStream* const stream = dbi.StartStream();
  int calls = 0;
  receiver.onBlock = [&] {
    if (++calls == 1) throw std::bad_alloc();
    std::thread([&] {
      EXPECT_TRUE(dbi.setCallback(stream, kUnregisterDataCallback, &receiver));
      dbi.destroy(stream);
      EXPECT_FALSE(dbi.start(stream));
    }).join();
  };
  EXPECT_TRUE(dbi.setCallback(stream, kRegisterDataCallback, &receiver));
  EXPECT_EQ(receiver.WaitForBlocks(1).size(), 1U);
  EXPECT_TRUE(receiver.WaitForReferences(0));
}

/// The exit comes from inside a callback, where the delivery thread would wait for itself, or beside a callback that
/// never returns.
TEST(ExitDeathTest, InADeliveryWaitsForNobody) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const bool inside : {true, false}) {
    const auto exitInADelivery = [inside] {
      const DbiLibrary dbi(Events(1));
      Receiver receiver;
      std::promise<void> delivering;
      receiver.onBlock = [&] {
        if (inside) std::exit(7);
        delivering.set_value();
        std::promise<void>().get_future().wait();
      };
      dbi.StartStream(&receiver);
      delivering.get_future().wait();
      std::exit(7);
    };
    EXPECT_EXIT(exitInADelivery(), testing::ExitedWithCode(7), "") << inside;
  }
}

/// Last in the file: where a thread keeps the library loaded, it stays so from here on.
TEST(Unload, WithAnOpenStreamAReplyAndAThreadLeavesNobodyBehind) {
  for (int i = 0; i < 20; ++i) {
    Receiver receiver;
    {
      const DbiLibrary dbi(Events(1));
      Tarn::TTarnLiveStream* const stream = dbi.StartStream(&receiver);
      void* reply = nullptr;
      EXPECT_TRUE(dbi.Send(stream, "request-list.bin", &reply));
      EXPECT_EQ(receiver.WaitForBlocks(1).size(), 1U);
    }
    EXPECT_EQ(receiver.detached, 0);
    ASSERT_TRUE(receiver.WaitForReferences(1));
  }
}

}  // namespace
}  // namespace simulator
