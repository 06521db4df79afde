#include "tools/failure.h"

#include <cerrno>
#include <system_error>

#include "tools/text.h"

namespace tarnfind {

std::string ErrorText(const std::exception& error) {
  const std::string text = error.what();
  return OneLine(IsValidUtf8(text) ? text : Utf8FromSystemText(text));
}

std::string FileFailureReason() {
  return errno != 0 ? std::generic_category().message(errno) : "unknown reason";
}

}  // namespace tarnfind
