/// Kestrel::EventLog: writes events into the system's event log, under the name of the process's executable and the
/// security identifier of the user that it runs as.
///
/// The source is registered with the first event and deregistered by the destructor. Before the first event of the
/// process an optional add-on module is looked for and reported to the debugger; it is not used.
///
/// Threads: Any. One event at a time is written.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/critical_section.h"
#include "base/reference_counting.h"
#include "platform/event_log.h"

namespace Kestrel {

enum EventLogCode : std::uint32_t {
  elcInformation = 0,
  elcWarning = 1,
  elcError = 2,
  elcAuditSuccess = 3,
  elcAuditFailure = 4,
};

class EventLog final : public ReferenceCounted {
 public:
  EventLog() = default;
  ~EventLog() override;

  /// The process-wide object, made on first use.
  static ReferencePointer<EventLog> Get();
  /// For the module's unload.
  static void Destroy();

  /// code is an EventLogCode; any other number counts as information. An event that the system refuses goes to the
  /// debugger as its bare text. Throws SystemException with the context "GetModuleFileNameW" where the name of the
  /// executable is unknown.
  void Write(const std::u16string& text, std::uint32_t code);

 private:
  void CheckForAddOn();
  void EnsureRegistered();

  CriticalSection lock_;
  std::u16string sourceName_;
  platform::EventSource source_ = nullptr;
  std::vector<std::uint8_t> userSid_;  ///< empty where the user is not known
};

}  // namespace Kestrel
