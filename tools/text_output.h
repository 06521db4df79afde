/// Where results go: standard output, or a string in tests.
#pragma once

#include <string>
#include <string_view>

namespace tarnfind {

class TextOutput {
 public:
  virtual ~TextOutput() = default;
  /// Bytes as they are, on their way when the call returns. Throws ReaderGone or Failure.
  virtual void Write(std::string_view text) = 0;
};

/// Hands texts on in large pieces, because a call of the system for each of 100,000 lines is slow. A text is on its way
/// when Flush returns; what was not flushed is lost.
class CollectedOutput final : public TextOutput {
 public:
  /// Requires that `target` outlives it.
  explicit CollectedOutput(TextOutput& target) : target_(target) {}
  void Write(std::string_view text) override;
  void Flush();

 private:
  TextOutput& target_;
  std::string collected_;
};

class StandardOutput final : public TextOutput {
 public:
  void Write(std::string_view text) override;
};

}  // namespace tarnfind
