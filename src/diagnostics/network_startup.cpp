#include "diagnostics/network_startup.h"

#include <iterator>
#include <new>

#include "diagnostics/debug_out.h"
#include "diagnostics/registry_value.h"
#include "platform/debugger.h"
#include "platform/sockets.h"

namespace Kestrel {
namespace {

constexpr std::uint32_t kReportTargets = dotConsole | dotDebugWindow | dotEventLog;

DebugOut Report() {
  return DebugOut("BUG", dolError, kReportTargets);
}

/// Null where the module has no such function; the failure then goes to the debugger.
void* Import(platform::ModuleHandle module, const char* name, const char16_t* failure) {
  void* const function = platform::GetProcAddress(module, name);
  if (!function) platform::OutputDebugStringW(failure);
  return function;
}

}  // namespace

void ReadSocketSettings() {
  const RegistryKey key(u"Software\\Vantrell\\Kestrel\\Socket");
  if (key.ReadFourBytes(u"DisableTcpAck").value_or(0) != 0)
    platform::OutputDebugStringW(u"TCP ACKNOWLEDGES ON SEND() DISABLED");
}

SocketStartup::SocketStartup() : succeeded_(platform::WSAStartup() == 0) {}

SocketStartup::~SocketStartup() {
  if (succeeded_) platform::WSACleanup();
}

AddressResolutionImport::AddressResolutionImport() {
  try {
    Find();
  } catch (const std::bad_alloc&) {  // made while the library is loaded, where no exception may leave
  }
}

void AddressResolutionImport::Find() {
  char16_t directory[260];
  const std::uint32_t length = platform::GetSystemDirectoryW(directory, std::size(directory));
  if (length == 0 || length >= std::size(directory)) {
    Report() << u"Call to GetSystemDirectoryA failed";  // support looks for this text, so it keeps the other name
    return;
  }
  path_ = std::u16string(directory, length) + u"\\ws2_32.dll";
  module_ = platform::LoadLibraryExW(path_.c_str(), 0);
  if (!module_) {
    Report() << u"Failed to load " << path_;
    return;
  }
  getAddrInfo_ = Import(module_, "GetAddrInfoW", u"Failed to import function: GetAddrInfoW");
  freeAddrInfo_ = Import(module_, "FreeAddrInfoW", u"Failed to import function: FreeAddrInfoW");
}

AddressResolutionImport::~AddressResolutionImport() {
  if (module_) platform::FreeLibrary(module_);
}

void LookUpHostName() {
  if (const platform::ModuleHandle module = platform::GetModuleHandleW(u"Ws2_32"))
    platform::GetProcAddress(module, "GetHostNameW");
}

}  // namespace Kestrel
