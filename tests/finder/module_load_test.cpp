/// Load and unload of the library in this program: its one object, over a fake system.
#include <gtest/gtest.h>

#include "diagnostics/debug_out.h"
#include "fakes/fake_debugger.h"
#include "fakes/fake_system.h"
// The object and its class are local to their file.
#include "finder/module.cpp"

namespace {

using Lines = std::vector<std::string>;

const Lines kLoad = {
    "open Software\\Vantrell\\Kestrel\\Socket",
    "frequency",
    "WSAStartup",
    "WSAStartup",
    "load C:\\System\\ws2_32.dll flags 0",
    "module Ws2_32",
    "function GetHostNameW",
    "open Software\\Vantrell\\Tarn\\DebugOut",
};

TEST(Module, LoadsInOrderBeforeAnythingElseRuns) {
  EXPECT_EQ(fakes::TheSystem().TakeCalls(), kLoad);
  EXPECT_EQ(fakes::DebuggerLines(),
            (std::vector<std::u16string>{u"STATOUT: ", u"Failed to load C:\\System\\ws2_32.dll"}));
  EXPECT_TRUE(Kestrel::DebugOutReadyMark::IsSet());
}

TEST(Module, IsLoadedWithAClockThatAnswers) {
  const auto load = [](std::int64_t ticksPerSecond) {
    fakes::ClearDebuggerLines();
    fakes::TheSystem().ticksPerSecond = ticksPerSecond;
    const Module second;
    return fakes::NarrowDebuggerLines();
  };
  EXPECT_EQ(load(1), Lines());
  EXPECT_EQ(load(0), Lines{"Result.QuadPart > 0"});
  fakes::TheSystem().failing = {"QueryPerformanceFrequency"};
  EXPECT_THROW(load(1), Kestrel::SystemException);
}

TEST(Module, UnloadIsTheReverse) {
  fakes::ResetSystem();
  fakes::FakeSystem& system = fakes::TheSystem();
  system.modules = {u"C:\\System\\ws2_32.dll"};
  const auto pool = Kestrel::BufferPool::GetPool();
  {
    const Module second;
    Kestrel::DebugOut("NET", Kestrel::dolError, Kestrel::dotEventLog) << "text";
    system.TakeCalls();
  }
  EXPECT_EQ(system.TakeCalls(), (Lines{"deregister", "free", "WSACleanup", "WSACleanup"}));
  EXPECT_FALSE(Kestrel::DebugOutReadyMark::IsSet());
  EXPECT_EQ(Kestrel::DebugOutSettings::Get(), nullptr);
  EXPECT_NE(Kestrel::BufferPool::GetPool().Get(), pool.Get());
  fakes::ClearDebuggerLines();
  Kestrel::BufferException("not recorded");
  Kestrel::DebugOut("NET", Kestrel::dolDebug) << "afterwards";
  EXPECT_EQ(fakes::DebuggerLines(), (std::vector<std::u16string>{u"STATOUT: ", u"afterwards"}));
}

}  // namespace
