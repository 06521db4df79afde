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
#include <string>
#include <utility>
#include <vector>

#include "base/text_conversion.h"
#include "platform/modules.h"
#include "dbi/dbi.h"

namespace simulator {

using Delivered = std::pair<std::uint32_t, std::vector<std::uint8_t>>;  ///< message type, bytes

class DbiLibrary {
  struct Found {
    void* address;
    template <class Function>
    operator Function*() const {
      return reinterpret_cast<Function*>(address);
    }
  };
  Found Find(const char* name) const { return {platform::GetProcAddress(module_, name)}; }

  const platform::ModuleHandle module_ = platform::LoadLibraryExW(TARN_DBI_FILE, 0);

 public:
  /// The scenario is what the library reads from here on.
  explicit DbiLibrary(const std::string& scenario) { WriteScenario(scenario); }
  ~DbiLibrary() { platform::FreeLibrary(module_); }

  /// Where ctest says.
  static void WriteScenario(const std::string& scenario) {
    std::ofstream(std::getenv("TARN_SIMULATOR_SCENARIO"), std::ios::binary) << scenario;
  }
  /// Created, opened and started; with a receiver registered too.
  Tarn::TTarnLiveStream* StartStream(IGenericDataReceivedCallback* receiver = nullptr) const {
    Tarn::TTarnLiveStream* stream = nullptr;
    EXPECT_TRUE(create(nullptr, &stream)) << LastError();
    const StreamOpenParameters parameters = {sizeof parameters, 0, nullptr};
    EXPECT_TRUE(open(stream, &parameters, 0, nullptr, nullptr, 0));
    EXPECT_TRUE(start(stream));
    if (receiver) {
      EXPECT_TRUE(setCallback(stream, kRegisterDataCallback, receiver));
    }
    return stream;
  }
  std::uint8_t Send(Tarn::TTarnLiveStream* stream, const std::string& sample, void** reply) const {
    std::ifstream file(TARN_TEST_DATA "/" + sample, std::ios::binary);
    const std::string request{std::istreambuf_iterator<char>(file), {}};
    std::uint32_t replySize = 0;
    return send(stream, request.data(), static_cast<std::uint32_t>(request.size()), reply, &replySize);
  }
  void SendAndRelease(Tarn::TTarnLiveStream* stream, const std::string& sample) const {
    void* reply = nullptr;
    EXPECT_TRUE(Send(stream, sample, &reply));
    EXPECT_TRUE(releaseReference(reply));
  }
  /// Description of the calling thread's last failure, UTF-8; "none" without one.
  std::string LastError() const {
    DBIErrorRecord record{};
    return getLastError(&record) ? Kestrel::WideToUtf8(record.description) : "none";
  }

  decltype(&TarnServer_CreateLiveStream) create = Find("TarnServer_CreateLiveStream");
  decltype(&TarnLiveStream_Open) open = Find("TarnLiveStream_Open");
  decltype(&TarnLiveStream_Start) start = Find("TarnLiveStream_Start");
  decltype(&TarnLiveStream_SetGenericDataCallback) setCallback = Find("TarnLiveStream_SetGenericDataCallback");
  decltype(&TarnLiveStream_SendSynchDSPCommand) send = Find("TarnLiveStream_SendSynchDSPCommand");
  decltype(&TarnDBI_ReleaseReference) releaseReference = Find("TarnDBI_ReleaseReference");
  decltype(&TarnLiveStream_Destroy) destroy = Find("TarnLiveStream_Destroy");
  decltype(&TarnDBIGetLastError) getLastError = Find("TarnDBIGetLastError");
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
  /// Whether only so many references are left, within half a minute.
  bool WaitForReferences(int references) {
    std::unique_lock guard(lock_);
    return changed_.wait_for(guard, std::chrono::seconds(30), [&] { return references_ == references; });
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
