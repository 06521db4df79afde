#include "tools/replaced_file.h"

#include <fmt/format.h>

#include <cerrno>
#include <system_error>

#include "tools/failure.h"
#include "tools/text.h"

namespace tarnfind {

bool IsSameFile(const std::string& first, const std::string& second) {
  std::error_code none;
  return std::filesystem::equivalent(PathFromUtf8(first), PathFromUtf8(second), none);
}

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

void ReplacedFile::Write(std::span<const std::byte> bytes) {
  errno = 0;
  stream_.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!stream_) Fail(FileFailureReason());
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
