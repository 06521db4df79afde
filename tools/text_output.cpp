#include "tools/text_output.h"

#include <string>
#include <system_error>
#include <utility>

#include "tools/failure.h"
#include "tools/platform.h"

namespace tarnfind {

namespace {
constexpr std::size_t kPieceSize = 65536;
}

void CollectedOutput::Write(std::string_view text) {
  collected_ += text;
  if (collected_.size() >= kPieceSize) Flush();
}

void CollectedOutput::Flush() {
  if (!collected_.empty()) target_.Write(std::exchange(collected_, {}));
}

void StandardOutput::Write(std::string_view text) {
  const int error = platform::Write(platform::Stream::kOutput, text);
  if (error == 0) return;
  if (platform::IsReaderGone(error)) throw ReaderGone();
  throw Failure("cannot write the output: " + std::generic_category().message(error));
}

}  // namespace tarnfind
