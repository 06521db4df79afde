/// What a call throws, as "class/code text".
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "base/exceptions.h"

template <class Call>
std::string ErrorOf(Call call) {
  try {
    call();
    return "nothing";
  } catch (const Kestrel::KestrelException& error) {
    return std::to_string(error.GetErrorClass()) + "/" + std::to_string(error.GetErrorCode()) + " " + error.what();
  }
}

/// The system's own words, which differ, are left out: "2/code [ErrorCode #code] in context".
template <class Call>
std::string SystemErrorOf(Call call) {
  const std::string error = ErrorOf(call);
  const std::size_t words = error.find(' '), suffix = error.rfind(" [ErrorCode #");
  return suffix == std::string::npos ? error : error.substr(0, words) + error.substr(suffix);
}
