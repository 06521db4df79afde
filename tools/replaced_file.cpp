#include "tools/replaced_file.h"

#include <fmt/format.h>

#include <cerrno>
#include <system_error>

#include "tools/failure.h"
#include "tools/text.h"

namespace tarnfind {

ReplacedFile::ReplacedFile(const std::string& file)
    : file_(file), path_(PathFromUtf8(file)), part_(PathFromUtf8(file + ".part")) {
  errno = 0;
  stream_.open(part_, std::ios::binary);
  if (!stream_) Fail(FileFailureReason());
}

ReplacedFile::~ReplacedFile() {
  if (!stream_.is_open()) return;
  stream_.close();
  std::error_code left;
  std::filesystem::remove(part_, left);
}

void ReplacedFile::Finish() {
  errno = 0;
  stream_.flush();
  if (!stream_) Fail(FileFailureReason());
  stream_.close();
  std::error_code failed;
  std::filesystem::rename(part_, path_, failed);
  if (!failed) return;
  std::error_code left;
  std::filesystem::remove(part_, left);
  Fail(failed.message());
}

void ReplacedFile::Fail(const std::string& reason) const {
  throw Failure(fmt::format("cannot write \"{}\": {}", file_, reason));
}

}  // namespace tarnfind
