#include "platform/processor.h"

bool platform::HasAvx2() {
#ifdef TARN_X64
  return TARN_CPU_HAS_AVX2();
#else
  return false;
#endif
}

bool platform::HasAvx512Vbmi() {
  return false;
}
