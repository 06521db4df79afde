/// The callbacks that the platform library gets in place of the finder's: each records a block and hands it on.
///
/// A registration is found again by its stream and the finder's own pointer, so that the platform library is given the
/// same object to unregister. It holds a reference on that object until it is unregistered or its stream is destroyed;
/// the object holds one on the finder's callback.
///
/// Threads  Everything may be called on any thread. Nothing is released while the lock is held.
#pragma once

#include <memory>

#include "base/critical_section.h"
#include "capture/format.h"
#include "com/com_ptr.h"
#include "com/com_wrapper.h"
#include "dbi/dbi.h"
#include "protocol/block_receiver.h"

namespace recorder {

class Recording;

class RecordedCallback : public IGenericDataReceivedCallback {
 public:
  RecordedCallback(Recording& recording, Tarn::TTarnLiveStream* stream, IGenericDataReceivedCallback* callback);

  void OnGenericData(std::int32_t blockKind, std::uint32_t messageType, const std::uint8_t* data,
                     std::uint64_t size) override;
  void OnDetach() override;

 protected:
  ~RecordedCallback() = default;

 private:
  capture::FrameHeader HeaderOf(capture::FrameEvent event) const;

  Recording& recording_;  ///< never destroyed
  Tarn::TTarnLiveStream* const stream_;
  const Kestrel::ComPtr<IGenericDataReceivedCallback> callback_;
};

struct Registration {
  Tarn::TTarnLiveStream* stream;
  IGenericDataReceivedCallback* callback;  ///< the finder's own
  Kestrel::ComPtr<Kestrel::ComWrapper<RecordedCallback, IGenericDataReceivedCallback>> recorded;
  std::unique_ptr<Registration> older;

  /// Whether somebody else holds the recorded callback: the platform library has kept it.
  bool IsKept() const {
    recorded->AddRef();
    return recorded->Release() > 1;
  }
};

class RecordedCallbacks {
 public:
  /// For a callback that is to be registered. Null for no callback, and where there is no memory.
  static std::unique_ptr<Registration> Wrap(Recording& recording, Tarn::TTarnLiveStream* stream,
                                            IGenericDataReceivedCallback* callback) noexcept;
  void Keep(std::unique_ptr<Registration> registration) noexcept;
  /// Takes out the newest one that matches; callback null stands for any. Null where none does.
  std::unique_ptr<Registration> Take(Tarn::TTarnLiveStream* stream, IGenericDataReceivedCallback* callback) noexcept;

 private:
  Kestrel::CriticalSection lock_;
  std::unique_ptr<Registration> newest_;
};

}  // namespace recorder
