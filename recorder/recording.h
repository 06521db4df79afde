/// The recording of this process: one file, from the library's load to its unload.
///
/// Threads  Everything may be called on any thread; one lock is held while a frame is written, and nothing is called
///          back from inside.
/// Errors   None reaches the caller: what cannot be written ends the recording, which is said once to the debugger. The
///          thread's last error is kept.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>

#include "base/critical_section.h"
#include "capture/frame_writer.h"
#include "platform/append_file.h"
#include "recorder/recorded_callback.h"

namespace recorder {

/// Measures the time since it was made.
class Stopwatch {
 public:
  Stopwatch();
  std::uint64_t GetNanoseconds() const;

 private:
  std::int64_t start_;
};

/// A part of a frame as it stands in memory.
struct Part {
  capture::PartKind kind;
  std::span<const std::byte> bytes;
};

class Recording final : private capture::ByteSink {
 public:
  /// Null where nothing is to be recorded. Stays what it is from load to unload, also after the recording has ended.
  static Recording* Get();

  /// Writes a frame. Credentials are taken out of the parts unless they are wanted.
  void Add(capture::FrameHeader header, std::initializer_list<Part> parts) noexcept;

  RecordedCallbacks& GetCallbacks() { return callbacks_; }

 private:
  friend class RecordingHolder;

  Recording(platform::AppendFile* file, bool secrets);
  void Close();
  void Write(capture::FrameHeader header, std::span<const Part> parts);
  void End(const char* reason);
  bool Append(std::span<const platform::BytePiece> pieces) override { return platform::Append(file_, pieces); }

  RecordedCallbacks callbacks_;
  const bool secrets_;
  Kestrel::CriticalSection lock_;
  platform::AppendFile* file_;  ///< null once the recording has ended
  std::uint64_t wallStart_;     ///< nanoseconds since 1970
  std::int64_t tickStart_;
};

}  // namespace recorder
