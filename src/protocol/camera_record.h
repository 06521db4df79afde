/// One camera as the server-side finder describes it, in three parts.
///
/// Texts are UTF-8, except that the parser of a block keeps the texts of single chunks in the system code page. Copies
/// are deep. record_format.h shows the form on the wire.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "protocol/text_list.h"
#include "tarn/camera_finding.h"

namespace Tarn::CameraFinding {

/// UnsetCredential as UTF-8.
inline constexpr std::string_view kUnsetCredentialUtf8 = "&!*KVMR*9%";
static_assert(std::ranges::equal(kUnsetCredentialUtf8, std::u16string_view(UnsetCredential)));

struct CameraLogin {
  CameraLogin() : loginUser(kUnsetCredentialUtf8), loginPassword(kUnsetCredentialUtf8) {}
  CameraLogin(std::string user, std::string password, std::uint8_t cttCode);

  std::string loginUser;      ///< "LUN"; UnsetCredential by default
  std::string loginPassword;  ///< "LPD"; UnsetCredential by default
  std::uint8_t ctt = 2;       ///< "CTT"
};

struct CameraNetwork {
  std::string mac;            ///< "MAC"; a block whose camera has none is not delivered
  std::string nip;            ///< "NIP"
  TextList ni2;               ///< "NI2"
  std::string ip;             ///< "IP"
  std::string subnetMask;     ///< "SIP"
  std::string gateway;        ///< "GIP"
  std::uint8_t dhcpMode = 1;  ///< "DHC"; 1 means DHCP
  bool icb = false;           ///< "ICB"
  bool gcb = false;           ///< "GCB"
  bool rbl = false;           ///< "RBL"
  bool pcl = false;           ///< "PCL"
};

struct CameraProduct {
  CameraProduct() = default;
  /// Sets deviceFlags to 0xFFFFFFFF and vendorTypeMask to 0.
  CameraProduct(TextList plugins, std::string vendor, std::string modelName, std::string firmware, std::string serial);

  std::uint32_t deviceFlags = 0;     ///< "DCV"
  std::uint64_t vendorTypeMask = 0;  ///< "CVT"
  TextList pluginNames;              ///< "PLN"
  std::string vendorDisplayName;     ///< "PDN"
  std::string model;                 ///< "MDL"
  std::string firmwareVersion;       ///< "FVN"
  std::string serialNumber;          ///< "SER"
};

struct CameraRecord : CameraLogin, CameraNetwork, CameraProduct {
  static constexpr std::uint32_t kDeviceFlag17 = 0x20000;

  /// Not defaulted, because a value-initialised record would be filled with zeros before its members are made.
  CameraRecord() {}
  CameraRecord(CameraLogin login, CameraNetwork network, CameraProduct product);
};

/// Payload of command 14.
struct NetworkCommand : CameraRecord {
  std::uint32_t networkCommandType = 0;  ///< "SetNetworkCommandType"; 1 or 4
};

}  // namespace Tarn::CameraFinding
