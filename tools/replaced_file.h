/// A file that takes the place of another only when all of it is written.
#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>

namespace tarnfind {

/// Whether both names, in UTF-8, are those of one file that exists.
bool IsSameFile(const std::string& first, const std::string& second);

class ReplacedFile {
 public:
  /// Opens "FILE.part" beside it, empty, with the permissions of the file that it replaces. Throws Failure where that
  /// cannot be written or exists already, and where the file is a device, a pipe or a folder. Of a link, the file that
  /// it points to is replaced. file: UTF-8.
  explicit ReplacedFile(const std::string& file);
  /// Without Finish nothing is left behind, and the file stays as it was.
  ~ReplacedFile();
  ReplacedFile(const ReplacedFile&) = delete;
  ReplacedFile& operator=(const ReplacedFile&) = delete;

  std::ostream& Stream() { return stream_; }
  /// Throws Failure where the bytes could not be written.
  void Write(std::span<const std::byte> bytes);
  /// Puts the file in place. Throws Failure where it, or anything before, could not be written.
  void Finish();

 private:
  [[noreturn]] void Fail(const std::string& reason) const;

  const std::string file_;
  const std::filesystem::path path_;
  std::filesystem::path part_;
  std::ofstream stream_;
};

}  // namespace tarnfind
