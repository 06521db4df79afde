/// Which events of a conversation are shown.
#pragma once

#include <string>
#include <vector>

#include "tools/capture/conversation.h"

namespace tarnfind {

/// An empty text for "mac=…", "ip=…", "function=…" or "type=…", else what is wrong with it. Brings an address into its
/// standard form, and any value into lower case.
std::string NormaliseEventFilter(std::string& text);

/// Whether an event matches all filters. function: a part of the name of a function, command or event; type: a block's
/// message type. Requires filters that were normalised.
bool Matches(const RecordedEvent& event, const std::vector<std::string>& filters);

}  // namespace tarnfind
