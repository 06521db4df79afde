#include "diagnostics/debug_out_streamer.h"

#include <algorithm>
#include <exception>
#include <mutex>

#include "diagnostics/console_output_streamer.h"
#include "diagnostics/debug_window_output_streamer.h"
#include "diagnostics/eventlog_output_streamer.h"
#include "diagnostics/file_output_streamer.h"
#include "diagnostics/global_object.h"
#include "platform/console.h"

namespace Kestrel {
namespace {

constinit GlobalObject<DebugOutStreamer> sharedStreamer;

using TargetPointer = ReferencePointer<IDebugOutStreamerObject>;

template <class Target>
TargetPointer Make() {
  return TargetPointer(new Target);
}

struct TargetKind {
  std::uint32_t flag;
  TargetPointer (*make)();
};
constexpr TargetKind kTargetKinds[] = {
    {dotConsole, Make<ConsoleOutputStreamer>},
    {dotDebugWindow, Make<DebugWindowOutputStreamer>},
    {dotFile, Make<FileOutputStreamer>},
    {dotEventLog, Make<EventlogOutputStreamer>},
};

/// Runs several steps, whether or not one of them throws; Rethrow then throws the first exception.
class FirstFailure {
 public:
  template <class Step>
  void Run(Step step) {
    try {
      step();
    } catch (...) {
      if (!exception_) exception_ = std::current_exception();
    }
  }
  void Rethrow() const {
    if (exception_) std::rethrow_exception(exception_);
  }

 private:
  std::exception_ptr exception_;
};

}  // namespace

DebugOutStreamer::DebugOutStreamer() {
  SetOutputTargets(platform::HasConsoleWindow() ? dotConsole : dotDebugWindow, otmReplace);
}

ReferencePointer<DebugOutStreamer> DebugOutStreamer::Get() {
  return sharedStreamer.Get();
}

void DebugOutStreamer::Destroy() {
  if (const auto streamer = sharedStreamer.Take()) streamer->enabled_.store(0, std::memory_order_relaxed);
}

bool DebugOutStreamer::OpenOutputFile(const char16_t* path) {
  const std::lock_guard guard(lock_);
  IDebugOutStreamerObject* const file = TargetForMessage(dotFile);
  return file && file->Open(path);
}

std::uint32_t DebugOutStreamer::SetOutputTargets(std::uint32_t mask, std::uint32_t mode) {
  const std::lock_guard guard(lock_);
  if (mode > otmAdd) return defaultTargets_;
  for (const std::uint32_t flag : kKnownFlags) {
    const bool isNamed = mask & flag;
    if (isNamed || mode == otmReplace) SetDefault(flag, isNamed && mode != otmRemove);
  }
  return defaultTargets_;
}

void DebugOutStreamer::Emit(const DebugOutRecord& record, HistoryLine& line, std::uint32_t flags) {
  const std::lock_guard guard(lock_);
  if (flags & dotDefault) flags = (flags & ~std::uint32_t{dotDefault}) | defaultTargets_;
  const std::u16string_view text = line.Text();
  std::size_t written = 0;
  FirstFailure failure;
  for (const std::uint32_t flag : kKnownFlags) {
    if (!(flags & flag) || text.empty()) continue;
    failure.Run([&] {
      if (IDebugOutStreamerObject* const target = TargetForMessage(flag)) {
        target->Write(record, text);
        ++written;
      }
    });
  }
  failure.Run([&] {
    for (; written > 1; --written) {
      std::u16string copy = line.whole;
      history_.Add(record.level, copy);
    }
    if (written > 0) history_.Add(record.level, line.whole);
  });
  for (const std::uint32_t flag : kKnownFlags) {
    if (!(flags & flag)) continue;
    failure.Run([&] {
      if (IDebugOutStreamerObject* const target = Find(flag)) target->Flush();
    });
  }
  failure.Rethrow();
}

IDebugOutStreamerObject* DebugOutStreamer::Find(std::uint32_t flag) const {
  const auto target = targets_.find(flag);
  return target == targets_.end() ? nullptr : target->second.Get();
}

IDebugOutStreamerObject* DebugOutStreamer::FindOrCreate(std::uint32_t flag) {
  if (IDebugOutStreamerObject* const target = Find(flag)) return target;
  const auto kind = std::ranges::find(kTargetKinds, flag, &TargetKind::flag);
  if (kind == std::ranges::end(kTargetKinds)) return nullptr;
  return targets_.emplace(flag, kind->make()).first->second.Get();
}

IDebugOutStreamerObject* DebugOutStreamer::TargetForMessage(std::uint32_t flag) {
  return targets_.empty() ? nullptr : FindOrCreate(flag);
}

void DebugOutStreamer::SetDefault(std::uint32_t flag, bool isDefault) {
  if (isDefault) {
    FindOrCreate(flag);
    defaultTargets_ |= flag;
  } else {
    targets_.erase(flag);
    defaultTargets_ &= ~flag;
  }
}

}  // namespace Kestrel
