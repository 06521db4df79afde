/// Where the lines of a page go. Without the library's COM types, because sockets bring the system's own on Windows.
#pragma once

#include <string>
#include <string_view>

namespace tarnfind {

/// Takes the lines, on the main thread.
class LineReceiver {
 public:
  virtual ~LineReceiver() = default;
  /// line: with its line end. subject: what the line is about; it is then the newest of that subject. Empty: nothing.
  virtual void Add(std::string_view line, std::string_view subject) = 0;
  /// A line that only counts until the next one of its kind.
  virtual void SetState(std::string line) = 0;
  /// Whether nobody reads the lines any more.
  virtual bool IsAbandoned() const { return false; }
};

}  // namespace tarnfind
