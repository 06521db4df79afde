/// Network changes of many cameras, from a file of comma-separated values.
///
///     mac,ip,mask,gateway,dhcp,user,password
///     00:40:8C:00:00:01,10.0.0.7,255.255.255.0,10.0.0.254,no,,
///     00:40:8C:00:00:02,,,,yes,,
///
/// The first line names the columns, in any order; only mac is needed. An empty field leaves the setting as it is.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/network_change.h"

namespace tarnfind {

struct NetworkBatch {
  std::string header;
  std::vector<NetworkChange> changes;
  std::vector<std::string> lines;  ///< the line of each change
};

/// Throws WrongUse with file, line and what is wrong.
NetworkBatch ReadNetworkBatch(const std::string& file);

/// Writes the lines of the changes that are named by their index, with the header, so that they can be tried again.
/// file: may be the one that was read. Throws Failure where it cannot be written; it then stays as it was.
void WriteRemaining(const NetworkBatch& batch, const std::vector<std::size_t>& indices, const std::string& file);

/// Text of a small file; "-" is standard input. Throws WrongUse where it cannot be read.
std::string ReadTextFile(const std::string& file);

}  // namespace tarnfind
