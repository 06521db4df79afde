/// Where results go: standard output, or a string in tests.
#pragma once

#include <string_view>

namespace tarnfind {

class TextOutput {
 public:
  virtual ~TextOutput() = default;
  /// Bytes as they are, on their way when the call returns. Throws ReaderGone or Failure.
  virtual void Write(std::string_view text) = 0;
};

class StandardOutput final : public TextOutput {
 public:
  void Write(std::string_view text) override;
};

}  // namespace tarnfind
