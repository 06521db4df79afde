#include "tools/failure.h"

#include "tools/platform.h"
#include "tools/text.h"

namespace tarnfind {

std::string ErrorText(const std::exception& error) {
  const std::string text = error.what();
  return OneLine(IsValidUtf8(text) ? text : platform::Utf8FromSystemText(text));
}

}  // namespace tarnfind
