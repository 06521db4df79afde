/// One live stream: a world, the callback that hears of it, and the thread that delivers.
///
/// The thread starts with the first registration and has its own share of the stream. It takes a block and a share of
/// the registration under the lock and delivers with no lock held, so registering, unregistering and Destroy never wait
/// for a delivery and may be called from inside one. A block in flight completes; none is delivered after that.
///
///     thread     lock { wait until due; take block and registration }  OnGenericData  release share
///     Destroy    lock { end; take registration }                       OnDetach       release share
///
/// The callback is referenced once per registration and released by whoever lets go of the last share. While no
/// callback is registered events wait; a new registration takes the place of the one before.
///
/// Everything may be called on any thread.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>

#include "simulator/platform/threads.h"
#include "simulator/scenario.h"
#include "simulator/world.h"
#include "dbi/dbi.h"
#include "valuelist/buffer.h"

namespace simulator {

class Stream : public std::enable_shared_from_this<Stream> {
 public:
  /// threads must outlive every stream that has had a registration.
  Stream(std::shared_ptr<const Scenario> scenario, ThreadGroup& threads);
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  void Register(IGenericDataReceivedCallback& callback);
  /// Does nothing for a callback that is not the registered one: it was replaced.
  void Unregister(IGenericDataReceivedCallback& callback);
  /// Answers a request. Throws Refused and what the message code throws for a malformed one.
  Kestrel::ReferencePointer<Kestrel::Buffer> Send(std::span<const std::uint8_t> request);
  /// Ends the deliveries and detaches the callback.
  void Destroy();
  /// Ends the deliveries when the library goes: the callback's own module may have gone before, so it is not called.
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
  std::shared_ptr<Registration> registration_;
  bool threadStarted_ = false;
  bool ended_ = false;
};

}  // namespace simulator
