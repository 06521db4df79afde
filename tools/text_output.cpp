#include "tools/text_output.h"

#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>

#include "tools/failure.h"
#include "tools/platform.h"

namespace tarnfind {

void StandardOutput::Write(std::string_view text) {
  errno = 0;
  if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0) return;
  const int error = errno;
  if (platform::IsReaderGone(error)) throw ReaderGone();
  throw Failure("cannot write the output: " + std::generic_category().message(error));
}

}  // namespace tarnfind
