/// The built library, loaded and unloaded by each test, and a callback that keeps what is delivered.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "base/text_conversion.h"
#include "platform/modules.h"
#include "tarn/dbi.h"

namespace simulator {

using Delivered = std::pair<std::uint32_t, std::vector<std::uint8_t>>;  ///< message type, bytes

class DbiLibrary {
 public:
  /// The scenario is what the library reads from here on.
  explicit DbiLibrary(const std::string& scenario) : module_(platform::LoadLibraryExW(TARN_DBI_FILE, 0)) {
    if (!module_) throw std::runtime_error("the library cannot be loaded");
    Find(create, "TarnServer_CreateLiveStream");
    Find(open, "TarnLiveStream_Open");
    Find(start, "TarnLiveStream_Start");
    Find(setCallback, "TarnLiveStream_SetGenericDataCallback");
    Find(send, "TarnLiveStream_SendSynchDSPCommand");
    Find(releaseReference, "TarnDBI_ReleaseReference");
    Find(destroy, "TarnLiveStream_Destroy");
    Find(getLastError, "TarnDBIGetLastError");
    WriteScenario(scenario);
  }
  ~DbiLibrary() { platform::FreeLibrary(module_); }
  DbiLibrary(const DbiLibrary&) = delete;
  DbiLibrary& operator=(const DbiLibrary&) = delete;

  static void WriteScenario(const std::string& scenario) {
    const char* const path = std::getenv("TARN_SIMULATOR_SCENARIO");
    if (!path) throw std::runtime_error("run by ctest, which sets TARN_SIMULATOR_SCENARIO");
    std::ofstream(path, std::ios::binary) << scenario;
  }

  /// Created, opened and started.
  Tarn::TTarnLiveStream* StartStream() const {
    Tarn::TTarnLiveStream* stream = nullptr;
    EXPECT_TRUE(create(nullptr, &stream)) << LastError();
    const StreamOpenParameters parameters = {sizeof parameters, 0, nullptr};
    EXPECT_TRUE(open(stream, &parameters, 0, nullptr, nullptr, 0));
    EXPECT_TRUE(start(stream));
    return stream;
  }
  std::uint8_t Send(Tarn::TTarnLiveStream* stream, const std::string& sample, void** reply) const {
    std::ifstream file(TARN_TEST_DATA "/" + sample, std::ios::binary);
    const std::string request{std::istreambuf_iterator<char>(file), {}};
    std::uint32_t replySize = 0;
    return send(stream, request.data(), static_cast<std::uint32_t>(request.size()), reply, &replySize);
  }
  /// Description of the calling thread's last failure, UTF-8; "none" without one.
  std::string LastError() const {
    DBIErrorRecord record{};
    return getLastError(&record) ? Kestrel::WideToUtf8(record.description) : "none";
  }

  decltype(&TarnServer_CreateLiveStream) create;
  decltype(&TarnLiveStream_Open) open;
  decltype(&TarnLiveStream_Start) start;
  decltype(&TarnLiveStream_SetGenericDataCallback) setCallback;
  decltype(&TarnLiveStream_SendSynchDSPCommand) send;
  decltype(&TarnDBI_ReleaseReference) releaseReference;
  decltype(&TarnLiveStream_Destroy) destroy;
  decltype(&TarnDBIGetLastError) getLastError;

 private:
  template <class Function>
  void Find(Function*& function, const char* name) const {
    function = reinterpret_cast<Function*>(platform::GetProcAddress(module_, name));
  }

  platform::ModuleHandle module_;
};

class Receiver : public IGenericDataReceivedCallback {
 public:
  HRESULT QueryInterface(const IID&, void**) override { return E_NOINTERFACE; }
  std::uint32_t AddRef() override { return Count(1); }
  std::uint32_t Release() override { return Count(-1); }
  void OnGenericData(std::int32_t blockKind, std::uint32_t messageType, const std::uint8_t* data,
                     std::uint64_t size) override {
    EXPECT_EQ(blockKind, 2);
    if (onBlock) onBlock();
    const std::lock_guard guard(lock_);
    blocks_.emplace_back(messageType, std::vector<std::uint8_t>(data, data + size));
    changed_.notify_all();
  }
  void OnDetach() override { ++detached; }

  /// The blocks so far, when there are count of them or half a minute is over.
  std::vector<Delivered> WaitForBlocks(std::size_t count) {
    std::unique_lock guard(lock_);
    changed_.wait_for(guard, std::chrono::seconds(30), [&] { return blocks_.size() >= count; });
    return blocks_;
  }
  /// Whether nobody holds a reference, within half a minute.
  bool WaitUntilReleased() {
    std::unique_lock guard(lock_);
    return changed_.wait_for(guard, std::chrono::seconds(30), [&] { return references_ == 0; });
  }

  int References() {
    const std::lock_guard guard(lock_);
    return references_;
  }

  std::function<void()> onBlock;  ///< runs inside each delivery
  std::atomic<int> detached{0};

 private:
  std::uint32_t Count(int by) {
    const std::lock_guard guard(lock_);
    references_ += by;
    changed_.notify_all();
    return static_cast<std::uint32_t>(references_);
  }

  std::mutex lock_;
  std::condition_variable changed_;
  std::vector<Delivered> blocks_;
  int references_ = 0;
};

}  // namespace simulator
