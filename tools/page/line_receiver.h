/// Where the lines of a page go. Without the library's COM types, because sockets bring the system's own on Windows.
#pragma once

#include <string>
#include <string_view>

namespace tarnfind {

/// Takes the lines, on the main thread.
class LineReceiver {
 public:
  virtual ~LineReceiver() = default;
  /// line: with its end. subject: what the line tells the newest of; empty for nothing.
  virtual void Add(std::string_view line, std::string_view subject) = 0;
  /// A line that only counts until the next one of its kind.
  virtual void SetState(std::string line) = 0;
  /// Whether nobody will read them any more.
  virtual bool IsAbandoned() const { return false; }
};

}  // namespace tarnfind
