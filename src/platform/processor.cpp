#include "platform/processor.h"

namespace platform {

bool HasAvx2() {
#ifdef TARN_X64
  return TARN_CPU_HAS_AVX2();
#else
  return false;
#endif
}

bool HasAvx512Vbmi() {
#ifdef TARN_X64
  return TARN_CPU_HAS_AVX512VBMI();
#else
  return false;
#endif
}

}  // namespace platform
