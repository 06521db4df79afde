#include "tools/text_output.h"

#include <string>
#include <system_error>

#include "tools/failure.h"
#include "tools/platform.h"

namespace tarnfind {

void StandardOutput::Write(std::string_view text) {
  const int error = platform::Write(platform::Stream::kOutput, text);
  if (error == 0) return;
  if (platform::IsReaderGone(error)) throw ReaderGone();
  throw Failure("cannot write the output: " + std::generic_category().message(error));
}

}  // namespace tarnfind
