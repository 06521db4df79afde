#include "fakes/fake_system.h"

#include <algorithm>
#include <cstdlib>
#include <ios>

#include "base/text_conversion.h"
#include "platform/accounts.h"
#include "platform/clock.h"
#include "platform/console.h"
#include "platform/error_codes.h"
#include "platform/errors.h"
#include "platform/event_log.h"
#include "platform/modules.h"
#include "platform/registry.h"
#include "platform/sockets.h"

fakes::FakeSystem& fakes::TheSystem() {
  static FakeSystem* const system = new FakeSystem;
  return *system;
}

namespace platform {
namespace {

using fakes::TheSystem;
using Kestrel::WideToUtf8;

bool Fail(std::uint32_t code) {
  SetLastError(code);
  return false;
}

/// Copies what there is room for. *size: in, the room; out, what is needed.
template <class Source, class Target, class Size>
bool Put(const Source& source, Target* target, Size* size) {
  const bool fits = source.size() <= static_cast<std::size_t>(std::exchange(*size, static_cast<Size>(source.size())));
  if (fits) std::copy(source.begin(), source.end(), target);
  return fits || Fail(ERROR_INSUFFICIENT_BUFFER);
}

/// Text with its NUL.
template <class Text>
Text Terminated(Text text) {
  return text += typename Text::value_type{};
}

void* Handle(std::uintptr_t number) {
  return reinterpret_cast<void*>(number);
}
std::string NameOf(ConsoleHandle console) {
  return console == Handle(1) ? "output" : "error";
}

/// Knows four variables. One that is named for a number is that many spaces and a 6.
template <class Char>
std::uint32_t Expand(const Char* source, Char* target, std::uint32_t room) {
  const std::string name(source, source + std::char_traits<Char>::length(source));
  if (name == "%FAILURE%") return 0;
  const std::size_t spaces = std::strtoul(name.c_str() + 1, nullptr, 10);
  std::string value = name == "%FIVE%" ? "5" : spaces > 0 ? std::string(spaces, ' ') + "6" : name;
  if (name == "%TWO NULS%") value = std::string("7\0", 2);
  Put(Terminated(value), target, &room);
  return room;
}

}  // namespace

struct RegistryKey {
  std::vector<fakes::RegistryValue> values;
  std::u16string path;
};

std::uint32_t RegOpenKeyExW(RegistryKey* parent, const char16_t* path, std::uint32_t access, RegistryKey** key) {
  const std::u16string full = parent ? parent->path + u'\\' + path : path;
  TheSystem().Call("", "open " + WideToUtf8(full) + (access == 0x20119 ? "" : " with another access"));
  const auto found = TheSystem().keys.find(full);
  if (found == TheSystem().keys.end()) return ERROR_FILE_NOT_FOUND;
  *key = new RegistryKey{found->second, full};
  return ERROR_SUCCESS;
}
void RegCloseKey(RegistryKey* key) {
  delete key;
}
std::uint32_t RegQueryValueExW(RegistryKey* key, const char16_t* name, std::uint32_t* type, void* data,
                               std::uint32_t* size) {
  const auto value = std::ranges::find(key->values, WideToUtf8(name), &fakes::RegistryValue::name);
  if (value == key->values.end()) return ERROR_FILE_NOT_FOUND;
  if (type) *type = value->type;
  return Put(value->data, static_cast<std::uint8_t*>(data), size) ? ERROR_SUCCESS : ERROR_MORE_DATA;
}
std::uint32_t RegEnumValueA(RegistryKey* key, std::uint32_t index, char* name, std::uint32_t* nameSize,
                            std::uint32_t* type, void* data, std::uint32_t* size) {
  if (index >= key->values.size()) return ERROR_NO_MORE_ITEMS;
  const fakes::RegistryValue& value = key->values[index];
  if (!Put(Terminated(value.name), name, nameSize)) return ERROR_MORE_DATA;
  --*nameSize;
  *type = value.type;
  return Put(value.data, static_cast<std::uint8_t*>(data), size) ? ERROR_SUCCESS : ERROR_MORE_DATA;
}
std::uint32_t ExpandEnvironmentStringsA(const char* source, char* target, std::uint32_t room) {
  return Expand(source, target, room);
}
std::uint32_t ExpandEnvironmentStringsW(const char16_t* source, char16_t* target, std::uint32_t room) {
  return Expand(source, target, room);
}

ConsoleHandle GetStdHandle(std::uint32_t which) {
  const ConsoleHandle console = Handle(which == STD_OUTPUT_HANDLE ? 1 : 2);
  return TheSystem().failing.contains(NameOf(console)) ? InvalidConsoleHandle() : console;
}
bool HasConsoleWindow() {
  return TheSystem().hasConsoleWindow;
}
bool WriteConsoleW(ConsoleHandle console, const char16_t* text, std::uint32_t units) {
  return TheSystem().Call("", NameOf(console) + " " + WideToUtf8({text, units}));
}
bool SetConsoleTextAttribute(ConsoleHandle console, std::uint16_t attributes) {
  return TheSystem().Call("", NameOf(console) + " colour " + std::to_string(attributes));
}
bool GetConsoleTextAttribute(ConsoleHandle, std::uint16_t* attributes) {
  *attributes = 30;
  return !TheSystem().failing.contains("GetConsoleTextAttribute");
}
void FlushStandardOutput() {
  if (!TheSystem().Call("FlushStandardOutput", "flush")) throw std::ios_base::failure("flush");
}

EventSource RegisterEventSourceW(const char16_t* name) {
  return TheSystem().Call("RegisterEventSourceW", "register " + WideToUtf8(name)) ? Handle(3) : nullptr;
}
bool ReportEventW(EventSource source, std::uint16_t type, const void* sid, const char16_t* text) {
  const std::string user = sid ? std::to_string(*static_cast<const std::uint8_t*>(sid)) : "none";
  const std::string call = "report " + std::to_string(type) + " user " + user + " " + WideToUtf8(text);
  return TheSystem().Call("ReportEventW", call) && source;
}
bool DeregisterEventSource(EventSource) {
  return TheSystem().Call("", "deregister");
}

bool GetUserNameExSamCompatible(char16_t* name, std::uint32_t* units) {
  return !TheSystem().failing.contains("GetUserNameExW") && Put(Terminated(std::u16string(u"HOST\\me")), name, units);
}
bool GetUserNameW(char16_t* name, std::uint32_t* units) {
  return Put(Terminated(std::u16string(u"me")), name, units);
}
bool LookupAccountNameW(const char16_t* account, void* sid, std::uint32_t* sidBytes, char16_t* domain,
                        std::uint32_t* domainUnits) {
  if (!TheSystem().Call("LookupAccountNameW", "look up " + WideToUtf8(account))) return Fail(ERROR_NONE_MAPPED);
  return Put(fakes::Bytes(TheSystem().sidBytes, 77), static_cast<std::uint8_t*>(sid), sidBytes) &&
         Put(Terminated(std::u16string(u"HOST")), domain, domainUnits);
}

ModuleHandle ModuleContaining(const void*) {
  return Handle(4);
}
std::uint32_t GetModuleFileNameW(ModuleHandle module, char16_t* path, std::uint32_t units) {
  std::uint32_t size = units;
  if (TheSystem().failing.contains("GetModuleFileNameW")) return 0;
  return Put(Terminated(module ? u"C:\\Programs\\Finding.dll" : TheSystem().executable), path, &size) ? size - 1
                                                                                                      : units;
}
const char16_t* PathFindFileNameW(const char16_t* path) {
  return path + std::u16string_view(path).rfind(u'\\') + 1;
}
ModuleHandle LoadLibraryExW(const char16_t* path, std::uint32_t flags) {
  TheSystem().Call("", "load " + WideToUtf8(path) + " flags " + std::to_string(flags));
  return TheSystem().modules.contains(path) ? Handle(0xAB5) : nullptr;
}
ModuleHandle GetModuleHandleW(const char16_t* name) {
  return TheSystem().Call("", "module " + WideToUtf8(name)) ? Handle(0xAB5) : nullptr;
}
void* GetProcAddress(ModuleHandle, const char* name) {
  TheSystem().Call("", "function " + std::string(name));
  const auto function = TheSystem().functions.find(name);
  return function == TheSystem().functions.end() ? nullptr : function->second;
}
ModuleHandle ReferenceThisModule() {
  return nullptr;
}
bool FreeLibrary(ModuleHandle) {
  return TheSystem().Call("", "free");
}
std::uint32_t GetSystemDirectoryW(char16_t* path, std::uint32_t units) {
  return Put(Terminated(TheSystem().systemDirectory), path, &units) ? units - 1 : units;
}

bool QueryPerformanceFrequency(std::int64_t* ticksPerSecond) {
  *ticksPerSecond = TheSystem().ticksPerSecond;
  return TheSystem().Call("QueryPerformanceFrequency", "frequency");
}
bool QueryPerformanceCounter(std::int64_t*) {
  return false;
}
void GetSystemTimeAsFileTime(FileTime* time) {
  constexpr std::uint64_t kTicks = 13354031109123ULL * 10000;
  *time = {static_cast<std::uint32_t>(kTicks), static_cast<std::uint32_t>(kTicks >> 32)};
}
void GetLocalTime(SystemTime* time) {
  *time = {2024, 3, 1, 4, 13, 5, 9, 123};
}
bool SystemTimeToFileTime(const SystemTime&, FileTime*) {
  return false;
}
bool FileTimeToSystemTime(const FileTime&, SystemTime*) {
  return false;
}
std::uint32_t GetTimeZoneInformation(TimeZoneInformation*) {
  return 0xFFFFFFFF;
}
int GetDateFormatW(std::uint32_t, const SystemTime&, const char16_t* picture, char16_t* text, int units) {
  return Put(Terminated(std::u16string(picture ? u"Mon" : u"3/4/2024")), text, &units) ? units : 0;
}
int GetTimeFormatW(std::uint32_t, const SystemTime&, char16_t* text, int units) {
  if (TheSystem().failing.contains("GetTimeFormatW")) return 0;
  return Put(Terminated(std::u16string(u"1:05:09 PM")), text, &units) ? units : 0;
}

int WSAStartup() {
  return TheSystem().Call("WSAStartup", "WSAStartup") ? 0 : 10091;
}
int WSACleanup() {
  return TheSystem().Call("", "WSACleanup") ? 0 : 1;
}

}  // namespace platform
