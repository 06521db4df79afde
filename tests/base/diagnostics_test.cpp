/// Messages from the statement to the targets, and network start-up, over a fake system.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <thread>

#include "base/debug_out.h"
#include "base/event_log.h"
#include "base/exceptions.h"
#include "base/network_startup.h"
#include "base/text_conversion.h"
#include "fakes/counting_allocator.h"
#include "fakes/fake_debugger.h"
#include "fakes/fake_system.h"
#include "platform/registry.h"
#include "platform/threads.h"

namespace Kestrel {
namespace {

using Lines = std::vector<std::string>;

const std::string kFrame = " [NET," + std::to_string(platform::GetCurrentThreadId()) + "] text\r\n";
const std::string kErrorLine = "ERROR" + kFrame;

Lines TakeDebuggerLines() {
  Lines lines;
  for (const std::u16string& line : fakes::DebuggerLines()) lines.push_back(WideToUtf8(line));
  fakes::ClearDebuggerLines();
  return lines;
}

void Say(std::uint32_t level, std::uint32_t flags = dotDefault) {
  DebugOut("NET", level, flags) << "text";
}

class Diagnostics : public testing::Test {
 protected:
  Diagnostics() {
    static const bool addOnIsChecked = (EventLog::Get()->Write(u"", 0), true);  // once per process
    EXPECT_TRUE(addOnIsChecked);
    EventLog::Destroy();
    fakes::ResetSystem();
    fakes::ClearDebuggerLines();
  }
  ~Diagnostics() override {
    DebugOutStreamer::Destroy();
    EventLog::Destroy();
    std::filesystem::remove(file);
  }

  /// As the module does, with one number in the registry and a limit for every source.
  void Start(const char* name = "DebugWindowSourcePrefix", std::uint8_t number = 0) {
    const std::u16string key = u"Software\\Vantrell\\Tarn\\DebugOut";
    system.keys[key] = {{name, platform::REG_DWORD, {number, 0, 0, 0}}};
    system.keys[key + u"\\Filter"] = {{"net", platform::REG_DWORD, {255, 0, 0, 0}}};
    settings.reset();
    settings.emplace();
    mark.emplace();
    system.TakeCalls();
  }
  void OpenFile() { ASSERT_TRUE(DebugOutStreamer::Get()->OpenOutputFile(file.u16string().c_str())); }
  std::string FileText() const {
    std::ifstream text(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(text), {});
  }
  static auto History() { return DebugOutStreamer::Get()->GetHistory().Entries(); }

