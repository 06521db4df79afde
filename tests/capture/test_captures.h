/// A capture in memory, written and read without a file.
#pragma once

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "capture/capture_reader.h"
#include "capture/frame_writer.h"

namespace capture {

using Bytes = std::vector<std::uint8_t>;

struct MemorySink final : ByteSink {
  bool Append(std::span<const platform::BytePiece> pieces) override {
    for (const platform::BytePiece piece : pieces) {
      const auto* const first = reinterpret_cast<const std::uint8_t*>(piece.data());
      bytes.insert(bytes.end(), first, first + piece.size());
    }
    return true;
  }
  Bytes bytes;
};

struct MemorySource final : ByteSource {
  explicit MemorySource(Bytes content) : bytes(std::move(content)) {}
  std::size_t Read(void* target, std::size_t size) override {
    const std::size_t some = std::min(size, bytes.size() - at);
    if (some > 0) std::memcpy(target, bytes.data() + at, some);
    at += some;
    return some;
  }
  Bytes bytes;
  std::size_t at = 0;
};

inline Bytes BytesOfFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

/// All frames of a capture; what is behind its last whole block is counted.
struct ReadCapture {
  explicit ReadCapture(Bytes bytes) {
    MemorySource source(std::move(bytes));
    CaptureReader reader(source);
    for (Frame frame; reader.Next(frame);) frames.push_back(frame);
    behindLastBlock = reader.GetBytesBehindLastBlock();
    packets = reader.GetPacketCount();
    skipped = reader.GetSkippedCount();
  }
  std::vector<Frame> frames;
  std::uint64_t behindLastBlock = 0, packets = 0, skipped = 0;
};

}  // namespace capture
