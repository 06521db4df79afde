/// The registration of a wizard's callback on the finder's stream.
#pragma once

#include <memory>

#include "com/com_ptr.h"
#include "finder/live_stream.h"
#include "finder/module_hold.h"
#include "protocol/block_receiver.h"
#include "tarn/camera_finding.h"

namespace Tarn::CameraFinding {

/// Makes a receiver and registers it; unregisters it in its destructor.
class CameraDataCallback {
 public:
  using CameraDataInternalCallback = CameraFinding::CameraDataInternalCallback;

  /// callback may be null: then every block is dropped. moduleHold must outlive the object. Throws DBIException where
  /// registering fails; nothing is left to unregister then.
  CameraDataCallback(INewCameraDataCallback* callback, std::shared_ptr<LiveStreamInfo> streamInfo,
                     ModuleHold& moduleHold);
  /// Unregisters the receiver, then lets the stream go, then the receiver. A failing unregistration ends the process.
  ~CameraDataCallback();
  CameraDataCallback(const CameraDataCallback&) = delete;
  CameraDataCallback& operator=(const CameraDataCallback&) = delete;

 private:
  ModuleHold& moduleHold_;
  Kestrel::ComPtr<CameraDataReceiver> receiver_;
  std::shared_ptr<LiveStreamInfo> streamInfo_;
};

}  // namespace Tarn::CameraFinding