  fakes::FakeSystem& system = fakes::TheSystem();
  std::optional<DebugOutSettings> settings;
  std::optional<DebugOutReadyMark> mark;
  const std::filesystem::path file =
      std::filesystem::temp_directory_path() / ("tarn_diagnostics_" + std::to_string(platform::GetCurrentThreadId()));
};

TEST_F(Diagnostics, BeforeTheMarkGoBareToTheDebugger) {
  Say(dolDebug);
  DebugOut("NET", dolError) << "";
  EXPECT_EQ(TakeDebuggerLines(), (Lines{"STATOUT: ", "text", "STATOUT: "}));
  DebugOut before("NET", dolDebug);
  settings.emplace();
  before << "the settings have come and say no";
  before.Finish();
  EXPECT_EQ(TakeDebuggerLines(), Lines());
  EXPECT_TRUE(History().empty());
}

TEST_F(Diagnostics, LevelsAreNamedAndFiltered) {
  Start();
  for (const std::uint32_t level : {0, 1, 2, 3, 4, 5}) Say(level);
  DebugOut("other", dolDebug) << "dropped";
  EXPECT_EQ(TakeDebuggerLines(), (Lines{kErrorLine, "SECTY" + kFrame, "WARNG" + kFrame, "INFO " + kFrame,
                                        "DEBUG" + kFrame, "UNKNOWN" + kFrame}));
}

TEST_F(Diagnostics, StatementTakesValuesOfAllKinds) {
  Start();
  DebugOut statement(nullptr, dolInfo);
  statement << "G\xE4" << u"\u0436" << std::string("s") << std::u16string(u"w") << 'c' << u'\u20ac' << -1 << true
            << std::uint64_t{0xFFFFFFFFFFFFFFFF} << std::uint8_t{65} << static_cast<const char*>(nullptr)
            << static_cast<void*>(nullptr) << reinterpret_cast<int*>(0xAB5);
  statement.Finish();
  statement << "too late";
  EXPECT_TRUE(
      TakeDebuggerLines()[0].ends_with("] G\u00e4\u0436swc\u20ac-1118446744073709551615650"
                                       "0xab5\r\n"));
}

TEST_F(Diagnostics, SuppressedStatementAllocatesNothing) {
  Start();
  const std::int64_t before = fakes::CountAllocations();
  DebugOut("a source of more than a few letters", dolDebug) << "a text of more than a few letters" << 1;
  EXPECT_EQ(fakes::CountAllocations(), before);
}

TEST_F(Diagnostics, TargetsAreServedInOrderAndFlushedAfterwards) {
  system.hasConsoleWindow = true;
  Start();
  OpenFile();
  Say(dolError, dotDefault | dotDebugWindow | dotFile | dotReserved | dotEventLog);
  EXPECT_EQ(TakeDebuggerLines(), Lines{kErrorLine});
  EXPECT_EQ(system.TakeCalls(), (Lines{"error colour 12", "error " + kErrorLine, "error colour 30", "register viewer",
                                       "look up HOST\\me", "report 1 user 77 " + kErrorLine, "flush"}));
  EXPECT_EQ(FileText(), "<debugout type=\"ERROR\" filter=\"NET\">\r\n<o>text</o>\r\n</debugout>\r\n");
  ASSERT_EQ(History().size(), 4u);
  EXPECT_EQ(History().back().line, u"ERROR : [NET] text");
  EXPECT_EQ(History().back().time.GetWord(), 13354031109123u);

  DebugOut("NET", dolError) << "";
  EXPECT_EQ(system.TakeCalls(), Lines{"flush"});
  EXPECT_EQ(History().size(), 4u);
}

TEST_F(Diagnostics, OutputTargetsFollowTheMask) {
  Start();
  const auto streamer = DebugOutStreamer::Get();
  const struct {
    std::uint32_t mask, mode, result;
  } rows[] = {{0, otmAdd, 2},     {4 | 16 | 64, otmAdd, 22},    {2 | 8, otmRemove, 20}, {0, 3, 20},
              {3, otmReplace, 3}, {0xFFFFFFFF, otmReplace, 31}, {0, otmReplace, 0}};
  for (const auto& row : rows) EXPECT_EQ(streamer->SetOutputTargets(row.mask, row.mode), row.result);
  EXPECT_FALSE(streamer->OpenOutputFile(file.u16string().c_str()));  // without any target none is created
  Say(dolError, dotDebugWindow | dotConsole);
  EXPECT_TRUE(History().empty());
  streamer->SetOutputTargets(dotDebugWindow, otmReplace);
  Say(dolError, dotFile);  // a file that was never opened
  EXPECT_EQ(History().size(), 1u);
  EXPECT_FALSE(streamer->OpenOutputFile((file / "no" / "such").u16string().c_str()));
  EXPECT_FALSE(streamer->OpenOutputFile(u"\xD800"));
  DebugOut late("NET", dolError);
  DebugOutStreamer::Destroy();
  late << "unsaid";
  late.Finish();
  EXPECT_EQ(TakeDebuggerLines(), Lines());
}

TEST_F(Diagnostics, FileHoldsBlocksInUtf8) {
  Start();
  std::ofstream(file) << "old";
  OpenFile();
  EXPECT_EQ(FileText(), "");
  DebugOut("<T\xFCr>", dolInfo, dotFile) << u"a < b & \u20ac\r\n";
  DebugOut(nullptr, dolWarning, dotFile) << "x";
  EXPECT_EQ(FileText(),
            "<debugout type=\"INFO \" filter=\"&lt;T&#252;r&gt;\">\r\n<o>a < b & \u20ac\r\n</o>\r\n</debugout>\r\n"
            "<debugout type=\"WARNG\" filter=\"\">\r\n<o>x</o>\r\n</debugout>\r\n");
}

TEST_F(Diagnostics, ConsoleLinesAreColouredAndStamped) {
  const struct {
    std::uint8_t timeMode;
    std::uint32_t level;
    const char* colour;
    std::string line;
  } rows[] = {{0, 1, "13", "SECTY" + kFrame},
              {1, 3, "11", "1:05:09 PM INFO " + kFrame},
              {2, 2, "14", "Mon 1:05:09 PM WARNG" + kFrame},
              {3, 4, "7", "3/4/2024 1:05:09 PM DEBUG" + kFrame}};
  system.hasConsoleWindow = true;
  for (const auto& row : rows) {
    Start("ConsoleTimeMode", row.timeMode);
    Say(row.level);
    EXPECT_EQ(system.TakeCalls(),
              (Lines{std::string("output colour ") + row.colour, "output " + row.line, "output colour 30", "flush"}));
  }
  system.failing = {"GetTimeFormatW", "GetConsoleTextAttribute"};
  Say(dolError);
  EXPECT_EQ(system.TakeCalls(), (Lines{"error colour 12", "error " + kErrorLine, "flush"}));
  DebugOut(nullptr, dolError) << std::u16string(70000, u'x');
  EXPECT_EQ(system.TakeCalls()[1].size(), 6u + 65536u);
  EXPECT_EQ(TakeDebuggerLines(), Lines{"ClipSizeT failed - Size > MaxSize"});
}

TEST_F(Diagnostics, ConsoleWithoutHandlesIsReportedOnce) {
  system.hasConsoleWindow = true;
  system.failing = {"output", "error"};
  Start();
  Say(dolError);
  Say(dolInfo);
  EXPECT_EQ(system.TakeCalls(), (Lines{"flush", "flush"}));
  EXPECT_EQ(TakeDebuggerLines(), (Lines{"ConsoleOutputStreamer::GetStdHandle STD_OUTPUT failed",
                                        "ConsoleOutputStreamer::GetStdHandle STD_ERROR failed"}));
}

TEST_F(Diagnostics, DebuggerLinesBeginWithTheNameOfAFile) {
  const char* const prefixes[] = {"", "Finding.dll:", "viewer.exe:"};
  for (std::uint8_t kind = 0; kind < 3; ++kind) {
    Start("DebugWindowSourcePrefix", kind);
    Say(dolError);
    EXPECT_EQ(TakeDebuggerLines(), Lines{prefixes[kind] + kErrorLine});
    DebugOutStreamer::Destroy();
  }
}

TEST_F(Diagnostics, FailingModuleNameIsASystemException) {
  Start("DebugWindowSourcePrefix", 1);
  DebugOutStreamer::Get()->SetOutputTargets(dotFile, otmReplace);
  system.executable = std::u16string(1024, u'x');
  DebugOut statement("NET", dolError, dotEventLog | dotFile);
  statement << "text";
  EXPECT_THROW(statement.Finish(), SystemException);
  system.failing = {"GetModuleFileNameW"};
  Say(dolError, dotDebugWindow | dotFile);  // a statement that ends by itself keeps the failure to itself
  EXPECT_EQ(History().size(), 2u);          // and the other target is served
  DebugOutStreamer::Destroy();
  EXPECT_THROW(DebugOut("NET", dolError), SystemException);
}

TEST_F(Diagnostics, EventsHaveTypeUserAndSource) {
  Start();
  system.executable = u"C:\\Programs\\two.dots.exe";
  system.sidBytes = 500;  // more than the first look-up has room for
  for (const std::uint32_t code : {0, 1, 2, 3, 4, 5}) EventLog::Get()->Write(u"event", code);
  EXPECT_EQ(system.TakeCalls(), (Lines{"register two.dots", "look up HOST\\me", "look up HOST\\me",
                                       "report 4 user 77 event", "report 2 user 77 event", "report 1 user 77 event",
                                       "report 8 user 77 event", "report 16 user 77 event", "report 4 user 77 event"}));
  for (const std::uint32_t level : {0, 1, 2, 3}) Say(level, dotEventLog);
  std::string types;
  for (const std::string& call : system.TakeCalls()) types += call.substr(0, 9);
  EXPECT_EQ(types, "report 1 report 4 report 2 report 4 ");
}

TEST_F(Diagnostics, FailingEventLogSpeaksToTheDebugger) {
  system.executable = u"viewer";
  system.failing = {"RegisterEventSourceW", "GetUserNameExW", "LookupAccountNameW"};
  EventLog::Get()->Write(u"first", 0);
  system.failing.erase("RegisterEventSourceW");
  EventLog::Get()->Write(u"second", 0);
  system.failing.insert("ReportEventW");
  EventLog::Get()->Write(u"third", 0);
  EXPECT_EQ(system.TakeCalls(), (Lines{"register viewer", "report 4 user none first", "register viewer", "look up me",
                                       "report 4 user none second", "report 4 user none third"}));
  EXPECT_EQ(TakeDebuggerLines(), (Lines{"first", "third"}));
}

bool Yes() {
  return true;
}
bool No() {
  return false;
}

/// Each in a process of its own, for the add-on is looked for once.
TEST(EventLogAddOnDeathTest, IsReportedAndNotUsed) {
  const struct {
    bool isThere;
    bool (*check)();
    const char* lines;
  } rows[] = {{false, Yes, "Check for EventLogOutput dll;Load EventLogOutput result: 0;$"},
              {true, nullptr, "result: 0xab5;$"},
              {true, No, "result: 0xab5;$"},
              {true, Yes,
               "result: 0xab5;EventLogOutput function pointers - WriteToEventLogWName:0x57  "
               "WriteToEventLogAName:0;$"}};
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const auto& row : rows) {
    const auto writeTwoEvents = [&row] {
      if (row.isThere) fakes::TheSystem().modules.insert(u"EventLogOutput.dll");
      fakes::TheSystem().functions = {{"CheckForApplicationLog", reinterpret_cast<void*>(row.check)},
                                      {"WriteToEventLogW", reinterpret_cast<void*>(std::uintptr_t{0x57})}};
      for (int i = 0; i < 2; ++i) EventLog::Get()->Write(u"", 0);
      for (const std::string& line : TakeDebuggerLines()) std::cerr << line << ";";
      std::_Exit(0);
    };
    EXPECT_EXIT(writeTwoEvents(), testing::ExitedWithCode(0), row.lines);
  }
}

constexpr int kThreads = 8;

template <class Work>
void RunOnThreads(Work work) {
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) threads.emplace_back(work, t);
  for (std::thread& thread : threads) thread.join();
}

