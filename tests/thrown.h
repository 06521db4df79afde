/// What a call throws, as one text.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "base/exceptions.h"

/// "<class>: <description>", the class without its outer namespace and followed by the error code where that is not 0:
/// "EKestrelDateTime 13: …". Empty where the call ends well.
template <class Call>
std::string ErrorOf(Call call) {
  try {
    call();
    return {};
  } catch (const Kestrel::KestrelException& error) {
    std::string text = error.GetClassName();
    if (text.starts_with("class Kestrel::")) text.erase(0, text.find("::") + 2);
    if (error.GetErrorCode() != 0) text += " " + std::to_string(error.GetErrorCode());
    return text + ": " + error.what();
  }
}

/// Without the system's own words, which differ: "SystemException 87 [ErrorCode #87] in WideCharToMultiByte".
template <class Call>
std::string SystemErrorOf(Call call) {
  const std::string error = ErrorOf(call);
  const std::size_t words = error.find(": "), suffix = error.rfind(" [ErrorCode #");
  return suffix == std::string::npos ? error : error.substr(0, words) + error.substr(suffix);
}

inline constexpr char kTooFewBytes[] = "BufferException: read failed - not enough bytes in buffer";
