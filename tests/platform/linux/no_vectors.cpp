#include "platform/processor.h"

bool platform::HasAvx2() {
  return false;
}
