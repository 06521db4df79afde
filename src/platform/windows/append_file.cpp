#include "platform/append_file.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "platform/windows/api.h"

namespace platform {
namespace {

bool WriteAll(HANDLE file, const std::byte* bytes, std::size_t size) {
  constexpr std::size_t kMostOfACall = 0x40000000;  // WriteFile counts in 32 bits
  while (size > 0) {
    DWORD written = 0;
    if (!::WriteFile(file, bytes, static_cast<DWORD>(std::min(size, kMostOfACall)), &written, nullptr) || written == 0)
      return false;
    bytes += written;
    size -= written;
  }
  return true;
}

}  // namespace

AppendFile* OpenForAppend(const char16_t* path) {
  const HANDLE file =
      ::CreateFileW(Wide(path), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  return file == INVALID_HANDLE_VALUE ? nullptr : reinterpret_cast<AppendFile*>(file);
}

/// Windows cannot write several pieces of such a file in one call, so small pieces are copied together first.
bool Append(AppendFile* file, std::span<const BytePiece> pieces) {
  std::byte room[4096];
  std::size_t held = 0;
  for (const BytePiece piece : pieces) {
    if (piece.size() > sizeof room - held) {
      if (!WriteAll(file, room, held)) return false;
      held = 0;
    }
    if (piece.size() > sizeof room) {
      if (!WriteAll(file, piece.data(), piece.size())) return false;
      continue;
    }
    if (!piece.empty()) std::memcpy(room + held, piece.data(), piece.size());
    held += piece.size();
  }
  return WriteAll(file, room, held);
}

void CloseAppendFile(AppendFile* file) {
  ::CloseHandle(file);
}

}  // namespace platform