TEST_F(Diagnostics, FirstMessagesOfEightThreadsMeetInOneDispatcher) {
  Start();
  RunOnThreads([](int) { Say(dolError); });
  EXPECT_EQ(TakeDebuggerLines().size(), std::size_t{kThreads});
  EXPECT_EQ(History().size(), std::size_t{kThreads});
}

TEST_F(Diagnostics, LinesOfEightThreadsDoNotMixAndTheHistoryKeeps1024) {
  constexpr int kLines = 300;
  Start();
  OpenFile();
  RunOnThreads([](int t) {
    for (int i = 0; i < kLines; ++i) DebugOut("NET", dolInfo, dotFile) << t << std::string(100, 'x') << i;
  });
  std::string written = FileText();
  std::string last;
  int next[kThreads] = {};
  while (written.size() > 41) {
    const auto t = static_cast<std::size_t>(written[41] - '0');
    ASSERT_LT(t, std::size(next));
    last = std::to_string(t) + std::string(100, 'x') + std::to_string(next[t]++);
    const std::string block = "<debugout type=\"INFO \" filter=\"NET\">\r\n<o>" + last + "</o>\r\n</debugout>\r\n";
    ASSERT_TRUE(written.starts_with(block)) << block;
    written.erase(0, block.size());
  }
  for (const int count : next) EXPECT_EQ(count, kLines);
  EXPECT_EQ(History().size(), 1024u);
  EXPECT_EQ(WideToUtf8(History().back().line), "INFO  : [NET] " + last);
}

