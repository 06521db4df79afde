/// A camera as the wizard holds it: one record, field by field.
///
/// Text getters return a new BSTR of the member's text up to its first NUL.
///
/// Errors   No operation throws. A getter's text is null where there is no memory, and empty where the system cannot
///          convert it. A setter that fails changes nothing.
/// Threads  No lock inside: one thread at a time uses an object.
#pragma once

#include <utility>

#include "com/com_wrapper.h"
#include "protocol/camera_record.h"
#include "tarn/camera_finding.h"

namespace Tarn::CameraFinding {

class IPCFinderCameraInfo : public ICameraInfo {
 public:
  explicit IPCFinderCameraInfo(CameraRecord&& record) : record_(std::move(record)) {}

  std::int32_t GetCameraType() override;
  BSTR GetModel() override;
  BSTR GetIpAddress() override;
  BSTR GetSubnetMask() override;
  BSTR GetGateway() override;
  BSTR GetFirmwareVersion() override;
  BSTR GetModelName() override;
  BSTR GetMacAddress() override;
  BSTR GetUserName() override;
  BSTR GetPassword() override;
  std::uint8_t IsDhcpEnabled() override;
  BSTR GetPluginName() override;
  std::uint8_t HasDeviceFlag17() override;
  std::uint8_t IsReserved() override;
  void SetCredentials(const OLECHAR* user, const OLECHAR* password) override;
  void SetNetworkSettings(const OLECHAR* ipAddress, const OLECHAR* subnetMask, std::uint8_t dhcpMode,
                          const OLECHAR* gateway) override;
  std::uint32_t GetDeviceFlags() override;
  std::uint64_t GetVendorTypeMask() override;
  std::uint8_t GetIcb() override;
  std::uint8_t GetGcb() override;
  std::uint8_t GetCtt() override;
  BSTR GetVendorDisplayName() override;

 protected:
  ~IPCFinderCameraInfo() = default;

 private:
  CameraRecord record_;
};

/// A new camera object with the creator's reference. Takes an rvalue, so that the record is moved only once.
Kestrel::ComPtr<ICameraInfo> MakeCameraInfo(CameraRecord&& record);

}  // namespace Tarn::CameraFinding

template <>
inline constexpr IID Kestrel::kInterfaceId<Tarn::CameraFinding::ICameraInfo> = Tarn::CameraFinding::IID_ICameraInfo;
