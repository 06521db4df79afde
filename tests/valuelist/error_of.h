/// What an action throws, as one text.
#pragma once

#include <string>

#include "base/exceptions.h"

/// "<class>: <description>", the class without its outer namespace; empty where the action ends well.
template <class Action>
std::string ErrorOf(Action action) try {
  action();
  return {};
} catch (const Kestrel::KestrelException& error) {
  return error.GetClassName().substr(sizeof "class Kestrel::" - 1) + ": " + error.what();
}

inline constexpr char kTooFewBytes[] = "BufferException: read failed - not enough bytes in buffer";