TEST_F(Diagnostics, TcpAckSettingIsReported) {
  const std::pair<fakes::Bytes, Lines> rows[] = {{{0, 0, 1, 0}, {"TCP ACKNOWLEDGES ON SEND() DISABLED"}},
                                                 {{0, 0, 0, 0}, {}},
                                                 {{1, 0, 0, 0, 0, 0, 0, 0}, {}},
                                                 {{1}, {}}};
  ReadSocketSettings();
  for (const auto& [data, lines] : rows) {
    system.keys[u"Software\\Vantrell\\Kestrel\\Socket"] = {{"DisableTcpAck", platform::REG_DWORD, data}};
    ReadSocketSettings();
    EXPECT_EQ(TakeDebuggerLines(), lines);
  }
}

TEST_F(Diagnostics, SocketStartIsUndoneWhereItSucceeded) {
  {
    const SocketStartup first;
    system.failing = {"WSAStartup"};
    const SocketStartup second;
  }
  EXPECT_EQ(system.TakeCalls(), (Lines{"WSAStartup", "WSAStartup", "WSACleanup"}));
}

TEST_F(Diagnostics, AddressResolutionReportsWhatIsMissing) {
  void* const function = reinterpret_cast<void*>(std::uintptr_t{0x57});
  const auto import = [](void* getAddrInfo, void* freeAddrInfo) {
    const AddressResolutionImport made;
    EXPECT_EQ(made.GetAddrInfoW(), getAddrInfo);
    EXPECT_EQ(made.FreeAddrInfoW(), freeAddrInfo);
  };
  system.modules = {u"C:\\System\\ws2_32.dll"};
  system.functions = {{"GetAddrInfoW", function}};
  import(function, nullptr);
  EXPECT_EQ(system.TakeCalls(),
            (Lines{"load C:\\System\\ws2_32.dll flags 0", "function GetAddrInfoW", "function FreeAddrInfoW", "free"}));
  EXPECT_EQ(TakeDebuggerLines(), Lines{"Failed to import function: FreeAddrInfoW"});
  system.functions = {{"FreeAddrInfoW", function}};
  import(nullptr, function);
  EXPECT_EQ(TakeDebuggerLines(), Lines{"Failed to import function: GetAddrInfoW"});
  system.modules.clear();
  import(nullptr, nullptr);
  EXPECT_EQ(TakeDebuggerLines(), (Lines{"STATOUT: ", "Failed to load C:\\System\\ws2_32.dll"}));
  system.systemDirectory = std::u16string(260, u'x');
  import(nullptr, nullptr);
  EXPECT_EQ(TakeDebuggerLines(), (Lines{"STATOUT: ", "Call to GetSystemDirectoryA failed"}));
}

}  // namespace
}  // namespace Kestrel
