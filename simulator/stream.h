/// One live stream: a world, the registered callback, and the thread that delivers blocks to it.
///
/// The thread starts with the first registration. It shares the ownership of the stream and, during a delivery, of the
/// registration. It takes both the block and the registration under the lock and delivers without the lock. So
/// Register, Unregister and Destroy never wait for a delivery and may be called from inside one. A delivery that has
/// begun completes; no other begins after Destroy.
///
///     thread     lock { wait until due; take block and registration }  OnGenericData  release share
///     Destroy    lock { end; take registration }                       OnDetach       release share
///
/// Each registration holds one reference on its callback; the last owner of the registration releases it. Events wait
/// while no callback is registered. A new registration replaces the one before.
///
/// Threads  Every operation may be called on any thread.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>

#include "dbi/dbi.h"
#include "simulator/platform/threads.h"
#include "simulator/recorded_conversation.h"
#include "simulator/scenario.h"
#include "simulator/world.h"
#include "valuelist/buffer.h"

namespace simulator {

class Stream : public std::enable_shared_from_this<Stream> {
 public:
  /// threads must outlive every stream that has had a registration.
  /// number: how many streams were created before; a capture has its own events for each.
  Stream(std::shared_ptr<const Scenario> scenario, ThreadGroup& threads, std::size_t number = 0);
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  void Register(IGenericDataReceivedCallback& callback);
  /// Does nothing where another callback is registered, because that one has replaced this one.
  void Unregister(IGenericDataReceivedCallback& callback);
  /// Answers a request. Throws Refused, and what Kestrel::ValueList throws, for a malformed request.
  Kestrel::ReferencePointer<Kestrel::Buffer> Send(std::span<const std::uint8_t> request);
  /// Ends the deliveries and detaches the callback.
  void Destroy();
  /// Ends the deliveries when the library is unloaded. Does not call the callback, because the callback's module may
  /// have been unloaded before.
  void Abandon();

 private:
  class Registration;

  void DeliverBlocks();
  /// False when the stream has ended.
  bool WaitForBlock(std::unique_lock<std::mutex>& guard);

  const std::shared_ptr<const Scenario> scenario_;
  ThreadGroup& threads_;

  std::mutex lock_;
  std::condition_variable changed_;
  World world_;
  std::optional<CommandReplay> replay_;
  std::shared_ptr<Registration> registration_;
  bool threadStarted_ = false;
  bool ended_ = false;
};

}  // namespace simulator
