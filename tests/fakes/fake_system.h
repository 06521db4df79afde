/// Stands in for what diagnostic output and network start-up see of a system: registry, console, event log, accounts,
/// modules, clock and sockets. Calls that matter are noted in their order. One thread at a time, but for the clock.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace fakes {

using Bytes = std::vector<std::uint8_t>;

struct RegistryValue {
  std::string name;
  std::uint32_t type;
  Bytes data;  ///< handed out as it is, to both reading functions
};

struct FakeSystem {
  std::vector<std::string> calls;
  std::set<std::string> failing;  ///< names of functions, and the handles "output" and "error"
  std::map<std::u16string, std::vector<RegistryValue>> keys;  ///< by path below HKEY_LOCAL_MACHINE
  bool hasConsoleWindow = false;
  std::uint32_t sidBytes = 12;             ///< that LookupAccountNameW asks for
  std::set<std::u16string> modules;        ///< that can be loaded
  std::map<std::string, void*> functions;  ///< in any of them
  std::u16string executable = u"C:\\Programs\\viewer.exe";
  std::u16string systemDirectory = u"C:\\System";
  std::int64_t ticksPerSecond = 1000;

  /// Notes the call. True unless the function is to fail.
  bool Call(const std::string& function, const std::string& call) {
    calls.push_back(call);
    return !failing.contains(function);
  }
  std::vector<std::string> TakeCalls() { return std::exchange(calls, {}); }
};

/// Lives until the process ends.
FakeSystem& TheSystem();
inline void ResetSystem() {
  TheSystem() = {};
}

}  // namespace fakes
