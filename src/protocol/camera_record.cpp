#include "protocol/camera_record.h"

#include <array>
#include <string_view>
#include <utility>

namespace Tarn::CameraFinding {
namespace {

/// UnsetCredential as UTF-8: each code unit is one byte, because all are ASCII.
constexpr auto kUnsetCredentialUtf8 = [] {
  std::array<char, std::size(UnsetCredential)> narrow{};
  for (std::size_t i = 0; i < narrow.size(); ++i) narrow[i] = static_cast<char>(UnsetCredential[i]);
  return narrow;
}();
static_assert([] {
  for (const char16_t unit : UnsetCredential)
    if (unit > 0x7F) return false;
  return true;
}());

}  // namespace

CameraLogin::CameraLogin() : loginUser(kUnsetCredentialUtf8.data()), loginPassword(kUnsetCredentialUtf8.data()) {}

CameraLogin::CameraLogin(std::string user, std::string password, std::uint8_t cttCode)
    : loginUser(std::move(user)), loginPassword(std::move(password)), ctt(cttCode) {}

CameraProduct::CameraProduct(TextList plugins, std::string vendor, std::string modelName, std::string firmware,
                             std::string serial)
    : deviceFlags(0xFFFFFFFF),
      pluginNames(std::move(plugins)),
      vendorDisplayName(std::move(vendor)),
      model(std::move(modelName)),
      firmwareVersion(std::move(firmware)),
      serialNumber(std::move(serial)) {}

CameraRecord::CameraRecord(CameraLogin login, CameraNetwork network, CameraProduct product)
    : CameraLogin(std::move(login)), CameraNetwork(std::move(network)), CameraProduct(std::move(product)) {}

}  // namespace Tarn::CameraFinding
