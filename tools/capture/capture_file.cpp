#include "tools/capture/capture_file.h"

#include <fmt/format.h>

#include <chrono>
#include <filesystem>
#include <iostream>
#include <thread>

#include "tools/failure.h"
#include "tools/text.h"

namespace tarnfind {
namespace {

constexpr std::chrono::milliseconds kLookInterval{100};

}  // namespace

CaptureFile::CaptureFile(const std::string& path, std::function<bool()> isEnough)
    : path_(path), isEnough_(std::move(isEnough)) {
  if (path == "-") return;
  file_.open(PathFromUtf8(path), std::ios::binary);
  if (!file_) throw WrongUse(fmt::format("{} cannot be read", Printable(path)));
}

std::size_t CaptureFile::Read(void* target, std::size_t size) {
  std::istream& input = path_ == "-" ? std::cin : file_;
  auto* const bytes = static_cast<char*>(target);
  std::size_t got = 0;
  while (true) {
    input.read(bytes + got, static_cast<std::streamsize>(size - got));
    got += static_cast<std::size_t>(input.gcount());
    if (input.bad()) throw WrongUse(fmt::format("{} cannot be read", Printable(path_)));  // a folder, for example
    if (got == size || !isEnough_ || isEnough_()) return got;
    input.clear();
    std::this_thread::sleep_for(kLookInterval);
  }
}

std::string ReadFrames(CaptureFile& file, const std::function<void(const capture::Frame&)>& visit) {
  capture::CaptureReader reader(file);
  std::uint64_t frames = 0;
  try {
    for (capture::Frame frame; reader.Next(frame); ++frames) visit(frame);
  } catch (const capture::CaptureError& error) {
    throw WrongUse(fmt::format("{}: {}", Printable(file.GetPath()), error.what()));
  }
  if (reader.GetBytesBehindLastBlock() > 0)
    return fmt::format("{} ends in the middle of a block: {} bytes are not shown", Printable(file.GetPath()),
                       reader.GetBytesBehindLastBlock());
  return frames == 0 ? fmt::format("{} holds no conversation", Printable(file.GetPath())) : "";
}

}  // namespace tarnfind
