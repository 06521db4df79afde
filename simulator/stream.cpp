#include "simulator/stream.h"

#include <atomic>
#include <utility>

#include "protocol/block_format.h"
#include "protocol/request_wire.h"
#include "simulator/commands.h"
#include "simulator/faults.h"
#include "valuelist/buffer_pool.h"

namespace simulator {

/// A callback, and one reference on it.
class Stream::Registration {
 public:
  explicit Registration(IGenericDataReceivedCallback& callback) : callback_(&callback) { callback.AddRef(); }
  ~Registration() {
    if (!abandoned_.load()) callback_->Release();
  }
  Registration(const Registration&) = delete;
  Registration& operator=(const Registration&) = delete;

  IGenericDataReceivedCallback* Get() const { return callback_; }
  /// The destructor will not release the reference.
  void Abandon() { abandoned_.store(true); }

 private:
  IGenericDataReceivedCallback* const callback_;
  std::atomic<bool> abandoned_{false};
};

Stream::Stream(std::shared_ptr<const Scenario> scenario, ThreadGroup& threads, std::size_t number)
    : scenario_(std::move(scenario)), threads_(threads), world_(scenario_, number) {
  if (scenario_->recording) replay_.emplace(*scenario_->recording, number);
}

void Stream::Register(IGenericDataReceivedCallback& callback) {
  // Declared before the lock, so that the registration that is replaced is released after the lock.
  auto registration = std::make_shared<Registration>(callback);
  {
    const std::lock_guard guard(lock_);
    if (!threadStarted_) {
      threads_.Start([self = shared_from_this()] { self->DeliverBlocks(); });
      threadStarted_ = true;
      world_.StartTimeline();
    }
    std::swap(registration_, registration);
  }
  changed_.notify_all();
}

void Stream::Unregister(IGenericDataReceivedCallback& callback) {
  std::shared_ptr<Registration> registration;
  const std::lock_guard guard(lock_);
  if (!registration_ || registration_->Get() != &callback) return;
  std::swap(registration_, registration);
  world_.DropPushes();
}

Kestrel::ReferencePointer<Kestrel::Buffer> Stream::Send(std::span<const std::uint8_t> request) {
  if (replay_) {
    const std::lock_guard guard(lock_);
    const std::vector<std::uint8_t> reply = replay_->Answer(request);
    return Kestrel::CreateBuffer(reply.data(), reply.size());
  }
  Kestrel::ValueList command;
  Tarn::CameraFinding::DecodeRequest(request, command);
  Answer answer;
  {
    const std::lock_guard guard(lock_);
    answer = ExecuteCommand(command, world_);
    if (!registration_) world_.DropPushes();
  }
  changed_.notify_all();
  return Tarn::CameraFinding::EncodeReply(ReplyOf(answer));
}

void Stream::Destroy() {
  std::shared_ptr<Registration> registration;
  {
    const std::lock_guard guard(lock_);
    ended_ = true;
    std::swap(registration_, registration);
  }
  changed_.notify_all();
  if (registration) registration->Get()->OnDetach();
}

void Stream::Abandon() {
  {
    const std::lock_guard guard(lock_);
    ended_ = true;
    if (registration_) registration_->Abandon();
  }
  changed_.notify_all();
}

bool Stream::WaitForBlock(std::unique_lock<std::mutex>& guard) {
  while (!ended_) {
    const auto due = registration_ ? world_.NextBlockTime() : std::nullopt;
    if (!due) {
      changed_.wait(guard);
    } else if (*due > World::Clock::now()) {
      changed_.wait_until(guard, *due);
    } else {
      return true;
    }
  }
  return false;
}

void Stream::DeliverBlocks() {
  for (std::uint64_t number = 1;; ++number) {
    Block block;
    std::shared_ptr<Registration> registration;
    {
      std::unique_lock guard(lock_);
      if (!WaitForBlock(guard)) return;
      block = world_.TakeBlock();
      const std::uint64_t delayMs = ApplyBlockFaults(*scenario_, number, block.bytes);
      if (delayMs > 0) changed_.wait_for(guard, scenario_->Scaled(delayMs), [this] { return ended_; });
      if (ended_) return;
      registration = registration_;
    }
    // The callback was unregistered during the delay: the block is lost, like one that is still on the network.
    if (!registration) continue;
    try {
      registration->Get()->OnGenericData(Tarn::CameraFinding::kFinderBlockKind, block.type, block.bytes.data(),
                                         block.bytes.size());
    } catch (...) {  // this block is lost, for lack of memory for example; the next one may succeed
    }
  }
}

}  // namespace simulator
