#include "diagnostics/event_log.h"

#include <atomic>
#include <initializer_list>
#include <iterator>
#include <mutex>

#include "base/append_text.h"
#include "diagnostics/global_object.h"
#include "diagnostics/module_file_name.h"
#include "diagnostics/text_format.h"
#include "platform/accounts.h"
#include "platform/debugger.h"
#include "platform/error_codes.h"
#include "platform/errors.h"
#include "platform/modules.h"

namespace Kestrel {
namespace {

constinit GlobalObject<EventLog> sharedLog;

/// Row = code. The values are the EVENTLOG_ constants of Windows (winnt.h).
constexpr std::uint16_t kEventTypes[] = {4, 2, 1, 8, 16};

std::uint16_t EventTypeOf(std::uint32_t code) {
  return kEventTypes[code < std::size(kEventTypes) ? code : elcInformation];
}

void Report(const char16_t* format, std::initializer_list<const void*> addresses) {
  std::vector<std::u16string> arguments;
  for (const void* const address : addresses) AppendText(arguments.emplace_back(), address);
  std::u16string text;
  Text::Format(format, text, arguments);
  platform::OutputDebugStringW(text.c_str());
}

/// Never called; kept so that a memory dump shows whether an add-on was found.
struct AddOnFunctions {
  std::atomic<void*> writeWide;
  std::atomic<void*> writeNarrow;
};
constinit AddOnFunctions addOnFunctions{};
constinit std::atomic<bool> addOnChecked{false};

/// The add-on stays loaded, because its check may have started threads of its own.
void LookForAddOn() {
  platform::OutputDebugStringW(u"Check for EventLogOutput dll");
  const platform::ModuleHandle addOn =
      platform::LoadLibraryExW(u"EventLogOutput.dll", platform::LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
  Report(u"Load EventLogOutput result: {0}", {addOn});
  if (!addOn) return;
  const auto isUsable = reinterpret_cast<bool (*)()>(platform::GetProcAddress(addOn, "CheckForApplicationLog"));
  if (!isUsable || !isUsable()) return;
  addOnFunctions.writeWide = platform::GetProcAddress(addOn, "WriteToEventLogW");
  addOnFunctions.writeNarrow = platform::GetProcAddress(addOn, "WriteToEventLogA");
  Report(u"EventLogOutput function pointers - WriteToEventLogWName:{0}  WriteToEventLogAName:{1}",
         {addOnFunctions.writeWide, addOnFunctions.writeNarrow});
}

/// A name without "." is kept whole.
std::u16string WithoutExtension(const std::u16string& fileName) {
  return fileName.substr(0, fileName.rfind(u'.'));
}

/// "<domain>\<user>" where the system has that form. Empty where the user is not known.
std::u16string CurrentUser() {
  char16_t name[512];
  std::uint32_t units = std::size(name);
  if (platform::GetUserNameExSamCompatible(name, &units)) return name;
  units = std::size(name);
  return platform::GetUserNameW(name, &units) ? name : u"";
}

/// Empty where the account has none. The second attempt has the room that the system asked for in the first.
std::vector<std::uint8_t> SidOf(const std::u16string& account) {
  std::uint32_t sidBytes = 68, domainUnits = 256;  // SECURITY_MAX_SID_SIZE; room for the longest domain name
  for (int attempt = 0; attempt < 2; ++attempt) {
    std::vector<std::uint8_t> sid(sidBytes);
    std::vector<char16_t> domain(domainUnits);
    if (platform::LookupAccountNameW(account.c_str(), sid.data(), &sidBytes, domain.data(), &domainUnits)) return sid;
    if (platform::GetLastError() != platform::ERROR_INSUFFICIENT_BUFFER) break;
  }
  return {};
}

}  // namespace

ReferencePointer<EventLog> EventLog::Get() {
  return sharedLog.Get();
}

void EventLog::Destroy() {
  sharedLog.Take();
}

EventLog::~EventLog() {
  if (source_) platform::DeregisterEventSource(source_);
}

void EventLog::Write(const std::u16string& text, std::uint32_t code) {
  CheckForAddOn();
  const std::lock_guard guard(lock_);
  EnsureRegistered();
  const void* const userSid = userSid_.empty() ? nullptr : userSid_.data();
  if (!platform::ReportEventW(source_, EventTypeOf(code), userSid, text.c_str()))
    platform::OutputDebugStringW(text.c_str());
}

void EventLog::CheckForAddOn() {
  if (addOnChecked.load(std::memory_order_acquire)) return;
  const std::lock_guard guard(lock_);
  if (addOnChecked.load(std::memory_order_relaxed)) return;
  LookForAddOn();
  addOnChecked.exchange(true);
}

/// Tries again with the next event where the registration fails.
void EventLog::EnsureRegistered() {
  if (source_) return;
  if (sourceName_.empty()) sourceName_ = WithoutExtension(ModuleFileName(nullptr));
  source_ = platform::RegisterEventSourceW(sourceName_.c_str());
  if (!source_) return;
  const std::u16string user = CurrentUser();
  if (!user.empty()) userSid_ = SidOf(user);
}

}  // namespace Kestrel
