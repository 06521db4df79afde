/// One direction of the C library's conversion between code sets.
#pragma once

#include <iconv.h>

#include <cstddef>

namespace platform {

class Iconv {
 public:
  /// Names as the C library knows them.
  Iconv(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
  ~Iconv() {
    if (IsOpen()) iconv_close(handle_);
  }
  Iconv(const Iconv&) = delete;
  Iconv& operator=(const Iconv&) = delete;

  /// False where the C library lacks one of the code sets.
  bool IsOpen() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

  /// Converts a whole text. Returns how many bytes of target were written, 0 on failure with errno set. Flushes,
  /// because the converters of some pages hold a letter back in case that a combining character follows.
  std::size_t Convert(const void* source, std::size_t bytes, void* target, std::size_t room) const {
    if (!IsOpen()) return 0;
    auto* from = static_cast<char*>(const_cast<void*>(source));
    auto* to = static_cast<char*>(target);
    std::size_t left = room;
    iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    if (iconv(handle_, &from, &bytes, &to, &left) == kFailed) return 0;
    if (iconv(handle_, nullptr, nullptr, &to, &left) == kFailed) return 0;
    return room - left;
  }

 private:
  static constexpr std::size_t kFailed = static_cast<std::size_t>(-1);
  iconv_t handle_;
};

}  // namespace platform
