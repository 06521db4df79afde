/// What the library asks of the processor.
#pragma once

#include "platform/compiler.h"

namespace platform {

/// True where the processor and the system have 256-bit integer vectors, and 512-bit ones that look up bytes. Cheap
/// enough to be asked before each use. Thread-safe, at load too. The two stand alone in their file, so that a test
/// program can replace them to test the code for other processors.
bool HasAvx2();
bool HasAvx512Vbmi();

/// For the body of a loop that spins: leaves the core to its other hardware thread for a moment.
inline void PauseInSpin() {
#ifdef TARN_X64
  TARN_CPU_PAUSE();
#endif
}

}  // namespace platform
