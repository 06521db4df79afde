/// A module whose loading takes as long as the test wants.
#include "wizard/scripted_dbi.h"

namespace {

const struct AtLoad {
  AtLoad() { GetScriptedDbi()->insideLoad(); }
} atLoad;

}  // namespace
