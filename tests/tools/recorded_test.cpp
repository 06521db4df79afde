/// Commands over recorded conversations: what is shown, counted, redacted, explained and compared.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <utility>

#include "capture/test_captures.h"
#include "dbi/dbi.h"
#include "tools/capture/camera_set.h"
#include "tools/capture/event_filter.h"
#include "tools/capture/explanation.h"
#include "tools/commands/commands.h"
#include "tools/failure.h"

namespace tarnfind {
namespace {

using capture::Bytes;
using capture::Function;
using capture::PartKind;

Bytes Sample(const std::string& name) {
  return capture::BytesOfFile(TARN_TEST_DATA "/" + name);
}

struct StringOutput final : TextOutput {
  void Write(std::string_view part) override { text += part; }
  std::string text;
};

/// A conversation, a frame every 100 ms, with calls of one millisecond.
class Recorded {
 public:
  Recorded() { writer_.WriteSectionStart(); }

  Recorded& Call(Function function, std::uint8_t result = 1, std::uint64_t argument = 0, const Bytes& request = {},
                 const Bytes& reply = {}, std::uint64_t duration = 1'000'000) {
    capture::FrameHeader header;
    header.function = static_cast<std::uint8_t>(function);
    header.result = result;
    header.duration = duration;
    capture::FrameParts parts;
    const std::uint64_t arguments[] = {argument, 0xCA11};
    parts.Add(PartKind::kArguments, std::as_bytes(std::span(arguments)));
    if (function == Function::kSendSynchDSPCommand) {
      parts.Add(PartKind::kRequest, std::as_bytes(std::span(request)));
      parts.Add(PartKind::kReply, std::as_bytes(std::span(reply)));
    }
    return Write(header, parts);
  }
  /// The call fails, and tells why.
  Recorded& Fail(Function function, const Bytes& request = {}) {
    Call(function, 0, 0, request);
    const Bytes record = {2, 0, 0, 0, 7, 0, 0, 0, 1, 0, 0, 0, 'E', 4, 0, 0, 0, 'n', 0, 'o', 0, 0, 0, 0, 0};
    capture::FrameHeader header;
    header.function = static_cast<std::uint8_t>(Function::kGetLastError);
    capture::FrameParts parts;
    parts.Add(PartKind::kError, std::as_bytes(std::span(record)));
    return Write(header, parts);
  }
  Recorded& Block(std::uint32_t type, const Bytes& block, std::uint64_t kind = 2) {
    capture::FrameHeader header;
    header.event = capture::FrameEvent::kBlock;
    header.direction = capture::FrameDirection::kToFinder;
    header.messageType = type;
    capture::FrameParts parts;
    parts.Add(PartKind::kArguments, std::as_bytes(std::span(&kind, 1)));
    parts.Add(PartKind::kBlock, std::as_bytes(std::span(block)));
    return Write(header, parts);
  }
  Recorded& Ended(capture::FrameEvent event, std::uint8_t result = 1) {
    capture::FrameHeader header;
    header.event = event;
    header.result = result;
    header.duration = 5'000'000;
    return Write(header, {});
  }
  /// The library is loaded once more, and the recording goes on.
  Recorded& Load() {
    writer_.WriteSectionStart();
    return *this;
  }
  Recorded& Open() { return Call(Function::kCreateLiveStream).Call(Function::kOpen).Call(Function::kStart); }
  Recorded& Search() { return Open().Call(Function::kSetGenericDataCallback, 1, kRegisterDataCallback); }
  Recorded& Wait(std::uint64_t nanoseconds) {
    time_ += nanoseconds;
    return *this;
  }

  /// The file, which lives until the next one is saved under that name.
  std::string Save(const char* name = "tarnfind_recorded") const {
    const auto path = std::filesystem::temp_directory_path() / (std::string(name) + ".pcapng");
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(sink_.bytes.data()), static_cast<std::streamsize>(sink_.bytes.size()));
    return path.string();
  }

 private:
  Recorded& Write(capture::FrameHeader header, const capture::FrameParts& parts) {
    header.thread = 7;
    header.stream = 9;
    time_ += 100'000'000;
    writer_.WriteFrame(header, time_, parts);
    return *this;
  }

