#include "platform/debugger.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "platform/code_pages.h"
#include "platform/linux/write_all.h"

namespace platform {
namespace {

/// Where TARN_DEBUGGER points. The file is opened for each line, because nothing could close a kept descriptor behind
/// the last line, and each unload of the library would leak one.
class Sink {
 public:
  Sink() {
    const char* const target = std::getenv("TARN_DEBUGGER");
    if (!target || !*target) return;
    isFile_ = std::strcmp(target, "stderr") != 0;
    // Without O_NONBLOCK opening a pipe waits for its reader.
    constexpr int kFlags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK;
    descriptor_ = isFile_ ? open(target, kFlags, 0644) : STDERR_FILENO;
  }
  ~Sink() {
    if (isFile_ && descriptor_ >= 0) close(descriptor_);
  }
  Sink(const Sink&) = delete;
  Sink& operator=(const Sink&) = delete;

  bool IsOpen() const { return descriptor_ >= 0; }
  /// A failure is ignored, because nobody is left to be told.
  void Write(std::string_view text) const { static_cast<void>(WriteAll(descriptor_, text)); }

 private:
  bool isFile_ = false;
  int descriptor_ = -1;
};

/// Room for a line: on the stack for an ordinary one, on the heap for a longer one.
template <class Unit>
class Room {
 public:
  explicit Room(std::size_t units) {
    if (units > kOrdinary) heap_.reset(new (std::nothrow) Unit[units]);
    start_ = units > kOrdinary ? heap_.get() : stack_;
  }
  /// Null where there is no memory.
  Unit* Start() { return start_; }

 private:
  static constexpr std::size_t kOrdinary = 1024;
  Unit stack_[kOrdinary];
  std::unique_ptr<Unit[]> heap_;
  Unit* start_;
};

}  // namespace

void OutputDebugStringW(const char16_t* text) {
  const Sink sink;
  if (!text || !sink.IsOpen()) return;
  const std::size_t most = std::char_traits<char16_t>::length(text) * 3 + 1;
  Room<char> utf8(most);
  if (!utf8.Start()) return;
  const int bytes = WideCharToMultiByte(CP_UTF8, 0, text, kNulTerminated, utf8.Start(), static_cast<int>(most));
  if (bytes > 0) sink.Write({utf8.Start(), static_cast<std::size_t>(bytes) - 1});
}

void OutputDebugStringA(const char* text) {
  if (!text) return;
  const std::size_t most = std::strlen(text) + 1;
  Room<char16_t> wide(most);
  if (!wide.Start()) return;
  if (MultiByteToWideChar(CP_ACP, 0, text, kNulTerminated, wide.Start(), static_cast<int>(most)) > 0)
    OutputDebugStringW(wide.Start());
}

}  // namespace platform
