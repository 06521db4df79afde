/// What the server does on each command.
///
///     1   the camera with that hardware address is reported again
///     2   all cameras present are listed; if the flag says so, their last pictures are pushed again
///     6   the camera at that IP address is the answer, and is reported as well
///     13  the search begins anew: the events run again from the first one; cameras stay as they are
///     14  the camera with that hardware address takes the addresses, the DHCP mode and the credentials that are not
///         the sentinel, and is pushed as changed
///
/// Where the server does not know the camera at this moment, nothing is pushed and the answer is empty. That is no
/// failure.
#pragma once

#include <memory>
#include <variant>
#include <vector>

#include "simulator/world.h"
#include "valuelist/value_list.h"

namespace simulator {

/// Nothing, one record, or a list of records.
using Answer = std::variant<std::monostate, World::Record, std::vector<World::Record>>;

/// Carries the command out. Throws Refused for an unknown or malformed command, and what Kestrel::ValueList throws for
/// values that cannot be read. The world stays unchanged where it throws.
Answer ExecuteCommand(Kestrel::ValueList& command, World& world);

/// The list that goes back to the finder. Needs no lock, because records never change.
Kestrel::ValueList ReplyOf(const Answer& answer);

}  // namespace simulator
