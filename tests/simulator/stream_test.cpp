/// Deliveries: what arrives, in what order, and that nobody waits for anybody.
#include <gtest/gtest.h>

#include <algorithm>
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
  Tarn::TTarnLiveStream* const stream = dbi.StartStream();
  EXPECT_TRUE(dbi.setCallback(stream, kRegisterDataCallback, &receiver));
  std::vector<Delivered> blocks = receiver.WaitForBlocks(count);
  EXPECT_TRUE(dbi.setCallback(stream, kUnregisterDataCallback, &receiver));
  EXPECT_TRUE(receiver.WaitUntilReleased());
  dbi.destroy(stream);
  EXPECT_EQ(receiver.detached, 0);
  return blocks;
}

TEST(Delivery, OfTheDefaultWorldIsTheSameEachTimeAndUsesAllTypes) {
  const std::vector<Delivered> blocks = Deliver(InstantDefault(), 37);
  ASSERT_EQ(blocks.size(), 37U);
  EXPECT_EQ(blocks, Deliver(InstantDefault(), 37));
  std::set<std::uint32_t> types;
  for (const Delivered& block : blocks) types.insert(block.first);
  EXPECT_EQ(types.size(), 8U);
}

TEST(Delivery, BlockFaultsCutAndAlterTheCountedBlocks) {
  const std::vector<Delivered> whole = Deliver(Events(4), 4);
  const std::vector<Delivered> blocks = Deliver(Events(4, R"("blockFaults": [
      {"block": 2, "cutAt": 5, "delayMs": 1}, {"block": 3, "alterAt": 0, "alterMask": 7}, {"block": 4, "cutAt": 999}],)"),
                                                4);
  ASSERT_EQ(blocks.size(), 4U);
  EXPECT_EQ(blocks[0], whole[0]);
  EXPECT_EQ(blocks[1].second, std::vector<std::uint8_t>(whole[1].second.begin(), whole[1].second.begin() + 5));
  EXPECT_EQ(blocks[2].second[0], whole[2].second[0] ^ 7);
  EXPECT_EQ(blocks[3], whole[3]);
}

TEST(Delivery, EventsWaitWhileNobodyIsRegisteredAndPushesOfCommandsDoNot) {
  const DbiLibrary dbi(Events(500));
  Receiver first, second;
  Tarn::TTarnLiveStream* const stream = dbi.StartStream();
  void* reply = nullptr;
  EXPECT_TRUE(dbi.Send(stream, "request-send-mac.bin", &reply));
  EXPECT_TRUE(dbi.releaseReference(reply));
  first.onBlock = [&] { EXPECT_TRUE(dbi.setCallback(stream, kUnregisterDataCallback, &first)); };
  EXPECT_TRUE(dbi.setCallback(stream, kRegisterDataCallback, &first));
  EXPECT_EQ(first.WaitForBlocks(1).at(0).first, 8U);
  EXPECT_TRUE(first.WaitUntilReleased());
  EXPECT_TRUE(dbi.setCallback(stream, kRegisterDataCallback, &second));
  EXPECT_EQ(second.WaitForBlocks(499).size(), 499U);
  dbi.destroy(stream);
  EXPECT_TRUE(second.WaitUntilReleased());
}

TEST(Delivery, ARegistrationTakesThePlaceOfTheOneBefore) {
  const DbiLibrary dbi(Events(0));
  Receiver first, second;
  Tarn::TTarnLiveStream* const stream = dbi.StartStream();
  EXPECT_TRUE(dbi.setCallback(stream, kRegisterDataCallback, &first));
  EXPECT_TRUE(dbi.setCallback(stream, kRegisterDataCallback, &second));
  EXPECT_TRUE(first.WaitUntilReleased());
  EXPECT_TRUE(dbi.setCallback(stream, kUnregisterDataCallback, &first));
  void* reply = nullptr;
  EXPECT_TRUE(dbi.Send(stream, "request-send-mac.bin", &reply));
  EXPECT_TRUE(dbi.releaseReference(reply));
  EXPECT_EQ(second.WaitForBlocks(1).at(0).first, 3U);
  dbi.destroy(stream);
  EXPECT_EQ(second.detached, 1);
  EXPECT_TRUE(second.WaitUntilReleased());
}

/// As the finder does it: a worker ends everything while the delivery thread waits for that worker.
TEST(Delivery, MayEndTheStreamFromInside) {
  const DbiLibrary dbi(Events(5));
  Receiver receiver;
  Tarn::TTarnLiveStream* const stream = dbi.StartStream();
  receiver.onBlock = [&] {
    std::thread([&] {
      EXPECT_TRUE(dbi.setCallback(stream, kUnregisterDataCallback, &receiver));
      dbi.destroy(stream);
      EXPECT_FALSE(dbi.start(stream));
    }).join();
  };
  EXPECT_TRUE(dbi.setCallback(stream, kRegisterDataCallback, &receiver));
  EXPECT_TRUE(receiver.WaitUntilReleased());
  EXPECT_EQ(receiver.WaitForBlocks(1).size(), 1U);
}

TEST(Delivery, GoesOnAfterACallbackHasThrown) {
  const DbiLibrary dbi(Events(3));
  Receiver receiver;
  int calls = 0;
  receiver.onBlock = [&] {
    if (++calls == 1) throw std::bad_alloc();
  };
  Tarn::TTarnLiveStream* const stream = dbi.StartStream();
  EXPECT_TRUE(dbi.setCallback(stream, kRegisterDataCallback, &receiver));
  EXPECT_EQ(receiver.WaitForBlocks(2).size(), 2U);
  dbi.destroy(stream);
  EXPECT_TRUE(receiver.WaitUntilReleased());
}

TEST(Requests, OfSeveralThreadsAtOnceAreAllAnswered) {
  const DbiLibrary dbi(InstantDefault());
  Receiver receiver;
  Tarn::TTarnLiveStream* const stream = dbi.StartStream();
  EXPECT_TRUE(dbi.setCallback(stream, kRegisterDataCallback, &receiver));
  std::vector<std::thread> threads;
  const char* const requests[] = {"request-list.bin", "request-bare.bin", "request-network-type4.bin"};
  for (const char* const request : requests) {
    threads.emplace_back([&dbi, stream, request] {
      for (int i = 0; i < 20; ++i) {
        void* reply = nullptr;
        EXPECT_TRUE(dbi.Send(stream, request, &reply));
        EXPECT_TRUE(dbi.releaseReference(reply));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  dbi.destroy(stream);
  EXPECT_TRUE(receiver.WaitUntilReleased());
}

/// Last in the file: where a thread keeps the library loaded, it stays so from here on.
TEST(Unload, WithAnOpenStreamAReplyAndAThreadLeavesNobodyBehind) {
  for (int i = 0; i < 20; ++i) {
    Receiver receiver;
    {
      const DbiLibrary dbi(Events(1));
      Tarn::TTarnLiveStream* const stream = dbi.StartStream();
      void* reply = nullptr;
      EXPECT_TRUE(dbi.Send(stream, "request-list.bin", &reply));
      EXPECT_TRUE(dbi.setCallback(stream, kRegisterDataCallback, &receiver));
      EXPECT_EQ(receiver.WaitForBlocks(1).size(), 1U);
    }
    EXPECT_EQ(receiver.detached, 0);
    EXPECT_EQ(receiver.References(), 1);
  }
}

}  // namespace
}  // namespace simulator
