#include "protocol/camera_info.h"

#include <string>
#include <utility>

#include "com/bstr.h"
#include "com/swallow_exceptions.h"
#include "protocol/camera_type.h"

namespace Tarn::CameraFinding {
namespace {

constexpr std::uint8_t kDhcpEnabled = 1;

/// Null where there is no memory.
BSTR TextForWizard(const std::string& utf8) {
  BSTR text = nullptr;
  Kestrel::SwallowExceptions([&] { text = Kestrel::MakeBstrFromUtf8(utf8); });
  return text;
}

}  // namespace

std::int32_t IPCFinderCameraInfo::GetCameraType() {
  return TypeFromVendorBit(record_.vendorTypeMask);
}

BSTR IPCFinderCameraInfo::GetModel() {
  return TextForWizard(record_.model);
}

BSTR IPCFinderCameraInfo::GetIpAddress() {
  return TextForWizard(record_.ip);
}

BSTR IPCFinderCameraInfo::GetSubnetMask() {
  return TextForWizard(record_.subnetMask);
}

BSTR IPCFinderCameraInfo::GetGateway() {
  return TextForWizard(record_.gateway);
}

BSTR IPCFinderCameraInfo::GetFirmwareVersion() {
  return TextForWizard(record_.firmwareVersion);
}

BSTR IPCFinderCameraInfo::GetModelName() {
  return TextForWizard(record_.model);
}

BSTR IPCFinderCameraInfo::GetMacAddress() {
  return TextForWizard(record_.mac);
}

BSTR IPCFinderCameraInfo::GetUserName() {
  return TextForWizard(record_.loginUser);
}

BSTR IPCFinderCameraInfo::GetPassword() {
  return TextForWizard(record_.loginPassword);
}

std::uint8_t IPCFinderCameraInfo::IsDhcpEnabled() {
  return record_.dhcpMode == kDhcpEnabled;
}

BSTR IPCFinderCameraInfo::GetPluginName() {
  return record_.pluginNames.empty() ? TextForWizard("UNKNOWN") : TextForWizard(record_.pluginNames.front());
}

std::uint8_t IPCFinderCameraInfo::HasDeviceFlag17() {
  return (record_.deviceFlags & CameraRecord::kDeviceFlag17) != 0;
}

std::uint8_t IPCFinderCameraInfo::IsReserved() {
  return 0;
}

// Both setters convert every text before they change the record, so that a failing conversion leaves it as it was.
void IPCFinderCameraInfo::SetCredentials(const OLECHAR* user, const OLECHAR* password) {
  Kestrel::SwallowExceptions([&] {
    std::string userUtf8 = Kestrel::Utf8FromNulTerminated(user);
    std::string passwordUtf8 = Kestrel::Utf8FromNulTerminated(password);
    record_.loginUser = std::move(userUtf8);
    record_.loginPassword = std::move(passwordUtf8);
  });
}

void IPCFinderCameraInfo::SetNetworkSettings(const OLECHAR* ipAddress, const OLECHAR* subnetMask, std::uint8_t dhcpMode,
                                             const OLECHAR* gateway) {
  Kestrel::SwallowExceptions([&] {
    std::string ipUtf8 = Kestrel::Utf8FromNulTerminated(ipAddress);
    std::string subnetMaskUtf8 = Kestrel::Utf8FromNulTerminated(subnetMask);
    std::string gatewayUtf8 = Kestrel::Utf8FromNulTerminated(gateway);
    record_.ip = std::move(ipUtf8);
    record_.subnetMask = std::move(subnetMaskUtf8);
    record_.dhcpMode = dhcpMode;
    record_.gateway = std::move(gatewayUtf8);
  });
}

std::uint32_t IPCFinderCameraInfo::GetDeviceFlags() {
  return record_.deviceFlags;
}

std::uint64_t IPCFinderCameraInfo::GetVendorTypeMask() {
  return record_.vendorTypeMask;
}

std::uint8_t IPCFinderCameraInfo::GetIcb() {
  return record_.icb;
}

std::uint8_t IPCFinderCameraInfo::GetGcb() {
  return record_.gcb;
}

std::uint8_t IPCFinderCameraInfo::GetCtt() {
  return record_.ctt;
}

BSTR IPCFinderCameraInfo::GetVendorDisplayName() {
  return TextForWizard(record_.vendorDisplayName);
}

Kestrel::ComPtr<ICameraInfo> MakeCameraInfo(CameraRecord&& record) {
  auto camera = Kestrel::MakeComObject<IPCFinderCameraInfo, ICameraInfo>(std::move(record));
  return Kestrel::ComPtr<ICameraInfo>::Attach(camera.Detach());
}

}  // namespace Tarn::CameraFinding
