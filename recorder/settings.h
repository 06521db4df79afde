/// What is recorded, and where to.
#pragma once

#include <string>

namespace recorder {

struct Settings {
  std::u16string file;   ///< empty: nothing is recorded
  bool secrets = false;  ///< credentials are recorded as they are
};

/// From TARN_CAPTURE and TARN_CAPTURE_SECRETS. Where a variable is not set, from the value "File" or "Secrets" of the
/// key Software\Vantrell\Tarn\Capture below HKEY_LOCAL_MACHINE. The variable keeps secrets where it is "1", the
/// registry where the number is not 0.
Settings ReadSettings();

}  // namespace recorder
