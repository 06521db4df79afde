#include "recorder/recording.h"

#include <array>
#include <atomic>
#include <filesystem>
#include <mutex>
#include <new>
#include <string>
#include <vector>

#include "capture/file_end.h"
#include "capture/redaction.h"
#include "platform/clock.h"
#include "platform/debugger.h"
#include "platform/errors.h"
#include "platform/process_end.h"
#include "platform/threads.h"
#include "recorder/settings.h"

namespace recorder {
namespace {

using capture::FrameHeader;
using capture::PartKind;

constexpr std::uint64_t kFrom1601To1970 = 11'644'473'600'000'000'000U;  // nanoseconds
constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

std::int64_t Ticks() {
  std::int64_t ticks = 0;
  platform::QueryPerformanceCounter(&ticks);
  return ticks;
}

std::uint64_t NanosecondsOf(std::int64_t ticks) {
  static constinit std::atomic<std::int64_t> frequency{0};
  std::int64_t perSecond = frequency.load(std::memory_order_relaxed);
  if (perSecond == 0) {
    if (!platform::QueryPerformanceFrequency(&perSecond) || perSecond <= 0) return 0;
    frequency.store(perSecond, std::memory_order_relaxed);
  }
  return static_cast<std::uint64_t>(ticks / perSecond * kNanosecondsPerSecond +
                                    ticks % perSecond * kNanosecondsPerSecond / perSecond);
}

std::uint64_t WallNanoseconds() {
  platform::FileTime now{};
  platform::GetSystemTimeAsFileTime(&now);
  return (std::uint64_t{now.high} << 32 | now.low) * 100 - kFrom1601To1970;
}

/// Keeps the thread's last error, because neither the finder nor the platform library may see that it is recorded.
class KeptLastError {
 public:
  KeptLastError() : error_(platform::GetLastError()) {}
  ~KeptLastError() { platform::SetLastError(error_); }
  KeptLastError(const KeptLastError&) = delete;
  KeptLastError& operator=(const KeptLastError&) = delete;

 private:
  std::uint32_t error_;
};

void Say(const std::string& text) {
  platform::OutputDebugStringA(("TarnCameraFinding-recorder: " + text + "\r\n").c_str());
}

/// A part's bytes without credentials: as they stand where there are none, else a copy that room holds.
std::span<const std::byte> WithoutCredentials(const Part& part, std::vector<std::uint8_t>& room) {
  const std::span bytes(reinterpret_cast<const std::uint8_t*>(part.bytes.data()), part.bytes.size());
  if (part.kind == PartKind::kArguments || part.kind == PartKind::kError) return part.bytes;
  if (part.kind == PartKind::kBlock && !capture::MayHoldCredentials(bytes)) return part.bytes;
  room.assign(bytes.begin(), bytes.end());
  return capture::RedactPart(part.kind, room) ? std::as_bytes(std::span(room)) : part.bytes;
}

constinit std::atomic<Recording*> current{nullptr};

}  // namespace

Stopwatch::Stopwatch() : start_(Ticks()) {}

std::uint64_t Stopwatch::GetNanoseconds() const {
  return NanosecondsOf(Ticks() - start_);
}

/// Begins the recording when the library is loaded and closes its file when it is unloaded. The recording itself is
/// never destroyed, and at the end of a process the file stays open, because other threads may still be inside.
class RecordingHolder {
 public:
  RecordingHolder() {
    try {
      const Settings settings = ReadSettings();
      if (!settings.file.empty()) Start(settings);
    } catch (const std::exception& exception) {
      Say(std::string("nothing is recorded: ") + exception.what());
    }
  }
  ~RecordingHolder() {
    if (platform::ProcessEnds()) return;
    if (Recording* const recording = current.load()) recording->Close();
  }
  RecordingHolder(const RecordingHolder&) = delete;
  RecordingHolder& operator=(const RecordingHolder&) = delete;

 private:
  void Start(const Settings& settings) {
    if (capture::MendFileEnd(settings.file) == capture::FileEnd::kNotOurs)
      return Say("nothing is recorded: the file is no capture, or a damaged one, and stays as it is");
    platform::AppendFile* const file = platform::OpenForAppend(settings.file.c_str());
    if (!file) return Say("nothing is recorded: the file cannot be opened");
    current.store(new (storage_) Recording(file, settings.secrets));
  }

  alignas(Recording) std::byte storage_[sizeof(Recording)];
};

namespace {
RecordingHolder holder;
}  // namespace

Recording* Recording::Get() {
  return current.load(std::memory_order_acquire);
}

Recording::Recording(platform::AppendFile* file, bool secrets)
    : secrets_(secrets), file_(file), wallStart_(WallNanoseconds()), tickStart_(Ticks()) {
  if (!capture::FrameWriter(*this).WriteSectionStart()) End("the file cannot be written");
}

void Recording::Close() {
  const std::lock_guard guard(lock_);
  if (file_) platform::CloseAppendFile(file_);
  file_ = nullptr;
}

void Recording::Add(FrameHeader header, std::initializer_list<Part> parts) noexcept {
  const KeptLastError lastError;
  header.thread = platform::GetCurrentThreadId();
  try {
    Write(header, {parts.begin(), parts.size()});
  } catch (...) {  // no memory for what is written without credentials
    const std::lock_guard guard(lock_);
    End("there is no memory");
  }
}

void Recording::Write(FrameHeader header, std::span<const Part> parts) {
  std::array<std::vector<std::uint8_t>, capture::FrameParts::kMost> rooms;
  capture::FrameParts written;
  std::size_t next = 0;
  for (const Part& part : parts) {
    const auto bytes = secrets_ ? part.bytes : WithoutCredentials(part, rooms[next++]);
    if (bytes.data() != part.bytes.data()) header.flags |= capture::kCredentialsReplaced;
    written.Add(part.kind, bytes);
  }
  const std::lock_guard guard(lock_);
  if (!file_) return;
  const std::uint64_t time = wallStart_ + NanosecondsOf(Ticks() - tickStart_);
  if (!capture::FrameWriter(*this).WriteFrame(header, time, written)) End("the file cannot be written");
}

void Recording::End(const char* reason) {
  if (!file_) return;
  platform::CloseAppendFile(file_);
  file_ = nullptr;
  try {
    Say(std::string("the recording has ended: ") + reason);
  } catch (...) {  // no memory for the line
  }
}

}  // namespace recorder
