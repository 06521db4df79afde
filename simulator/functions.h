/// The eight functions of the platform library: the names that scenarios use, and the text of an injected failure.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "capture/format.h"

namespace simulator {

using capture::Function;

struct FunctionRow {
  Function function;
  std::string_view name;
  std::string_view failure;  ///< description where the fault gives none
};

/// Row number = function.
inline constexpr auto kFunctions = std::to_array<FunctionRow>({
    {Function::kCreateLiveStream, "TarnServer_CreateLiveStream", "The live stream was refused"},
    {Function::kOpen, "TarnLiveStream_Open", "The live stream cannot be opened"},
    {Function::kStart, "TarnLiveStream_Start", "The live stream cannot be started"},
    {Function::kSetGenericDataCallback, "TarnLiveStream_SetGenericDataCallback", "The data callback was refused"},
    {Function::kSendSynchDSPCommand, "TarnLiveStream_SendSynchDSPCommand", "The command was not answered"},
    {Function::kReleaseReference, "TarnDBI_ReleaseReference", "The reply cannot be released"},
    {Function::kDestroy, "TarnLiveStream_Destroy", "The live stream cannot be ended"},
    {Function::kGetLastError, "TarnDBIGetLastError", "The last error is not known"},
});
static_assert([] {
  for (std::size_t i = 0; i < kFunctions.size(); ++i)
    if (static_cast<std::size_t>(kFunctions[i].function) != i) return false;
  return true;
}());

inline constexpr const FunctionRow& RowOf(Function function) {
  return kFunctions[static_cast<std::size_t>(function)];
}

}  // namespace simulator
