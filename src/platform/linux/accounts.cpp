#include "platform/accounts.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "platform/error_codes.h"
#include "platform/errors.h"
#include "platform/linux/text.h"

namespace platform {
namespace {

/// A security identifier in its binary form: S-1-22-1-USER, the form for a Unix user. The last number is the user id.
struct UnixUserSid {
  std::uint8_t revision = 1;
  std::uint8_t subAuthorityCount = 2;
  std::uint8_t authority[6] = {0, 0, 0, 0, 0, 22};
  std::uint32_t subAuthorities[2] = {1, 0};
};
static_assert(sizeof(UnixUserSid) == 16);

/// Calls lookup, which is getpwuid_r or getpwnam_r, until the entry fits, and then consume with the entry, which is
/// valid during that call only. False where there is no entry.
template <class Lookup, class Consume>
bool WithPasswordEntry(Lookup lookup, Consume consume) {
  std::vector<char> room(1024);
  passwd entry{};
  passwd* found = nullptr;
  for (int error; (error = lookup(&entry, room.data(), room.size(), &found)) == ERANGE || error == EINTR;)
    if (error == ERANGE) room.resize(room.size() * 2);
  if (found) consume(*found);
  return found != nullptr;
}

std::u16string CurrentUser() {
  std::u16string name;
  const uid_t id = geteuid();
  const auto lookup = [id](passwd* entry, char* room, std::size_t size, passwd** found) {
    return getpwuid_r(id, entry, room, size, found);
  };
  if (!WithPasswordEntry(lookup, [&](const passwd& entry) { name = WideText(entry.pw_name); }))
    SetLastError(ERROR_NONE_MAPPED);
  return name;
}

std::optional<uid_t> UserId(const std::string& name) {
  std::optional<uid_t> id;
  const auto lookup = [&name](passwd* entry, char* room, std::size_t size, passwd** found) {
    return getpwnam_r(name.c_str(), entry, room, size, found);
  };
  WithPasswordEntry(lookup, [&](const passwd& entry) { id = entry.pw_uid; });
  return id;
}

std::u16string HostName() {
  char name[256] = {};
  gethostname(name, sizeof name - 1);
  return WideText(name);
}

}  // namespace

bool GetUserNameExSamCompatible(char16_t* name, std::uint32_t* units) {
  const std::u16string user = CurrentUser();
  if (user.empty()) return false;
  const std::u16string qualified = HostName() + u"\\" + user;
  const bool fits = CopyWithNul(qualified, name, *units);
  *units = static_cast<std::uint32_t>(qualified.size()) + (fits ? 0 : 1);
  if (!fits) SetLastError(ERROR_MORE_DATA);
  return fits;
}

bool GetUserNameW(char16_t* name, std::uint32_t* units) {
  const std::u16string user = CurrentUser();
  if (user.empty()) return false;
  const bool fits = CopyWithNul(user, name, *units);
  *units = static_cast<std::uint32_t>(user.size()) + 1;
  if (!fits) SetLastError(ERROR_INSUFFICIENT_BUFFER);
  return fits;
}

bool LookupAccountNameW(const char16_t* account, void* sid, std::uint32_t* sidBytes, char16_t* domain,
                        std::uint32_t* domainUnits) {
  const std::u16string_view qualified(account);
  const std::u16string host = HostName();
  const std::size_t separator = qualified.find(u'\\');
  const bool named = separator != qualified.npos;
  const std::u16string_view user = named ? qualified.substr(separator + 1) : qualified;
  const bool local = !named || UpperCase(qualified.substr(0, separator)) == UpperCase(host);
  const std::optional<uid_t> id = local ? UserId(Utf8Text(user)) : std::nullopt;
  if (!id) {
    SetLastError(ERROR_NONE_MAPPED);
    return false;
  }
  if (*sidBytes < sizeof(UnixUserSid) || *domainUnits <= host.size()) {
    *sidBytes = sizeof(UnixUserSid);
    *domainUnits = static_cast<std::uint32_t>(host.size()) + 1;
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return false;
  }
  UnixUserSid identifier;
  identifier.subAuthorities[1] = *id;
  std::memcpy(sid, &identifier, sizeof identifier);
  *sidBytes = sizeof identifier;
  CopyWithNul(host, domain, *domainUnits);
  *domainUnits = static_cast<std::uint32_t>(host.size());
  return true;
}

}  // namespace platform