  capture::MemorySink sink_;
  capture::FrameWriter writer_{sink_};
  std::uint64_t time_ = 1'000'000'000;
};

std::string Told(void (*command)(const Options&, TextOutput&), const CaptureOptions& capture, bool json = false) {
  Options options;
  options.capture = capture;
  options.json = json;
  StringOutput output;
  command(options, output);
  return output.text;
}

CaptureOptions Over(const Recorded& recorded) {
  CaptureOptions options;
  options.file = options.capture = recorded.Save();
  return options;
}

/// A picture without bytes for that camera.
Bytes Picture(const std::string& text) {
  Bytes block = {5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x0B, static_cast<std::uint8_t>(text.size() + 1), 0, 0, 0};
  for (const char c : text) block.push_back(static_cast<std::uint8_t>(c));
  block.insert(block.end(), {0, 6, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0, 0, 0, 0});
  return block;
}

constexpr char kMac[] = "00:40:8C:00:00:2C";  // block-4-camera.bin

TEST(Show, TellsALineForEachCallAndBlock) {
  EXPECT_EQ(
      Told(RunShow, Over(Recorded()
                             .Search()
                             .Call(Function::kSendSynchDSPCommand, 1, 0, Sample("request-info-by-ip.bin"))
                             .Block(8, Sample("block-8-gone.bin"))
                             .Ended(capture::FrameEvent::kDelivered)
                             .Block(3, {})
                             .Ended(capture::FrameEvent::kDelivered, 0)
                             .Fail(Function::kSetGenericDataCallback))),
      "   0.000000     1      7 -> CreateLiveStream                         1.000 ms  \n"
      "   0.100000     2      7 -> Open                                     1.000 ms  \n"
      "   0.200000     3      7 -> Start                                    1.000 ms  \n"
      "   0.300000     4      7 -> SetGenericDataCallback, register         1.000 ms  \n"
      "   0.400000     5      7 -> info 10.0.0.5                            1.000 ms  answered with nothing\n"
      "   0.501000     6      7 <- block type 8, 70 bytes                             camera AC:CC:8E:00:00:08  "
      "\"\", event kind 4, camera type 24\n"
      "   0.701000     8      7 <- block type 3, 0 bytes                              dropped: empty hardware "
      "address\n"
      "   0.801000     9      7 -> delivered                                          the finder's callback threw "
      "an exception\n"
      "   0.900000    10      7 -> SetGenericDataCallback, register         1.000 ms  failed\n"
      "   1.001000    11      7 -> GetLastError                             0.000 ms  error 7 of class 2 (E): no []\n");
}

TEST(Show, FiltersByAddressFunctionAndType) {
  CaptureOptions options = Over(Recorded()
                                    .Search()
                                    .Call(Function::kSendSynchDSPCommand, 1, 0, Sample("request-info-by-ip.bin"))
                                    .Block(4, Sample("block-4-camera.bin"))
                                    .Block(8, Sample("block-8-gone.bin"))
                                    .Block(1, Picture("00:40:8C:00:00:07")));
  struct Row {
    std::vector<std::string> filters;
    std::ptrdiff_t lines;
  };
  const Row rows[] = {
      {{}, 8},         {{"mac=ac-cc-8e-00-00-08"}, 1},           {{"ip=10.0.0.5"}, 1},          {{"function=OPEN"}, 1},
      {{"type=4"}, 1}, {{"type=4", "mac=AC:CC:8E:00:00:08"}, 0}, {{"mac=00:40:8C:00:00:07"}, 1}};
  for (const Row& row : rows) {
    options.filters = row.filters;
    for (std::string& filter : options.filters) ASSERT_EQ(NormaliseEventFilter(filter), "");
    const std::string text = Told(RunShow, options);
    EXPECT_EQ(std::ranges::count(text, '\n'), row.lines) << text;
  }
  for (std::string filter : {"mac=1", "ip=x", "colour=red", "mac", "type=x", "type="})
    EXPECT_NE(NormaliseEventFilter(filter), "");
}

TEST(Stats, CountsSizesAndTimesByCommandAndType) {
  const std::string text = Told(
      RunStats, Over(Recorded()
                         .Search()
                         .Call(Function::kSendSynchDSPCommand, 1, 0, Sample("request-bare.bin"), {1, 2}, 20'000'000)
                         .Call(Function::kSendSynchDSPCommand, 0, 0, Sample("request-bare.bin"), {}, 2'000'000'000)
                         .Block(8, Sample("block-8-gone.bin"))
                         .Ended(capture::FrameEvent::kDelivered)
                         .Block(8, {1})
                         .Ended(capture::FrameEvent::kDelivered)));
  EXPECT_NE(
      text.find("block type 8                       2       1         71        70       5.000       5.000  ···█····"),
      std::string::npos)
      << text;
  EXPECT_NE(
      text.find("command bare                       2       1        170        86    1010.000    2000.000  ····█·█·"),
      std::string::npos)
      << text;
}

TEST(Redact, LeavesTheConversationAndTakesTheCredentials) {
  CaptureOptions options =
      Over(Recorded()
               .Search()
               .Call(Function::kSendSynchDSPCommand, 1, 0, Sample("request-list.bin"), Sample("reply-list-300.bin"))
               .Block(4, Sample("block-4-camera.bin")));
  options.target = (std::filesystem::temp_directory_path() / "tarnfind_redacted.pcapng").string();
  EXPECT_EQ(Told(RunRedact, options), "2 frames with credentials out of 6 frames\n");
  const capture::ReadCapture before(capture::BytesOfFile(options.file)), after(capture::BytesOfFile(options.target));
  ASSERT_EQ(after.frames.size(), 6U);
  EXPECT_EQ(after.frames[4].body.size(), before.frames[4].body.size());
  EXPECT_EQ(after.frames[4].time, before.frames[4].time);
  const Bytes& body = after.frames[5].body;
  EXPECT_EQ(std::string(body.begin(), body.end()).find("operator"), std::string::npos);
  options.file = options.target;
  EXPECT_EQ(Told(RunRedact,
                 [&] {
                   auto again = options;
                   again.target += "2";
                   return again;
                 }()),
            "2 frames with credentials out of 6 frames\n");
  EXPECT_THROW(Told(RunRedact, options), WrongUse) << "the file itself";
  options.target += "/below a file";
  EXPECT_THROW(Told(RunRedact, options), Failure);
}

/// What can go wrong, each with what is said of it.
struct FaultRow {
  const char* name;
  std::function<void(Recorded&)> record;
  const char* verdict;
  const char* step;  ///< stands in the steps
};
class ExplainedFault : public testing::TestWithParam<FaultRow> {};

TEST_P(ExplainedFault, HasItsSentence) {
  Recorded recorded;
  GetParam().record(recorded);
  CaptureOptions options = Over(recorded);
  options.address = kMac;
  const std::string text = Told(RunExplain, options);
  EXPECT_NE(text.find(std::string("\n") + GetParam().verdict), std::string::npos) << text;
  EXPECT_NE(text.find(GetParam().step), std::string::npos) << text;
  EXPECT_NE(text.find("\nTry: "), std::string::npos) << text;
}

Bytes Altered(Bytes bytes, const std::string& old, const std::string& fresh) {
  const auto at = std::search(bytes.begin(), bytes.end(), old.begin(), old.end());
  std::copy(fresh.begin(), fresh.end(), at);
  return bytes;
}
Bytes Camera() {
  return Sample("block-4-camera.bin");
}
Bytes CutAt(std::size_t size) {
  Bytes block = Camera();
  block.resize(size);
  return block;
}

INSTANTIATE_TEST_SUITE_P(
    Table, ExplainedFault,
    testing::Values(
        FaultRow{"NothingRecorded", [](auto&) {}, "The finder was never made.",
                 "the recorder is not in the library's place"},
        FaultRow{"CreateFails", [](auto& c) { c.Fail(Function::kCreateLiveStream); },
                 "The finder has no stream to the server.",
                 "TarnServer_CreateLiveStream failed: error 7 of class 2 (E): no []."},
        FaultRow{"NothingAsked", [](auto& c) { c.Call(Function::kCreateLiveStream); },
                 "Nothing was asked of the finder.", "The stream was never opened"},
        FaultRow{"OpenFails", [](auto& c) { c.Call(Function::kCreateLiveStream).Fail(Function::kOpen); },
                 "The stream could not be opened or started", "TarnLiveStream_Open failed: error 7"},
        FaultRow{"StartFails",
                 [](auto& c) { c.Call(Function::kCreateLiveStream).Call(Function::kOpen).Fail(Function::kStart); },
                 "The stream could not be opened or started", "TarnLiveStream_Start failed: error 7"},
        FaultRow{"OpenFailsOnce", [](auto& c) { c.Call(Function::kCreateLiveStream).Fail(Function::kOpen).Search(); },
                 "No block arrived", "It had failed 1 time before: error 7"},
        FaultRow{"OpenFailsWithoutARecord",
                 [](auto& c) { c.Call(Function::kCreateLiveStream).Call(Function::kOpen, 0).Call(Function::kStart); },
                 "No callback was registered",
                 "! open      TarnLiveStream_Open failed 1 time without an error record, which the finder takes for"},
        FaultRow{"SlowOpen", [](auto& c) { c.Call(Function::kOpen, 1, 0, {}, {}, 2'500'000'000).Search(); },
                 "No block arrived", "The longest call took 2.5 s."},
        FaultRow{"RegistrationFails", [](auto& c) { c.Open().Fail(Function::kSetGenericDataCallback); },
                 "The callback was refused", "TarnLiveStream_SetGenericDataCallback failed: error 7"},
        FaultRow{"RegistrationFailsWithoutARecord",
                 [](auto& c) {
                   c.Open()
                       .Call(Function::kSetGenericDataCallback, 0, kRegisterDataCallback)
                       .Call(Function::kSendSynchDSPCommand, 1, 0, Sample("request-list.bin"),
                             Sample("reply-list-300.bin"))
                       .Call(Function::kSetGenericDataCallback, 1, kUnregisterDataCallback);
                 },
                 "The callback was refused without an error record",
                 "! callback  No callback was registered, so the server's blocks reach nobody. "
                 "TarnLiveStream_SetGenericDataCallback failed 1 time without an error record"},
        FaultRow{"NoCallback", [](auto& c) { c.Open(); }, "No callback was registered",
                 "so the server's blocks reach nobody"},
        FaultRow{"CommandFails",
                 [](auto& c) { c.Search().Fail(Function::kSendSynchDSPCommand, Sample("request-send-mac.bin")); },
                 "Commands failed, and no block arrived.", "send-mac 00:40:8C:12:34:56 at 0.400 s, packet 5: error 7"},
        FaultRow{"ManyCommandsFail",
                 [](auto& c) {
                   c.Search();
                   for (int i = 0; i < 25; ++i) c.Fail(Function::kSendSynchDSPCommand, Sample("request-bare.bin"));
                 },
                 "Commands failed, and no block arrived.",
                 "packet 43: error 7 of class 2 (E): no []\n              and 5 more"},
        FaultRow{"ListFails",
                 [](auto& c) { c.Search().Fail(Function::kSendSynchDSPCommand, Sample("request-list.bin")); },
                 "Commands failed, and no block arrived.", "1 list was asked for, and 1 failed or cannot be read."},
        FaultRow{"BeginsLater", [](auto& c) { c.Block(8, Sample("block-8-gone.bin")); },
                 "The server has never named it", "  callback  Not in this capture, which begins later."},
        FaultRow{"BeginsBeforeTheEnd",
                 [](auto& c) { c.Call(Function::kSetGenericDataCallback, 1, kUnregisterDataCallback); },
                 "No block arrived: the server has pushed nothing.",
                 "  callback  The callback was registered before this capture begins, and let go in it."},
        FaultRow{"ReleaseFails", [](auto& c) { c.Search().Fail(Function::kReleaseReference); }, "No block arrived",
                 "1 reply could not be released, which costs memory and no cameras."},
        FaultRow{"NothingPushed", [](auto& c) { c.Search(); }, "No block arrived: the server has pushed nothing.",
                 "0 blocks arrived, and none with its record reached the wizard."},
        FaultRow{
            "Silence",
            [](auto& c) {
              c.Search().Block(8, Sample("block-8-gone.bin")).Wait(3'000'000'000).Block(8, Sample("block-8-gone.bin"));
            },
            "The server has never named it", "The longest time without a block was 3.1 s."},
        FaultRow{"Delivered", [](auto& c) { c.Search().Block(4, Camera()); }, "The wizard has it: block type 4 at",
                 "1 block about it reached the wizard"},
        FaultRow{"Gone",
                 [](auto& c) {
                   c.Search().Block(4, Camera()).Block(8, {5,    0,   0,   0,   1,   0,   0,   0,   0,   0,   0,   0,
                                                           0x0B, 18,  0,   0,   0,   '0', '0', ':', '4', '0', ':', '8',
                                                           'C',  ':', '0', '0', ':', '0', '0', ':', '2', 'C', 0});
                 },
                 "The server has reported it gone", "2 blocks about it reached the wizard"},
        FaultRow{"Cut", [](auto& c) { c.Search().Block(4, CutAt(300)); },
                 "The server has sent a block about it, and the finder dropped it", "damaged at offset"},
        FaultRow{"CutBeforeItsAddress", [](auto& c) { c.Search().Block(4, CutAt(40)); },
                 "Blocks were dropped before they told which camera", "1 block dropped that tell no camera"},
        FaultRow{"WrongIdentifier", [](auto& c) { c.Search().Block(4, Altered(Camera(), "VLIS", "VLIT")); },
                 "Blocks were dropped before they told which camera", "expected \"VLIS\", found 564c4954"},
        FaultRow{"EmptyAddress", [](auto& c) { c.Search().Block(3, {}); },
                 "Blocks were dropped before they told which camera", "empty hardware address"},
        FaultRow{"UnknownType", [](auto& c) { c.Search().Block(9, Camera()); }, "Blocks were dropped before",
                 "unknown message type 9"},
        FaultRow{"OtherKind", [](auto& c) { c.Search().Block(4, Camera(), 3); },
                 "The server has sent a block about it, and the finder dropped it",
                 "block kind 3 is not for the finder"},
        FaultRow{"CallbackLetGo", [](auto& c) { c.Search().Ended(capture::FrameEvent::kDetach).Block(4, Camera()); },
                 "The server has sent a block about it, and the finder dropped it", "no callback takes it"},
        FaultRow{
            "CallbackThrows",
            [](auto& c) { c.Search().Block(8, Sample("block-8-gone.bin")).Ended(capture::FrameEvent::kDelivered, 0); },
            "The server has never named it", "1 delivery ended in an exception of the finder's callback"},
        FaultRow{"ValuesWithoutText", [](auto& c) { c.Search().Block(2, {}); }, "Blocks were dropped before",
                 "values without text"},
        FaultRow{"PictureWithoutText", [](auto& c) { c.Search().Block(1, {}); }, "Blocks were dropped before",
                 "picture without text"},
        FaultRow{"PicturesOnly", [](auto& c) { c.Search().Block(1, Picture(kMac)); },
                 "Pictures or values of it reached the wizard, and no record of it was pushed.",
                 "1 block with pictures or values of it reached the wizard:"},
        FaultRow{
            "DeliveredInAnEarlierRun", [](auto& c) { c.Search().Block(4, Camera()).Load().Open(); },
            "No callback was registered",
            "earlier   One run was recorded before this one, which is not told here. Of the last of them: The wizard "
            "has it: block type 4"},
        FaultRow{"InTheListOnly",
                 [](auto& c) {
                   c.Search().Call(Function::kSendSynchDSPCommand, 1, 0, Sample("request-list.bin"),
                                   Sample("reply-list-300.bin"));
                 },
                 "It stands in an answer, and no block about it was pushed.",
                 "answer to list at 0.400 s, packet 5: 00:40:8C:00:00:2C"},
        FaultRow{"OneDigitOff", [](auto& c) { c.Search().Block(4, Altered(Camera(), kMac, "00:40:8C:00:00:2D")); },
                 "The server has found a camera with nearly this address.", "00:40:8C:00:00:2D differs in one digit"}),
    [](const auto& row) { return row.param.name; });

TEST(Explain, LearnsTheOtherAddressAndTellsPrograms) {
  CaptureOptions options = Over(Recorded().Search().Block(4, Camera()));
  options.address = "192.168.0.46";
  const auto told = nlohmann::json::parse(Told(RunExplain, options, true));
  EXPECT_EQ(told["found"], true);
  EXPECT_EQ(told["steps"].size(), 9U);
  EXPECT_NE(told["steps"][8]["text"].get<std::string>().find("at 1970-01-01T00:00:01.500Z, block type 4"),
            std::string::npos)
      << told["steps"][8];
}

TEST(Explain, KeepsCamerasApartThatHadOneIpAddress) {
  const std::string other = "00:40:8C:00:00:99", ip = "192.168.0.46";
  const Bytes taken = Altered(Camera(), kMac, other), moved = Altered(taken, ip, "192.168.0.47");
  CaptureOptions options = Over(Recorded().Search().Block(4, Camera()).Block(4, taken).Block(4, moved));
  const std::pair<std::string, const char*> rows[] = {
      {kMac, "1 block about it"}, {other, "2 blocks about it"}, {ip, "3 blocks about it"}};
  for (const auto& [address, blocks] : rows) {
    options.address = address;
    const std::string text = Told(RunExplain, options);
    EXPECT_NE(text.find(blocks), std::string::npos) << text;
  }
}

TEST(Diff, TellsWhatAppearedWentMovedAndChanged) {
  const auto save = [](const char* name, const std::string& lines) {
    const auto path = std::filesystem::temp_directory_path() / name;
    std::ofstream(path) << lines;
    return path.string();
  };
  CaptureOptions options;
  options.file = save("before.jsonl",
                      R"({"event":"camera","camera":{"mac":"00:00:00:00:00:01","ip":"10.0.0.1","password":"********"}}
{"event":"camera","camera":{"mac":"00:00:00:00:00:02","ip":"10.0.0.2","model":"A"}}
{"event":"camera","camera":{"mac":"00:00:00:00:00:03","ip":"10.0.0.3"}}
{"event":"camera","camera":{"mac":"UNKNOWN","ip":"10.0.0.6"}}
{"event":"camera","camera":{"mac":"UNKNOWN","ip":"10.0.0.7"}}
{"event":"camera","camera":{"mac":"00-00-00-00-00-08"}}
{"event":"camera","camera":{"mac":"00:00:00:00:00:05","model":"C","ctt":2}}
{"event":"camera","change":"changed","camera":{"mac":"00:00:00:00:00:05","ip":"10.0.0.5"}}
)");
  options.target = save("after.jsonl",
                        R"({"event":"camera","camera":{"mac":"00:00:00:00:00:01","ip":"10.0.0.1","password":"secret"}}
{"event":"camera","camera":{"mac":"00:00:00:00:00:02","ip":"10.0.0.9","model":"B"}}
{"event":"camera","camera":{"mac":"00:00:00:00:00:03","ip":"10.0.0.3"}}
{"event":"camera","change":"gone","camera":{"mac":"00:00:00:00:00:03"}}
{"event":"camera","camera":{"mac":"00:00:00:00:00:04","ip":"10.0.0.4"}}
{"event":"camera","camera":{"mac":"UNKNOWN","ip":"10.0.0.7"}}
{"event":"camera","camera":{"mac":"00:00:00:00:00:08"}}
{"event":"camera","camera":{"mac":"00:00:00:00:00:05","ip":"10.0.0.5","model":"D"}}
)");
  Options all;
  all.capture = options;
  StringOutput output;
  EXPECT_THROW(RunDiff(all, output), Failure);
  EXPECT_EQ(output.text,
            "moved     00:00:00:00:00:02 10.0.0.9 B\n"
            "          ip: \"10.0.0.2\" -> \"10.0.0.9\"\n"
            "          model: \"A\" -> \"B\"\n"
            "gone      00:00:00:00:00:03 10.0.0.3\n"
            "appeared  00:00:00:00:00:04 10.0.0.4\n"
            "changed   00:00:00:00:00:05 10.0.0.5 D\n"
            "          model: \"C\" -> \"D\"\n"
            "gone      UNKNOWN 10.0.0.6\n");
  options.target = options.file;
  EXPECT_EQ(Told(RunDiff, options), "");
  const std::string deep(20'000, '[');
  for (const std::string& refused :
       {std::string("{}\nhello\n"), std::string(), std::string("{\"list\":\"failed\"}\n"),
        "{\"camera\":{\"mac\":\"1\",\"x\":" + deep + std::string(deep.size(), ']') + "}}\n"}) {
    options.target = save("refused.jsonl", refused);
    EXPECT_THROW(Told(RunDiff, options), WrongUse) << refused.substr(0, 40);
  }
  const std::string capture = Recorded().Search().Block(4, Camera()).Save();
  EXPECT_EQ(ReadCameraSet(capture).size(), 1U);
  EXPECT_EQ(ReadCameraSet(capture).begin()->first, kMac);
}

/// A block of type 7 tells a few fields; the library fills in the others.
TEST(Diff, TakesNothingFromABlockThatItDoesNotTell) {
  const std::string assembled = "08:00:23:01:02:03";
  const Bytes record = Altered(Camera(), kMac, assembled);
  const auto camera = [&](const Recorded& recorded) { return ReadCameraSet(recorded.Save()).at(assembled); };
  auto before = camera(Recorded().Search().Block(4, record));
  before["ip"] = "10.1.2.3";
  before["vendor"] = "Assembled";
  before["plugin"] = "Marten IPC";
  EXPECT_EQ(camera(Recorded().Search().Block(4, record).Block(7, Sample("block-7-assembled.bin"))), before);
}

}  // namespace
}  // namespace tarnfind
