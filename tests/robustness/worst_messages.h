/// The worst messages we know, each of any size: many small things, counts that lie, long texts that exceptions quote.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "wizard/finder_library.h"

namespace wizard {

struct WorstMessage {
  const char* name;
  std::uint32_t messageType;  ///< kReply: not a block, but the answer to the list command
  std::string (*make)(std::size_t size);

  static constexpr std::uint32_t kReply = 0;
  /// About that many bytes.
  Bytes OfSize(std::size_t size) const;
  void Send(scripted::Dbi& dbi, const ComPtr<ICameraFinder>& finder, const Bytes& message) const;
};
extern const std::vector<WorstMessage> kWorstMessages;

}  // namespace wizard
