/// What is prepared for sockets when the module is loaded.
///
/// Errors: Nothing throws but std::bad_alloc. An import that fails is reported as a text to the debugger; a failing
/// start of the socket library and a failing look-up of the host name are silent.
/// Threads: Load and unload run on one thread, under the loader's lock. In between the objects are only read.
#pragma once

#include <string>

#include "platform/modules.h"

namespace Kestrel {

/// Sends a line to the debugger if HKEY_LOCAL_MACHINE\Software\Vantrell\Kestrel\Socket has a four-byte "DisableTcpAck"
/// that is not 0. The line is all that the setting does.
void ReadSocketSettings();

/// One start of the socket library. The destructor undoes it if it succeeded.
class SocketStartup {
 public:
  SocketStartup();
  ~SocketStartup();
  SocketStartup(const SocketStartup&) = delete;
  SocketStartup& operator=(const SocketStartup&) = delete;

 private:
  const bool succeeded_;
};

/// The address-resolution functions of the socket library in the system directory, which stays loaded while the object
/// lives. The library itself calls neither; they are for components built on it.
class AddressResolutionImport {
 public:
  /// Finds nothing where there is no memory.
  AddressResolutionImport();
  ~AddressResolutionImport();
  AddressResolutionImport(const AddressResolutionImport&) = delete;
  AddressResolutionImport& operator=(const AddressResolutionImport&) = delete;

  /// Null where the socket library or the function is missing.
  void* GetAddrInfoW() const { return getAddrInfo_; }
  void* FreeAddrInfoW() const { return freeAddrInfo_; }

 private:
  void Find();

  std::u16string path_;
  platform::ModuleHandle module_ = nullptr;
  void* getAddrInfo_ = nullptr;
  void* freeAddrInfo_ = nullptr;
};

/// Looks up "GetHostNameW" in the loaded socket library. Nothing uses the result; the step is kept because traces of a
/// load show it.
void LookUpHostName();

}  // namespace Kestrel
