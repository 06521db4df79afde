/// The file of a capture, read front to back; standard input for "-".
#pragma once

#include <fstream>
#include <functional>
#include <string>

#include "capture/capture_reader.h"

namespace tarnfind {

class CaptureFile final : public capture::ByteSource {
 public:
  /// Throws WrongUse where the file cannot be opened. With `isEnough`, Read waits for more at the end of the file,
  /// until isEnough returns true.
  explicit CaptureFile(const std::string& path, std::function<bool()> isEnough = {});

  std::size_t Read(void* target, std::size_t size) override;
  const std::string& GetPath() const { return path_; }

 private:
  std::string path_;
  std::ifstream file_;
  std::function<bool()> isEnough_;
};

/// Hands each frame of the capture to visit. Returns a line about what was not whole; empty where all is well. Throws
/// WrongUse, with the file's name, where it is no capture or damaged.
std::string ReadFrames(CaptureFile& file, const std::function<void(const capture::Frame&)>& visit);

}  // namespace tarnfind
