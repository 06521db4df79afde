/// A file that takes the place of another only when all of it is written.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

namespace tarnfind {

class ReplacedFile {
 public:
  /// Opens "FILE.part" beside it, empty. Throws Failure where that cannot be written. file: UTF-8.
  explicit ReplacedFile(const std::string& file);
  /// Without Finish nothing is left behind, and the file stays as it was.
  ~ReplacedFile();
  ReplacedFile(const ReplacedFile&) = delete;
  ReplacedFile& operator=(const ReplacedFile&) = delete;

  std::ostream& Stream() { return stream_; }
  /// Puts the file in place. Throws Failure where it, or anything before, could not be written.
  void Finish();

 private:
  [[noreturn]] void Fail(const std::string& reason) const;

  const std::string file_;
  const std::filesystem::path path_;
  const std::filesystem::path part_;
  std::ofstream stream_;
};

}  // namespace tarnfind
