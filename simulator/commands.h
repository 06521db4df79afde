/// What the server does on each command.
///
///     1   the camera with that hardware address is reported again
///     2   all cameras present are listed; if the flag says so, their last pictures are pushed again
///     6   the camera at that IP address is the answer, and is reported as well
///     13  the search begins anew: the events run again from the first one; cameras stay as they are
///     14  the camera with that hardware address takes the addresses, the DHCP mode and the credentials that are not
///         the sentinel, and is pushed as changed
///
/// A camera that the server does not know at this moment is no failure: nothing is pushed, the answer is empty.
#pragma once

#include <memory>
#include <variant>
#include <vector>

#include "simulator/world.h"
#include "valuelist/value_list.h"

namespace simulator {

/// Nothing, one record, or a list of records.
using Answer = std::variant<std::monostate, World::Record, std::vector<World::Record>>;

/// Carries the command out. Throws Refused where there is no such command or it is malformed, and what value lists
/// throw where its values are; the world has not changed then.
Answer ExecuteCommand(Kestrel::ValueList& command, World& world);

/// The list that goes back to the finder. Needs no lock: records do not change.
Kestrel::ValueList ReplyOf(const Answer& answer);

}  // namespace simulator
