#include "platform/processor.h"

bool platform::HasAvx2() {
  return false;
}
bool platform::HasAvx512Vbmi() {
  return false;
}
