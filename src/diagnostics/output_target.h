/// A diagnostic message, and the interface of the targets that write it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/reference_counting.h"

namespace Kestrel {

/// Lower is more severe.
enum DebugOutLevel : std::uint32_t {
  dolError = 0,
  dolSecurity = 1,
  dolWarning = 2,
  dolInfo = 3,
  dolDebug = 4,
};

/// Target flags; they may be combined.
enum DebugOutTarget : std::uint32_t {
  dotConsole = 1,
  dotDebugWindow = 2,
  dotFile = 4,
  dotReserved = 8,  ///< no target is ever created for it
  dotEventLog = 16,
  dotDefault = 32,  ///< whatever the dispatcher's default targets are at that moment
};

struct DebugOutRecord {
  std::uint32_t threadId;  ///< of the thread that began the message
  const char* source;      ///< component, in the ANSI code page; may be null
  std::uint32_t level;     ///< a DebugOutLevel, or any other number
};

/// A target. The dispatcher calls it with its lock held: Write for each message, then Flush. Where one of them throws,
/// the other targets are served all the same.
class IDebugOutStreamerObject : public ReferenceCounted {
 public:
  virtual void Write(const DebugOutRecord& record, std::u16string_view text) = 0;
  virtual void Flush() {}
  /// Opens the file to write to, in place of the previous one. False where that fails and for targets without a file.
  virtual bool Open(const char16_t* /*path*/) { return false; }
};

/// Five ASCII characters; "UNKNOWN" for a number that is no level.
const char* LevelText(std::uint32_t level);

/// "<level> [<source>,<thread>] <text>" and a line end. Throws SystemException where the source cannot be widened.
std::u16string StandardLine(const DebugOutRecord& record, std::u16string_view text);

}  // namespace Kestrel
