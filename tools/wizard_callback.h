/// The wizard's side of the library's callback: copies what arrives into the queue.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "tarn/camera_finding.h"
#include "tools/event_queue.h"
#include "tools/picture_store.h"

namespace tarnfind {

/// Called on worker threads. The thread that delivers waits, so that a slow disk slows the server down instead of
/// filling the memory with pictures. Begins with one reference, the creator's. When the last one is released, no
/// delivery is under way any more, and the queue is finished.
class WizardCallback final : public Tarn::CameraFinding::INewCameraDataCallback {
 public:
  /// pictures: null where none are kept.
  WizardCallback(std::shared_ptr<EventQueue> queue, std::shared_ptr<PictureStore> pictures);

  HRESULT QueryInterface(const IID& id, void** object) override;
  std::uint32_t AddRef() override;
  std::uint32_t Release() override;
  /// Whether the library holds it. Requires that the caller holds one reference.
  bool HasOtherOwners() const { return references_ > 1; }
  HRESULT PictureReceived(const std::uint8_t* picture, std::uint64_t byteCount, BSTR cameraText) override;
  HRESULT ValuesReceived(BSTR cameraText, const std::uint64_t* values, std::uint64_t valueCount) override;
  HRESULT CameraInfoReceived(std::uint32_t eventKind, Tarn::CameraFinding::ICameraInfo* camera,
                             std::int32_t cameraType) override;

 private:
  ~WizardCallback();

  std::atomic<std::uint32_t> references_ = 1;
  std::shared_ptr<EventQueue> queue_;
  std::shared_ptr<PictureStore> pictures_;
};

}  // namespace tarnfind
