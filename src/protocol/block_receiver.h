/// The registration of a wizard's callback on the finder's stream, and the receiver that the platform library calls.
///
/// CameraDataCallback is the registration: it registers its receiver when it is made and unregisters it when it is
/// destroyed. Those two calls go through the channel, so they are implemented in finder/camera_data_callback.cpp; the
/// receiver is implemented here.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "base/critical_section.h"
#include "com/com_ptr.h"
#include "com/com_wrapper.h"
#include "tarn/camera_finding.h"
#include "dbi/dbi.h"

namespace Tarn::CameraFinding {

struct LiveStreamInfo;

class CameraDataCallback {
 public:
  /// Receives blocks on the platform library's delivery threads and hands each to a worker (camera_delivery.h) while
  /// the delivery thread waits.
  ///
  /// Lock  lock_ guards newCameraDataCallback_ while OnGenericData reads and references it and while OnDetach clears
  /// it.
  ///       It is never held while the wizard is called, released or waited for.
  class CameraDataInternalCallback : public IGenericDataReceivedCallback {
   public:
    /// Takes its own reference on callback, which may be null: blocks are dropped then.
    explicit CameraDataInternalCallback(INewCameraDataCallback* callback);

    void OnGenericData(std::int32_t blockKind, std::uint32_t messageType, const std::uint8_t* data,
                       std::uint64_t size) override;
    void OnDetach() override;

    /// The wizard's callback at this moment, for a call from a task that holds a reference of its own; may be null.
    INewCameraDataCallback* GetNewCameraDataCallback() const { return newCameraDataCallback_.load(); }

   protected:
    ~CameraDataInternalCallback();

   private:
    Kestrel::CriticalSection lock_;
    std::atomic<INewCameraDataCallback*> newCameraDataCallback_;  ///< one reference owned
  };

  using Wrapper = Kestrel::ComWrapper<CameraDataInternalCallback, IGenericDataReceivedCallback>;

  /// Makes the receiver and registers it. Throws DBIException where that fails; nothing is unregistered then.
  CameraDataCallback(INewCameraDataCallback* callback, std::shared_ptr<LiveStreamInfo> streamInfo);
  /// Unregisters the receiver, then lets the stream go, then the receiver. A failing unregistration ends the process.
  ~CameraDataCallback();
  CameraDataCallback(const CameraDataCallback&) = delete;
  CameraDataCallback& operator=(const CameraDataCallback&) = delete;

 private:
  Kestrel::ComPtr<Wrapper> wrapper_;
  std::shared_ptr<LiveStreamInfo> streamInfo_;
};

}  // namespace Tarn::CameraFinding

template <>
inline constexpr IID Kestrel::kInterfaceId<IGenericDataReceivedCallback> = IID_IGenericDataReceivedCallback;
