#include "platform/processor.h"

#include "platform/compiler.h"

namespace platform {

bool HasAvx2() {
#ifdef TARN_X64
  return __builtin_cpu_supports("avx2") != 0;
#else
  return false;
#endif
}

}  // namespace platform
