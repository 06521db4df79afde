#include "tools/wizard_callback.h"

#include <utility>

#include "base/crc32.h"
#include "tools/text.h"

namespace tarnfind {

WizardCallback::WizardCallback(std::shared_ptr<EventQueue> queue, std::shared_ptr<PictureStore> pictures)
    : queue_(std::move(queue)), pictures_(std::move(pictures)) {}

WizardCallback::~WizardCallback() {
  queue_->Finish();
}

HRESULT WizardCallback::QueryInterface(const IID& id, void** object) {
  if (!object) return E_POINTER;
  *object = nullptr;
  if (!(id == IID_IUnknown)) return E_NOINTERFACE;
  *object = static_cast<IUnknown*>(this);
  AddRef();
  return S_OK;
}

std::uint32_t WizardCallback::AddRef() {
  return ++references_;
}

std::uint32_t WizardCallback::Release() {
  const std::uint32_t left = --references_;
  if (left == 0) delete this;
  return left;
}

HRESULT WizardCallback::PictureReceived(const std::uint8_t* picture, std::uint64_t byteCount, BSTR cameraText) {
  PictureEvent event;
  event.camera = TakeBstr(cameraText);
  event.bytes = byteCount;
  const std::span<const std::uint8_t> bytes(picture, static_cast<std::size_t>(byteCount));
  event.crc32 = Kestrel::Crc32(bytes);
  if (pictures_) {
    PictureStore::Kept kept = pictures_->Keep(bytes, event.camera);
    event.file = std::move(kept.file);
    event.error = std::move(kept.error);
  }
  queue_->Push(std::move(event));
  return S_OK;
}

HRESULT WizardCallback::ValuesReceived(BSTR cameraText, const std::uint64_t* values, std::uint64_t valueCount) {
  ValuesEvent event;
  event.camera = TakeBstr(cameraText);
  event.values.assign(values, values + valueCount);
  queue_->Push(std::move(event));
  return S_OK;
}

HRESULT WizardCallback::CameraInfoReceived(std::uint32_t eventKind, Tarn::CameraFinding::ICameraInfo* camera,
                                           std::int32_t cameraType) {
  queue_->Push(CameraEvent{eventKind, cameraType, SnapshotOf(*camera)});
  return S_OK;
}

}  // namespace tarnfind
