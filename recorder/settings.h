/// What is recorded, and where to.
#pragma once

#include <string>

namespace recorder {

struct Settings {
  std::u16string file;  ///< empty: nothing is recorded
  bool secrets = false;
};

/// TARN_CAPTURE and TARN_CAPTURE_SECRETS, each replaced by the values "File" and "Secrets" of the key
/// Software\Vantrell\Tarn\Capture below HKEY_LOCAL_MACHINE where it is not set. Secrets are kept for "1", or a number
/// other than 0.
Settings ReadSettings();

}  // namespace recorder
