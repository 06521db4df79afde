/// What the library asks of the processor.
#pragma once

#include "platform/compiler.h"

namespace platform {

/// True where the processor and the system have 256-bit integer vectors. Cheap enough to be asked before each use.
/// Thread-safe, at load too. Stands alone in its file, so that a test program can replace it to test the portable code.
bool HasAvx2();

/// For the body of a loop that spins: leaves the core to its other hardware thread for a moment.
inline void PauseInSpin() {
#ifdef TARN_X64
  TARN_CPU_PAUSE();
#endif
}

}  // namespace platform
