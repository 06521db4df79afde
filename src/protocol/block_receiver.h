/// The receiver: the COM object that the platform library calls with each pushed block. It copies the block and has a
/// worker parse it (block_parser.h) while the platform library's thread waits.
#pragma once

#include <cstdint>
#include <memory>

#include "base/critical_section.h"
#include "com/com_wrapper.h"
#include "dbi/dbi.h"
#include "protocol/block_parser.h"
#include "tarn/camera_finding.h"

namespace Tarn::CameraFinding {

/// Threads  OnGenericData and OnDetach may be called on any threads at once.
/// Locks    lock_ is held while OnGenericData reads newCameraDataCallback_, calls its AddRef and copies the block, and
///          while OnDetach clears it. Nobody holds it while another function of the wizard, Release included, is called
///          or waited for.
class CameraDataInternalCallback : public IGenericDataReceivedCallback {
 public:
  /// Takes a reference of its own on callback, which may be null: then every block is dropped. `held` is released when
  /// the receiver is destroyed, so that its maker can tell whether the receiver still lives.
  explicit CameraDataInternalCallback(INewCameraDataCallback* callback, std::shared_ptr<const void> held = nullptr);

  /// Returns when the block has been parsed and the wizard's call has returned. Throws std::bad_alloc or
  /// OutOfMemoryException where there is no memory for the copy, std::bad_alloc where there is no worker; never what
  /// the parser or the wizard throws.
  void OnGenericData(std::int32_t blockKind, std::uint32_t messageType, const std::uint8_t* data,
                     std::uint64_t size) override;
  /// Releases the wizard's callback. Blocks that arrive later are dropped.
  void OnDetach() override;

 protected:
  ~CameraDataInternalCallback();

 private:
  Kestrel::CriticalSection lock_;
  CurrentWizard newCameraDataCallback_;  ///< one reference owned
  const std::shared_ptr<const void> held_;
};

using CameraDataReceiver = Kestrel::ComWrapper<CameraDataInternalCallback, IGenericDataReceivedCallback>;

}  // namespace Tarn::CameraFinding

template <>
inline constexpr IID Kestrel::kInterfaceId<IGenericDataReceivedCallback> = IID_IGenericDataReceivedCallback;
