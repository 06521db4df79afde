/// Real messages, played through the built library.
#include "base/text_conversion.h"
#include "wizard/finder_library.h"

namespace wizard {
namespace {

using Samples = WizardTest;

TEST_F(Samples, EveryRequestIsSentByteForByte) {
  const FinderLibrary library;
  const auto finder = library.MakeFinder();
  RecordingReceiver receiver;
  int played = 0;
  for (const auto& [name, expected] : ExpectedOfSamples().items()) {
    if (!name.starts_with("request-")) continue;
    SCOPED_TRACE(name);
    const std::string call = expected["call"];
    const std::u16string argument = Kestrel::Utf8ToWide(expected.value("argument", std::string()));
    if (call == "SendMacAddress") finder->SendMacAddress(argument.c_str());
    if (call == "RequestInfoByIp") finder->RequestInfoByIp(argument.c_str());
    if (call == "ListFoundCameras") finder->ListFoundCameras(&receiver);
    if (call == "SendBareCommand") finder->SendBareCommand();
    if (expected.contains("camera")) {
      JsonCamera camera(expected["camera"]);
      const auto send = call == "SendNetworkCommandType1" ? &ICameraFinder::SendNetworkCommandType1
                                                          : &ICameraFinder::SendNetworkCommandType4;
      EXPECT_EQ((finder.Get()->*send)(&camera), 1);
      EXPECT_EQ(camera.asked, "firmware model gateway subnetMask ip mac dhcp password user ");
    }
    EXPECT_EQ(dbi.LastRequest(), ReadSample(name));
    ++played;
  }
  EXPECT_EQ(played, 6);
}

TEST_F(Samples, EveryReplyGivesItsCamerasOrItsException) {
  const FinderLibrary library;
  const auto finder = library.MakeFinder();
  int played = 0;
  for (const auto& [name, expected] : ExpectedOfSamples().items()) {
    if (!name.starts_with("reply-")) continue;
    SCOPED_TRACE(name);
    dbi.SetReply(ReadSample(name));
    RecordingReceiver receiver;
    std::string thrown;
    try {
      finder->ListFoundCameras(&receiver);
    } catch (const std::exception& exception) {
      thrown = exception.what();
    }
    EXPECT_EQ(thrown, expected.value("text", ""));
    EXPECT_EQ(receiver.cameras, expected.value("cameras", json::array()));
    EXPECT_EQ(receiver.references, 0U);
    if (thrown.empty()) finder->ListFoundCameras(nullptr);
    finder->RequestInfoByIp(u"10.0.0.5");  // the same replies, and nothing comes of them
    ++played;
  }
  EXPECT_EQ(played, 8);
}

TEST_F(Samples, EveryBlockIsDeliveredAsStated) {
  const FinderLibrary library;
  const auto finder = library.MakeFinder();
  int played = 0;
  for (const auto& [name, expected] : ExpectedOfSamples().items()) {
    if (!name.starts_with("block-")) continue;
    SCOPED_TRACE(name);
    RecordingCallback callback;
    finder->SetNewCameraDataCallback(&callback);
    const Bytes block = ReadSample(name);
    ASSERT_TRUE(dbi.Push(expected["messageType"], block));
    EXPECT_EQ(callback.Delivered(), expected["delivered"]);
    if (name == "block-1-picture.bin") {
      // Behind the chunk of the text and the head of the picture's chunk.
      EXPECT_EQ(callback.lastPicture, Bytes(block.begin() + 55, block.begin() + 55 + 42853));
    }
    ASSERT_TRUE(dbi.Push(expected["messageType"], block, 1));  // not the finder's kind
    EXPECT_EQ(callback.Delivered().size(), expected["delivered"].size());
    finder->SetNewCameraDataCallback(nullptr);
    ASSERT_TRUE(dbi.Push(expected["messageType"], block));  // dropped: nobody is there
    EXPECT_EQ(callback.references, 0U);
    ++played;
  }
  EXPECT_EQ(played, 16);
}

}  // namespace
}  // namespace wizard
