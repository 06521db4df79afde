/// Writes a section of a capture file, frame by frame. The bytes of a frame are not copied on their way to the system.
///
/// Threads  One at a time; the recorder holds its lock.
/// Errors   False where the file did not take everything: its end may hold a part of a block then, and nothing may be
///          written behind it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "capture/format.h"
#include "platform/append_file.h"

namespace capture {

/// Where the bytes of a capture go: a file, or a vector in tests.
class ByteSink {
 public:
  virtual bool Append(std::span<const platform::BytePiece> pieces) = 0;

 protected:
  ~ByteSink() = default;
};

/// What a frame is made of, beside its header: at most kMost parts. Requires that their bytes stay where they are until
/// the frame is written.
class FrameParts {
 public:
  static constexpr std::size_t kMost = 4;

  FrameParts() = default;
  /// Pieces point into the object itself.
  FrameParts(const FrameParts&) = delete;
  FrameParts& operator=(const FrameParts&) = delete;

  /// Leaves out a part without bytes, unless it is a reply or a block: that it was empty is worth knowing.
  void Add(PartKind kind, std::span<const std::byte> payload);
  /// Parts that are encoded already, as a frame that was read holds them.
  void AddEncoded(std::span<const std::byte> parts);
  std::span<const platform::BytePiece> GetPieces() const { return {pieces_.data(), 2 * count_}; }
  std::uint64_t GetSize() const { return size_; }

 private:
  std::size_t count_ = 0;
  std::uint64_t size_ = 0;
  std::array<PartHead, kMost> heads_;
  std::array<platform::BytePiece, 2 * kMost> pieces_;
};

class FrameWriter {
 public:
  explicit FrameWriter(ByteSink& sink) : sink_(sink) {}

  /// Begins a section: its header and the description of the one interface.
  bool WriteSectionStart();
  /// time: nanoseconds since 1970. The sizes of the header are filled in.
  bool WriteFrame(FrameHeader header, std::uint64_t time, const FrameParts& parts);

 private:
  bool WritePacket(const FrameHeader& header, std::uint64_t time, std::span<const platform::BytePiece> pieces);

  ByteSink& sink_;
};

}  // namespace capture
