#include "platform/accounts.h"

#include "platform/windows/api.h"
// After windows.h, on which it relies.
#include <security.h>

namespace platform {

bool GetUserNameExSamCompatible(char16_t* name, std::uint32_t* units) {
  return ::GetUserNameExW(NameSamCompatible, Wide(name), Dword(units)) != FALSE;
}

bool GetUserNameW(char16_t* name, std::uint32_t* units) {
  return ::GetUserNameW(Wide(name), Dword(units)) != FALSE;
}

bool LookupAccountNameW(const char16_t* account, void* sid, std::uint32_t* sidBytes, char16_t* domain,
                        std::uint32_t* domainUnits) {
  SID_NAME_USE use;
  return ::LookupAccountNameW(nullptr, Wide(account), sid, Dword(sidBytes), Wide(domain), Dword(domainUnits), &use) !=
         FALSE;
}

}  // namespace platform
