/// What the base library prepares for sockets when the module is loaded. Nothing here throws: failures are reported as
/// texts. The steps and their undoing run single-threaded, and what they leave is only read in between.
#pragma once

#include <string>

#include "platform/modules.h"

namespace Kestrel {

/// Tells the debugger where HKEY_LOCAL_MACHINE\Software\Vantrell\Kestrel\Socket has a "DisableTcpAck" other than 0.
void ReadSocketSettings();

/// One start of the socket library, undone where it succeeded.
class SocketStartup {
 public:
  SocketStartup();
  ~SocketStartup();
  SocketStartup(const SocketStartup&) = delete;
  SocketStartup& operator=(const SocketStartup&) = delete;

 private:
  const bool succeeded_;
};

/// The address-resolution functions of the system directory's socket library, which stays loaded while the object
/// lives.
class AddressResolutionImport {
 public:
  AddressResolutionImport();
  ~AddressResolutionImport();
  AddressResolutionImport(const AddressResolutionImport&) = delete;
  AddressResolutionImport& operator=(const AddressResolutionImport&) = delete;

  /// Either is null where it could not be had.
  void* GetAddrInfoW() const { return getAddrInfo_; }
  void* FreeAddrInfoW() const { return freeAddrInfo_; }

 private:
  std::u16string path_;
  platform::ModuleHandle module_ = nullptr;
  void* getAddrInfo_ = nullptr;
  void* freeAddrInfo_ = nullptr;
};

/// Asks the loaded socket library for "GetHostNameW" as the last step; what comes back is not kept.
void LookUpHostName();

}  // namespace Kestrel
