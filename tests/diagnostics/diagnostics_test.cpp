/// Settings from the registry, messages from the statement to the targets, network start-up: over a fake system.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <thread>

#include "base/exceptions.h"
#include "base/text_conversion.h"
#include "diagnostics/debug_out.h"
#include "diagnostics/event_log.h"
#include "diagnostics/network_startup.h"
#include "diagnostics/registry_value.h"
#include "fakes/counting_allocator.h"
#include "fakes/fake_debugger.h"
#include "fakes/fake_system.h"
#include "platform/registry.h"
#include "platform/threads.h"

namespace Kestrel {
namespace {

using namespace platform;
using fakes::Bytes;
using Lines = std::vector<std::string>;

const std::u16string kKey = u"Software\\Vantrell\\Tarn\\DebugOut";
const std::string kFrame = " [NET," + std::to_string(GetCurrentThreadId()) + "] text\r\n";
const std::string kErrorLine = "ERROR" + kFrame;

Lines TakeDebuggerLines() {
  Lines lines;
  for (const std::u16string& line : fakes::DebuggerLines()) lines.push_back(WideToUtf8(line));
  fakes::ClearDebuggerLines();
  return lines;
}

void Say(std::uint32_t level, std::uint32_t flags = dotDefault) {
  DebugOut("NET", level, flags) << "te" << u"xt";
}

std::string Address(const std::string& digits) {
  return std::string(16 - digits.size(), '0') + digits;
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

  /// As the module does, with one number in the registry and a filter that passes every message of the source NET.
  void Start(const char* name = "DebugWindowSourcePrefix", std::uint8_t number = 0) {
    system.keys[kKey] = {{name, REG_DWORD, {number, 0, 0, 0}}};
    system.keys[kKey + u"\\Filter"] = {{"net", REG_DWORD, {255, 0, 0, 0}}};
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
      std::filesystem::temp_directory_path() / ("tarn_diagnostics_" + std::to_string(GetCurrentThreadId()));
};

template <class Char>
Bytes TextBytes(const std::string& text) {
  const std::basic_string<Char> units(text.begin(), text.end());
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(units.data());
  return Bytes(bytes, bytes + units.size() * sizeof(Char));
}

TEST_F(Diagnostics, RegistryValuesAreNumbersByTheRulesOfTheirType) {
  using Number = std::optional<std::uint32_t>;
  const std::tuple<std::uint32_t, Number, Bytes> rows[] = {
      {REG_QWORD, 0x80000000, {0, 0, 0, 0x80, 0xFF, 0xFF, 0xFF, 0xFF}},
      {REG_QWORD, {}, {0, 0, 0, 0x80, 0, 0, 0, 0}},
      {REG_QWORD, {}, {1, 0, 0, 0, 0, 0, 0, 0, 0}},
      {REG_DWORD, 0x04030201, {1, 2, 3, 4}},
      {REG_DWORD, {}, {1, 0, 0, 0, 0}},
      {REG_BINARY, {}, {1, 0, 0}},
      {REG_DWORD_BIG_ENDIAN, 0x01020304, {1, 2, 3, 4}},
      {REG_DWORD_BIG_ENDIAN, {}, {0, 0, 0, 1, 0}},
  };
  for (const auto& [type, number, data] : rows) EXPECT_EQ(NumberOfRegistryValue<char>(type, data), number) << type;
  const std::tuple<std::uint32_t, Number, std::string> texts[] = {
      {REG_SZ, 0x80000000, "-2147483648"},
      {REG_SZ, {}, "-2147483649"},
      {REG_SZ, 0xFFFFFFFF, "-1"},
      {REG_SZ, {}, "%FIVE%"},
      {REG_SZ, 7, "\x01 +7"},
      {REG_SZ, {}, "!7"},
      {REG_EXPAND_SZ, 5, "%FIVE%"},
      {REG_EXPAND_SZ, 6, "%62%"},
      {REG_EXPAND_SZ, 6, "%63%"},
      {REG_EXPAND_SZ, 6, "%1048574%"},  // 1 MiB with its NUL
      {REG_EXPAND_SZ, {}, "%1048575%"},
      {REG_EXPAND_SZ, 7, "%TWO NULS%"},
      {REG_EXPAND_SZ, {}, "%FAILURE%"}};
  for (const auto& [type, number, text] : texts) {
    EXPECT_EQ(NumberOfRegistryValue<char>(type, TextBytes<char>(text)), number) << text;
    EXPECT_EQ(NumberOfRegistryValue<char16_t>(type, TextBytes<char16_t>(text)), number) << text;
  }
}

TEST_F(Diagnostics, SettingsAreClampedAndFiltersIgnoreCase) {
  const auto expectLimit = [this](std::uint32_t limit, const std::vector<const char*>& sources) {
    for (const char* source : sources) {
      EXPECT_EQ(settings->IsEnabled(source, limit - 1), limit > 0) << (source ? source : "null");
      EXPECT_FALSE(settings->IsEnabled(source, limit)) << (source ? source : "null");
    }
  };
  settings.emplace();  // without a key: the defaults
  EXPECT_EQ(std::pair(settings->GetConsoleTimeMode(), settings->GetDebugWindowSourcePrefix()), std::pair(0u, 1u));
  expectLimit(4, {nullptr, "", "NET"});

  system.keys[kKey] = {{"ConsoleTimeMode", REG_SZ, TextBytes<char16_t>(std::string((1 << 19) - 1, ' ') + "7")},
                       {"DebugWindowSourcePrefix", REG_BINARY, Bytes(4, 0xFF)}};
  system.keys[kKey + u"\\Filter"] = {{"NET", REG_DWORD, {1, 0, 0, 0}},
                                     {"Net", REG_DWORD, {0, 0, 0, 0}},
                                     {"", REG_SZ, {'2'}},
                                     {"negative", REG_DWORD, {0, 0, 0, 0x80}},
                                     {"huge", REG_SZ, TextBytes<char>(std::string(1 << 20, ' ') + "3")},
                                     {"large", REG_SZ, TextBytes<char>(std::string((1 << 20) - 1, ' ') + "3")},
                                     {"T\xFCr" + std::string(300, 'n'), REG_SZ, {'3'}}};
  settings.emplace();
  EXPECT_EQ(std::pair(settings->GetConsoleTimeMode(), settings->GetDebugWindowSourcePrefix()), std::pair(3u, 2u));
  expectLimit(2, {"finders", nullptr, "", "negative", "huge"});
  expectLimit(0, {"net"});
  expectLimit(3, {"large", ("t\xFCR" + std::string(300, 'N')).c_str()});
}

TEST_F(Diagnostics, BeforeTheMarkGoBareToTheDebugger) {
  Say(dolDebug);
  DebugOut before("NET", dolDebug);
  settings.emplace();
  before << "the settings have come and say no";
  before.Finish();
  settings.reset();
  DebugOut("NET", dolDebug).Finish();
  EXPECT_EQ(TakeDebuggerLines(), (Lines{"STATOUT: ", "text", "STATOUT: "}));
  EXPECT_TRUE(History().empty());
}

TEST_F(Diagnostics, LevelsAreNamedAndWhatIsFilteredAllocatesNothing) {
  Start();
  for (const std::uint32_t level : {0U, 1U, 2U, 3U, 4U, 5U}) Say(level);
  const std::int64_t before = fakes::CountAllocations();
  DebugOut("a source of more than a few letters", dolDebug) << "a text of more than a few letters" << 1;
  EXPECT_EQ(fakes::CountAllocations(), before);
  EXPECT_EQ(TakeDebuggerLines(), (Lines{kErrorLine, "SECTY" + kFrame, "WARNG" + kFrame, "INFO " + kFrame,
                                        "DEBUG" + kFrame, "UNKNOWN" + kFrame}));
}

TEST_F(Diagnostics, StatementsKeepTheirThreadAndWriteNothingAfterTheEnd) {
  Start();
  DebugOut first("NET", dolError), second("NET", dolError);
  first << "text";
  second << "text";
  std::thread([&first] { first.Finish(); }).join();
  first.Finish();
  DebugOut("NET", dolError).Finish();  // without a text
  EXPECT_EQ(TakeDebuggerLines(), Lines{kErrorLine});
  DebugOutStreamer::Destroy();
  second.Finish();
  EXPECT_EQ(TakeDebuggerLines(), Lines());
}

TEST_F(Diagnostics, TargetsAreServedInOrderAndFlushedAfterwards) {
  system.hasConsoleWindow = true;
  Start();
  std::ofstream(file) << "old";
  OpenFile();
  Say(dolError, dotDefault | dotDebugWindow | dotFile | dotReserved | dotEventLog);
  EXPECT_EQ(TakeDebuggerLines(), Lines{kErrorLine});
  EXPECT_EQ(system.TakeCalls(), (Lines{"error colour 12", "error " + kErrorLine, "error colour 30", "register viewer",
                                       "look up HOST\\me", "report 1 user 77 " + kErrorLine, "flush"}));
  ASSERT_EQ(History().size(), 4u);
  EXPECT_EQ(History().back().level, dolError);
  EXPECT_EQ(History().back().line, u"ERROR : [NET] text");
  EXPECT_EQ(History().back().time.GetWord(), 13354031109123u);

  DebugOut("<T\xFCr>", dolInfo, dotFile) << u"a < b & \u20ac\r\n";
  EXPECT_EQ(FileText(),
            "<debugout type=\"ERROR\" filter=\"NET\">\r\n<o>text</o>\r\n</debugout>\r\n"
            "<debugout type=\"INFO \" filter=\"&lt;T&#252;r&gt;\">\r\n<o>a < b & \u20ac\r\n</o>\r\n</debugout>\r\n");
  EXPECT_EQ(History().back().level, dolInfo);
  OpenFile();  // again, in place of the open one
  EXPECT_EQ(FileText(), "");
  Say(dolError, dotFile);
  EXPECT_EQ(FileText(), "<debugout type=\"ERROR\" filter=\"NET\">\r\n<o>text</o>\r\n</debugout>\r\n");
}

TEST_F(Diagnostics, OutputTargetsFollowTheMask) {
  Start();
  const auto streamer = DebugOutStreamer::Get();
  EXPECT_EQ(streamer->SetOutputTargets(4 | 16 | 64, otmAdd), 22u);
  EXPECT_EQ(streamer->SetOutputTargets(2 | 8, otmRemove), 20u);
  EXPECT_EQ(streamer->SetOutputTargets(1, 3), 20u);
  EXPECT_EQ(streamer->SetOutputTargets(0xFFFFFFFF, otmReplace), 31u);
  EXPECT_FALSE(streamer->OpenOutputFile((file / "no" / "such").u16string().c_str()));
  Say(dolError, dotFile);  // a file that was never opened
  EXPECT_EQ(streamer->SetOutputTargets(0, otmReplace), 0u);
  EXPECT_FALSE(streamer->OpenOutputFile(file.u16string().c_str()));  // without any target none is created
  Say(dolError, dotDebugWindow | dotConsole);
  EXPECT_EQ(History().size(), 1u);
}

TEST_F(Diagnostics, ConsoleLinesAreColouredAndStamped) {
  const std::tuple<std::uint32_t, std::string, std::string> rows[] = {{1, "13", "SECTY"},
                                                                      {3, "11", "1:05:09 PM INFO "},
                                                                      {2, "14", "Mon 1:05:09 PM WARNG"},
                                                                      {4, "7", "3/4/2024 1:05:09 PM DEBUG"}};
  system.hasConsoleWindow = true;
  for (std::uint8_t timeMode = 0; const auto& [level, colour, line] : rows) {
    Start("ConsoleTimeMode", timeMode++);
    Say(level);
    EXPECT_EQ(system.TakeCalls(),
              (Lines{"output colour " + colour, "output " + line + kFrame, "output colour 30", "flush"}));
  }
  system.failing = {"GetTimeFormatW", "GetConsoleTextAttribute"};
  Say(dolError);
  EXPECT_EQ(system.TakeCalls(), (Lines{"error colour 12", "error " + kErrorLine, "flush"}));
  DebugOut(nullptr, dolError) << std::u16string(70000, u'x');
  EXPECT_EQ(system.TakeCalls()[1].size(), 6u + 65536u);
  EXPECT_EQ(TakeDebuggerLines(), Lines{"ClipSizeT failed - Size > MaxSize"});

  DebugOutStreamer::Destroy();
  system.failing = {"output", "error"};  // reported once
  Say(dolError);
  Say(dolInfo);
  EXPECT_EQ(system.TakeCalls(), (Lines{"flush", "flush"}));
  EXPECT_EQ(TakeDebuggerLines(), (Lines{"ConsoleOutputStreamer::GetStdHandle STD_OUTPUT failed",
                                        "ConsoleOutputStreamer::GetStdHandle STD_ERROR failed"}));
}

TEST_F(Diagnostics, DebuggerLinesBeginWithTheNameOfAFileOrFail) {
  for (std::uint8_t kind = 0; const std::string prefix : {"", "Finding.dll:", "viewer.exe:"}) {
    DebugOutStreamer::Destroy();
    Start("DebugWindowSourcePrefix", kind++);
    Say(dolError);
    EXPECT_EQ(TakeDebuggerLines(), Lines{prefix + kErrorLine});
  }
  DebugOutStreamer::Destroy();
  Start("DebugWindowSourcePrefix", 1);
  DebugOutStreamer::Get()->SetOutputTargets(dotFile, otmReplace);
  system.executable = std::u16string(1024, u'x');
  DebugOut statement("NET", dolError, dotEventLog | dotFile);
  statement << "text";
  EXPECT_THROW(statement.Finish(), SystemException);
  system.failing = {"GetModuleFileNameW"};
  Say(dolError, dotDebugWindow | dotFile);  // a statement that ends by itself keeps the failure to itself
  EXPECT_EQ(History().size(), 2u);          // and the other target is served
  system.failing.insert("FlushStandardOutput");
  OpenFile();
  Say(dolError, dotConsole | dotFile);
  EXPECT_NE(FileText(), "");
  DebugOutStreamer::Get()->OpenOutputFile(u"/dev/full");  // where there is one: a disk without room
  DebugOut lost("NET", dolError, dotFile);
  lost << std::u16string(100000, u'x');
  EXPECT_NO_THROW(lost.Finish());
  DebugOutStreamer::Destroy();
  EXPECT_THROW(DebugOut("NET", dolError), SystemException);
}

TEST_F(Diagnostics, EventsHaveTypeUserAndSourceOrGoToTheDebugger) {
  Start();
  system.executable = u"C:\\Programs\\two.dots.exe";
  system.sidBytes = 500;  // more than the first look-up has room for
  for (const std::uint32_t code : {0U, 1U, 2U, 3U, 4U, 5U}) EventLog::Get()->Write(u"event", code);
  for (const std::uint32_t level : {0U, 1U, 2U, 3U}) Say(level, dotEventLog);
  std::string calls;
  for (const std::string& call : system.TakeCalls()) calls += call.substr(0, call.find("user 77")) + ",";
  EXPECT_EQ(calls,
            "register two.dots,look up HOST\\me,look up HOST\\me,report 4 ,report 2 ,report 1 ,report 8 ,report 16 ,"
            "report 4 ,report 1 ,report 4 ,report 2 ,report 4 ,");

  EventLog::Destroy();
  EXPECT_EQ(system.TakeCalls(), Lines{"deregister"});
  EventLog::Get();  // not registered without an event
  EventLog::Destroy();
  EXPECT_EQ(system.TakeCalls(), Lines());
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

/// Each in a process of its own, because a process looks for the add-on once.
TEST(EventLogAddOnDeathTest, IsReportedAndNotUsed) {
  const auto writeTwoEvents = [](const char16_t* addOn, bool (*check)()) {
    fakes::TheSystem().modules = {addOn};
    fakes::TheSystem().functions = {{"CheckForApplicationLog", reinterpret_cast<void*>(check)},
                                    {"WriteToEventLogW", reinterpret_cast<void*>(std::uintptr_t{0x57})}};
    for (int i = 0; i < 2; ++i) EventLog::Get()->Write(u"", 0);
    for (const std::string& line : TakeDebuggerLines()) std::cerr << line << ";";
    std::_Exit(0);
  };
  const std::string load = "Check for EventLogOutput dll;Load EventLogOutput result: ";
  const std::string found = load + Address("AB5") + ";";
  const std::string functions = "EventLogOutput function pointers - WriteToEventLogWName:" + Address("57") +
                                "  WriteToEventLogAName:" + Address("") + ";";
  const testing::ExitedWithCode success(0);
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto yes = [] { return true; };
  const auto no = [] { return false; };
  EXPECT_EXIT(writeTwoEvents(u"other.dll", yes), success, load + Address("") + ";$");
  EXPECT_EXIT(writeTwoEvents(u"EventLogOutput.dll", no), success, found + "$");
  EXPECT_EXIT(writeTwoEvents(u"EventLogOutput.dll", yes), success, found + functions + "$");
}

TEST(OutputHistory, ALongMessageGoesWithItsStorage) {
  OutputHistoryStreamer history(1);
  const auto add = [&history](std::u16string line) { history.Add(dolInfo, line); };
  add(u"short");
  const std::int64_t before = fakes::GetHeapUse().bytes;
  add(std::u16string(100'000, u'x'));
  add(u"short");
  EXPECT_LT(fakes::GetHeapUse().bytes - before, 1000);
}

TEST_F(Diagnostics, LinesOfEightThreadsDoNotMixAndTheHistoryKeeps1024) {
  constexpr int kThreads = 8, kLines = 150;
  Start();
  OpenFile();
  const auto line = [](int t, int i) { return std::to_string(t) + std::string(100, 'x') + std::to_string(i) + "."; };
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([=] {
      for (int i = 0; i < kLines; ++i) DebugOut("NET", dolInfo, dotFile) << line(t, i);
    });
  for (std::thread& thread : threads) thread.join();
  std::string written = FileText();
  EXPECT_EQ(History().size(), 1024u);
  EXPECT_TRUE(written.ends_with(WideToUtf8(History().back().line.substr(14)) + "</o>\r\n</debugout>\r\n"));
  for (int n = 0; n < kThreads * kLines; ++n) {
    const std::string block =
        "<debugout type=\"INFO \" filter=\"NET\">\r\n<o>" + line(n / kLines, n % kLines) + "</o>\r\n</debugout>\r\n";
    ASSERT_NE(written.find(block), std::string::npos) << block;
    written.erase(written.find(block), block.size());
  }
  EXPECT_EQ(written, "");
}

TEST_F(Diagnostics, SocketStartIsUndoneWhereItSucceededAndTheTcpAckSettingReported) {
  ReadSocketSettings();
  for (const Bytes& data : {Bytes{0, 0, 0, 0}, Bytes{1}, Bytes{1, 0, 0, 0, 0}, Bytes{0, 0, 1, 0}}) {
    EXPECT_EQ(TakeDebuggerLines(), Lines());
    system.keys[u"Software\\Vantrell\\Kestrel\\Socket"] = {{"DisableTcpAck", REG_DWORD, data}};
    ReadSocketSettings();
  }
  EXPECT_EQ(TakeDebuggerLines(), Lines{"TCP ACKNOWLEDGES ON SEND() DISABLED"});
  system.TakeCalls();
  {
    const SocketStartup first;
    system.failing = {"WSAStartup"};
    const SocketStartup second;
  }
  EXPECT_EQ(system.TakeCalls(), (Lines{"WSAStartup", "WSAStartup", "WSACleanup"}));
}

TEST_F(Diagnostics, AddressResolutionReportsWhatIsMissing) {
  system.modules = {u"C:\\System\\ws2_32.dll"};
  for (const bool first : {true, false}) {
    void* const function = reinterpret_cast<void*>(std::uintptr_t{0x57});
    system.functions = {{first ? "GetAddrInfoW" : "FreeAddrInfoW", function}};
    const AddressResolutionImport made;
    EXPECT_EQ(made.GetAddrInfoW(), first ? function : nullptr);
    EXPECT_EQ(made.FreeAddrInfoW(), first ? nullptr : function);
  }
  EXPECT_EQ(system.TakeCalls().back(), "free");
  system.modules.clear();
  EXPECT_EQ(AddressResolutionImport().GetAddrInfoW(), nullptr);
  EXPECT_EQ(system.TakeCalls(), Lines{"load C:\\System\\ws2_32.dll flags 0"});
  for (const std::u16string& directory : {std::u16string(260, u'x'), std::u16string()}) {
    system.systemDirectory = directory;
    EXPECT_EQ(AddressResolutionImport().GetAddrInfoW(), nullptr);
  }
  EXPECT_EQ(TakeDebuggerLines(),
            (Lines{"Failed to import function: FreeAddrInfoW", "Failed to import function: GetAddrInfoW", "STATOUT: ",
                   "Failed to load C:\\System\\ws2_32.dll", "STATOUT: ", "Call to GetSystemDirectoryA failed",
                   "STATOUT: ", "Call to GetSystemDirectoryA failed"}));
  Start();
  AddressResolutionImport();  // once the targets are there, an error goes to three of them
  EXPECT_TRUE(TakeDebuggerLines()[0].starts_with("ERROR [BUG,"));
  EXPECT_EQ(system.TakeCalls()[1].substr(0, 17), "error ERROR [BUG,");
  ASSERT_EQ(History().size(), 3u);
  for (const OutputHistoryEntry& entry : History())
    EXPECT_EQ(entry.line, u"ERROR : [BUG] Call to GetSystemDirectoryA failed");
}

}  // namespace
}  // namespace Kestrel
