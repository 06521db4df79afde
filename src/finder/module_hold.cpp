#include "finder/module_hold.h"

namespace Tarn::CameraFinding {

ModuleHold::~ModuleHold() {
  if (module_ && endedByFinder_ && receivers_.use_count() == 1) platform::FreeLibrary(module_);
}

std::shared_ptr<const void> ModuleHold::ForReceiver() {
  if (!receivers_) {
    receivers_ = std::make_shared<char>();
    module_ = platform::ReferenceThisModule();
  }
  return receivers_;
}

}  // namespace Tarn::CameraFinding
