#include "protocol/camera_record.h"

#include <utility>

namespace Tarn::CameraFinding {
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
