/// Camera type codes: by vendor mask, or by plug-in name.
#pragma once

#include <cstdint>
#include <string>

#include "tarn/camera_finding.h"

namespace Tarn::CameraFinding {

/// The code of a vendor mask "CVT", by the whole value; 0 for any value that is not in the table.
CameraTypeCode TypeFromVendorBit(std::uint64_t mask);
/// The code of a plug-in type name, compared exactly; the name is in the system code page. 0 for any other name. Throws
/// SystemException where the system cannot convert the name.
CameraTypeCode TypeFromPluginName(std::string name);

}  // namespace Tarn::CameraFinding
