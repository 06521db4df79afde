/// Keeps the library loaded while a receiver of one finder lives.
///
/// A wizard may unload the library as soon as it has released the finder, also in the middle of a delivery. The library
/// cannot wait for that delivery, because the wizard's callback may need the loader's lock, which is held during an
/// unload. It cannot ask to stay loaded at that moment either, because that takes the same lock, and the wizard may
/// hold it while it waits for the callback. So the finder takes a reference on the library before its first receiver,
/// and gives it back at its end if no receiver is left and its own Release ended each of them. Otherwise the reference
/// stays, and the library with it, so that the threads inside find their code: also one that ends the receiver itself
/// and has yet to return.
///
/// Threads  One thread at a time uses a hold; receivers may end on any thread meanwhile.
#pragma once

#include <memory>

#include "platform/modules.h"

namespace Tarn::CameraFinding {

class ModuleHold {
 public:
  ModuleHold() = default;
  /// Takes the loader's lock only where it gives the reference back.
  ~ModuleHold();
  ModuleHold(const ModuleHold&) = delete;
  ModuleHold& operator=(const ModuleHold&) = delete;

  /// What the next receiver holds until its own end. The first call takes the loader's lock.
  std::shared_ptr<const void> ForReceiver();
  /// The finder has released a receiver. byFinder: that was the last reference. One that ended elsewhere counts for
  /// good, because its thread may still be on the way out.
  void ReceiverReleased(bool byFinder) { endedByFinder_ = endedByFinder_ && byFinder; }

 private:
  platform::ModuleHandle module_ = nullptr;
  std::shared_ptr<const void> receivers_;  ///< shared with every receiver that lives
  bool endedByFinder_ = true;
};

}  // namespace Tarn::CameraFinding
