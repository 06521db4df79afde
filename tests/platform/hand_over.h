#pragma once

#include <functional>

#include "platform/threads.h"

inline bool HandOver(std::function<void()> work) {
  return platform::RunOnWorkerAndWait([](void* context) { (*static_cast<std::function<void()>*>(context))(); }, &work);
}
