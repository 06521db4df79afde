#include "simulator/library.h"

#include <array>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string_view>
#include <utility>

#include "platform/process_end.h"
#include "simulator/default_scenario.h"
#include "simulator/recorded_conversation.h"
#include "simulator/scenario_reader.h"
#include "valuelist/buffer_pool.h"

namespace simulator {
namespace {

constexpr char kScenarioVariable[] = "TARN_SIMULATOR_SCENARIO";
constexpr char kSpeedVariable[] = "TARN_SIMULATOR_SPEED";
constexpr char kDefaultPath[] = "default scenario";

/// How much faster a capture is played than it was recorded; 0: nothing is waited for.
double ReplaySpeed() {
  const char* const text = std::getenv(kSpeedVariable);
  if (!text || !*text) return 1;
  double speed = -1;
  const char* const end = text + std::strlen(text);
  const auto [last, error] = std::from_chars(text, end, speed);
  if (error != std::errc() || last != end || !(speed >= 0 && speed <= 1e6))
    throw ScenarioMistake(std::string(kSpeedVariable) + " must be a number from 0 to 1000000");
  return speed;
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string text;
  // A folder opens, but cannot be read. read() only sets badbit then; a stream iterator would throw.
  for (std::array<char, 4096> part; file.good();) {
    file.read(part.data(), part.size());
    text.append(part.data(), static_cast<std::size_t>(file.gcount()));
  }
  if (!file.is_open() || file.bad())
    throw ScenarioMistake(path + ": cannot be read; " + kScenarioVariable + " must name a scenario file");
  return text;
}

}  // namespace

/// Ends the library when it is unloaded. At the end of the process everything stays, because a delivery may be inside a
/// callback that never returns, and other threads may still call the functions.
class LibraryHolder {
 public:
  LibraryHolder() : library_(new Library) {}
  ~LibraryHolder() {
    if (platform::ProcessEnds()) {
      library_->LetGo();
    } else {
      library_->End();
      delete library_;
      Kestrel::BufferPool::DestroySharedPool();
    }
  }
  LibraryHolder(const LibraryHolder&) = delete;
  LibraryHolder& operator=(const LibraryHolder&) = delete;

  Library& Get() { return *library_; }

 private:
  Library* const library_;
};

Library& Library::Get() {
  static LibraryHolder holder;
  return holder.Get();
}

void Library::LoadScenario() {
  const char* const variable = std::getenv(kScenarioVariable);
  const bool isFile = variable && *variable;
  std::string path = isFile ? variable : kDefaultPath;
  std::string text = isFile ? ReadFile(path) : std::string(kDefaultScenario);
  const std::lock_guard guard(lock_);
  if (scenario_ && path == scenarioPath_ && text == scenarioText_) return;
  auto scenario = std::make_shared<const Scenario>(IsCapture(text) ? ReadRecordedConversation(text, path, ReplaySpeed())
                                                                   : ReadScenario(text, path));
  streamsCreated_ = 0;
  faults_ = std::make_shared<FunctionFaults>(scenario);
  scenario_ = std::move(scenario);
  scenarioPath_ = std::move(path);
  scenarioText_ = std::move(text);
}

Outcome Library::EnterCall(Function function) {
  std::shared_ptr<FunctionFaults> faults;
  {
    const std::lock_guard guard(lock_);
    faults = faults_;
  }
  return faults ? faults->EnterCall(function) : Outcome::kAsUsual;
}

Tarn::TTarnLiveStream* Library::CreateStream() {
  const std::lock_guard guard(lock_);
  auto stream = std::make_shared<Stream>(scenario_, threads_, streamsCreated_++);
  auto* const handle = reinterpret_cast<Tarn::TTarnLiveStream*>(stream.get());
  streams_.emplace(handle, std::move(stream));
  return handle;
}

std::shared_ptr<Stream> Library::FindStream(Tarn::TTarnLiveStream* handle) {
  const std::lock_guard guard(lock_);
  const auto found = streams_.find(handle);
  if (found == streams_.end()) throw Refused(kUnknownHandle, "There is no such live stream");
  return found->second;
}

std::shared_ptr<Stream> Library::RemoveStream(Tarn::TTarnLiveStream* handle) {
  std::shared_ptr<Stream> stream = FindStream(handle);
  const std::lock_guard guard(lock_);
  streams_.erase(handle);
  return stream;
}

void* Library::KeepReply(Kestrel::ReferencePointer<Kestrel::Buffer> reply) {
  if (!reply->GetData()) reply->Reserve(1);  // so that an empty reply has an address of its own
  void* const bytes = reply->GetData();
  const std::lock_guard guard(lock_);
  replies_.emplace(bytes, std::move(reply));
  return bytes;
}

void Library::ReleaseReply(void* bytes) {
  Kestrel::ReferencePointer<Kestrel::Buffer> reply;
  const std::lock_guard guard(lock_);
  const auto found = replies_.find(bytes);
  if (found == replies_.end()) throw Refused(kUnknownHandle, "There is no such reply");
  std::swap(reply, found->second);
  replies_.erase(found);
}

void Library::LetGo() {
  threads_.LetGo();
}

void Library::End() {
  threads_.End([this] {
    const std::lock_guard guard(lock_);
    for (const auto& [handle, stream] : streams_) stream->Abandon();
  });
}

}  // namespace simulator
