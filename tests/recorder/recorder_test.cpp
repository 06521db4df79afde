/// What stands in a recording. TARN_CAPTURE names the file; each test begins it anew.
#include <cstdlib>

#include "capture/redaction.h"
#include "capture/test_captures.h"
#include "platform/threads.h"
#include "wizard/finder_library.h"

namespace wizard {
namespace {

using capture::Frame;
using capture::FrameEvent;
using capture::PartKind;

class Recorder : public WizardTest {
 protected:
  Recorder() {
    if (const char* const path = std::getenv("TARN_CAPTURE")) file = path;
    if (std::filesystem::is_regular_file(file)) std::filesystem::remove(file);
  }
  std::vector<Frame> Frames() const { return capture::ReadCapture(capture::BytesOfFile(file)).frames; }

  std::filesystem::path file;
};

/// One word a frame: the function or event, "!" where it failed, and the size of each part.
std::string Told(const std::vector<Frame>& frames) {
  std::string told;
  for (const Frame& frame : frames) {
    told += frame.header.event == FrameEvent::kCall
                ? capture::kFunctionNames[frame.header.function]
                : capture::kEventNames[static_cast<std::size_t>(frame.header.event)];
    if (!frame.header.result) told += "!";
    for (const PartKind kind : {PartKind::kRequest, PartKind::kReply, PartKind::kBlock, PartKind::kError})
      if (const auto part = frame.Find(kind)) told += " " + std::to_string(part->size());
    told += "\n";
  }
  return told;
}

TEST_F(Recorder, TellsEveryCallAndBlockInItsOrder) {
  const Bytes block = SampleOfType(8);
  RecordingCallback callback;
  {
    const FinderLibrary library;
    const auto finder = library.MakeFinder();
    dbi.SetReply({});
    finder->SetNewCameraDataCallback(&callback);
    finder->SendBareCommand();
    dbi.Push(8, block);
    dbi.Detach();
    dbi.Fail(scripted::Function::kSend, scripted::Failure::kWithRecord);
    finder->SendBareCommand();
  }
  const std::string request = std::to_string(ReadSample("request-bare.bin").size());
  EXPECT_EQ(Told(Frames()),
            "TarnServer_CreateLiveStream\nTarnLiveStream_Open\nTarnLiveStream_Start\n"
            "TarnLiveStream_SetGenericDataCallback\n"
            "TarnLiveStream_SendSynchDSPCommand " +
                request +
                " 0\nTarnDBI_ReleaseReference\n"
                "block " +
                std::to_string(block.size()) +
                "\ndelivered\ndetach\n"
                "TarnLiveStream_SendSynchDSPCommand! " +
                request +
                " 0\nTarnDBIGetLastError 96\n"
                "TarnDBI_ReleaseReference\n"
                "TarnLiveStream_SetGenericDataCallback\nTarnLiveStream_Destroy\n");
}

TEST_F(Recorder, KeepsArgumentsBytesThreadsAndErrors) {
  const Bytes block = SampleOfType(1);
  RecordingCallback callback;
  {
    const FinderLibrary library;
    const auto finder = library.MakeFinder();
    finder->SetNewCameraDataCallback(&callback);
    dbi.Push(1, block, 2);
    dbi.Push(1, block, 5);
    dbi.Fail(scripted::Function::kSend, scripted::Failure::kWithRecord);
    finder->SendBareCommand();
  }
  const std::vector<Frame> frames = Frames();
  ASSERT_GT(frames.size(), 9U);
  const auto address = [](const void* pointer) { return reinterpret_cast<std::uintptr_t>(pointer); };
  EXPECT_EQ(frames[0].GetArguments(), std::vector{address(kServer)});
  EXPECT_EQ(frames[0].header.stream, address(kServer));  // the scripted library's handle
  EXPECT_EQ(frames[1].GetArguments()[2], address(kChannel));
  EXPECT_EQ(frames[3].GetArguments()[0], kRegisterDataCallback);
  EXPECT_EQ(frames[4].header.messageType, 1U);
  EXPECT_EQ(frames[4].GetArguments(), std::vector<std::uint64_t>{2});
  EXPECT_EQ(frames[6].GetArguments(), std::vector<std::uint64_t>{5});
  EXPECT_TRUE(std::ranges::equal(*frames[4].Find(PartKind::kBlock), block));
  EXPECT_EQ(frames[4].header.thread, platform::GetCurrentThreadId());
  const auto error = capture::ReadErrorRecord(*frames[9].Find(PartKind::kError));
  ASSERT_TRUE(error);
  EXPECT_EQ(error->errorClass, 7U);
  EXPECT_EQ(error->errorCode, 4711U);
  EXPECT_EQ(error->className, "Platform::StreamError");
  EXPECT_EQ(error->description, u"Der Stream fehlt: Küche");
  EXPECT_EQ(error->additionalText, "channel 3");
  EXPECT_TRUE(std::ranges::is_sorted(frames, {}, &Frame::time));
}

TEST_F(Recorder, LeavesCredentialsOut) {
  RecordingCallback callback;
  const Bytes reply = ReadSample("reply-list-3.bin");
  {
    const FinderLibrary library;
    const auto finder = library.MakeFinder();
    finder->SetNewCameraDataCallback(&callback);
    dbi.SetReply(reply);
    RecordingReceiver receiver;
    finder->ListFoundCameras(&receiver);
    EXPECT_EQ(receiver.cameras[0]["user"], "operator");
    dbi.Push(4, SampleOfType(4));
    EXPECT_EQ(callback.Delivered()[0]["camera"]["user"], "operator");
  }
  int replaced = 0;
  for (const Frame& frame : Frames()) {
    replaced += frame.header.flags & capture::kCredentialsReplaced;
    const std::string bytes(frame.body.begin(), frame.body.end());
    EXPECT_EQ(bytes.find("operator"), std::string::npos);
    if (const auto part = frame.Find(PartKind::kReply)) {
      EXPECT_EQ(part->size(), reply.size());
      EXPECT_FALSE(std::ranges::equal(*part, reply));
    }
  }
  EXPECT_EQ(replaced, 2);
}

TEST_F(Recorder, GoesOnBehindAnEarlierRecordingAndLeavesOtherFilesAlone) {
  const auto makeAndReleaseFinder = [] { FinderLibrary().MakeFinder(); };
  makeAndReleaseFinder();
  const Bytes first = capture::BytesOfFile(file);
  std::filesystem::resize_file(file, first.size() - 3);  // as after a kill in the last frame
  makeAndReleaseFinder();
  EXPECT_EQ(Told(Frames()), "TarnServer_CreateLiveStream\nTarnServer_CreateLiveStream\nTarnLiveStream_Destroy\n");
  std::ofstream(file, std::ios::binary) << "a letter";
  makeAndReleaseFinder();
  EXPECT_EQ(capture::BytesOfFile(file).size(), 8U);
}

}  // namespace
}  // namespace wizard
