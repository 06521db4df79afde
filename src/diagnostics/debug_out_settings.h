/// The settings of diagnostic output, from the registry below HKEY_LOCAL_MACHINE\Software\Vantrell\Tarn\DebugOut:
///
///     ConsoleTimeMode           number, see ConsoleTimeMode; one above the largest counts as the largest
///     DebugWindowSourcePrefix   number, see SourcePrefix; one above the largest counts as the largest
///     Filter\<source>           number: a message of that source passes if its level is below it
///     Filter\(default)          the same for all other sources, and for messages without one
///
/// A value that is missing or no number leaves the default. A filter that is negative as a signed number is ignored.
///
/// Life: The module makes the settings when it is loaded and destroys them at unload, when no thread may be inside the
/// library any more. At the end of the process they stay.
/// Threads: The settings never change while they exist, so they are read without a lock.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace Kestrel {

/// What stands in front of console lines.
enum ConsoleTimeMode : std::uint32_t {
  ctmNone = 0,
  ctmTime = 1,
  ctmDayOfWeekAndTime = 2,
  ctmDateAndTime = 3,
};

/// What stands in front of debugger-window lines.
enum SourcePrefix : std::uint32_t {
  spNone = 0,
  spModule = 1,      ///< file name of the library
  spExecutable = 2,  ///< file name of the process
};

class DebugOutSettings {
 public:
  static constexpr std::uint32_t kDefaultLimit = 4;

  /// Reads the registry, as far as there is memory; the process-wide settings live from here …
  DebugOutSettings();
  /// … to here. One at a time.
  ~DebugOutSettings();
  DebugOutSettings(const DebugOutSettings&) = delete;
  DebugOutSettings& operator=(const DebugOutSettings&) = delete;

  /// The process-wide settings; null while there are none.
  static const DebugOutSettings* Get() { return shared_.load(std::memory_order_acquire); }

  /// Whether messages of that source (may be null or empty) and level pass.
  bool IsEnabled(const char* source, std::uint32_t level) const {
    const bool isNamed = !filters_.empty() && source && *source;
    return level < (isNamed ? LimitOf(source) : defaultLimit_);
  }
  std::uint32_t GetConsoleTimeMode() const { return consoleTimeMode_; }
  std::uint32_t GetDebugWindowSourcePrefix() const { return debugWindowSourcePrefix_; }

 private:
  /// Orders names as if their ASCII letters were all in upper case.
  struct IgnoringCase {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const;
  };

  void ReadFilters(const class RegistryKey& key);
  std::uint32_t LimitOf(std::string_view source) const;

  static constinit std::atomic<const DebugOutSettings*> shared_;

  std::map<std::string, std::uint32_t, IgnoringCase> filters_;
  std::uint32_t defaultLimit_ = kDefaultLimit;
  std::uint32_t consoleTimeMode_ = ctmNone;
  std::uint32_t debugWindowSourcePrefix_ = spModule;
};

/// Until the mark is set, finished messages go straight to the debugger, because the targets may need what has not been
/// made yet. The module sets it right after it has made the settings.
class DebugOutReadyMark {
 public:
  DebugOutReadyMark() { set_.store(true, std::memory_order_release); }
  ~DebugOutReadyMark() { set_.store(false, std::memory_order_release); }
  DebugOutReadyMark(const DebugOutReadyMark&) = delete;
  DebugOutReadyMark& operator=(const DebugOutReadyMark&) = delete;

  static bool IsSet() { return set_.load(std::memory_order_acquire); }

 private:
  static constinit std::atomic<bool> set_;
};

}  // namespace Kestrel
