#include "tools/replaced_file.h"

#include <fmt/format.h>

#include <cerrno>
#include <system_error>

#include "tools/failure.h"
#include "tools/text.h"

namespace tarnfind {
namespace {

/// The file that a link points to, because the link itself must stay.
std::filesystem::path Target(const std::string& file) {
  const std::filesystem::path path = PathFromUtf8(file);
  std::error_code none;
  return std::filesystem::is_symlink(path, none) ? std::filesystem::weakly_canonical(path) : path;
}

}  // namespace

bool IsSameFile(const std::string& first, const std::string& second) {
  std::error_code none;
  return std::filesystem::equivalent(PathFromUtf8(first), PathFromUtf8(second), none);
}

ReplacedFile::ReplacedFile(const std::string& file) : file_(file), path_(Target(file)), part_(path_) {
  part_ += ".part";
  std::error_code none;
  const std::filesystem::file_status before = std::filesystem::status(path_, none);
  if (std::filesystem::exists(before) && !std::filesystem::is_regular_file(before)) Fail("it is no ordinary file");
  if (std::filesystem::exists(part_, none)) Fail(fmt::format("\"{}.part\" is in the way; rename or remove it", file_));
  errno = 0;
  stream_.open(part_, std::ios::binary);
  if (!stream_) Fail(FileFailureReason());
  // While it is empty, because nobody may read what the old file hides.
  if (std::filesystem::exists(before)) std::filesystem::permissions(part_, before.permissions(), none);
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
