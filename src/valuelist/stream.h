/// The minimal byte stream that variants are read from and written to.
#pragma once

#include <cstdint>

#include "base/exceptions.h"

namespace Kestrel {

/// Exactly these two operations, in this order; no virtual destructor.
class IKestrelStream {
 public:
  class IKestrelStreamException : public KestrelException {
   public:
    explicit IKestrelStreamException(std::string_view text) : KestrelException(text) {}
  };

  /// Both move n bytes or throw.
  virtual void Write(const void* source, std::uint64_t n) = 0;
  virtual void Read(void* destination, std::uint64_t n) = 0;

 protected:
  ~IKestrelStream() = default;
};

inline constexpr char kReadFailed[] = "RawStreamer - read failed";

/// Reads memory that it does not own; the memory must outlive it.
/// Read throws kReadFailed where fewer than n bytes are left, Write "RawReader - write not allowed".
class RawReader final : public IKestrelStream {
 public:
  RawReader(const void* bytes, std::uint64_t size) : bytes_(static_cast<const std::uint8_t*>(bytes)), size_(size) {}

  void Write(const void* source, std::uint64_t n) override;
  void Read(void* destination, std::uint64_t n) override;
  /// Moves the position over n bytes and returns their address, or throws as Read does.
  const std::uint8_t* Take(std::uint64_t n);

  std::uint64_t GetPosition() const { return position_; }

 private:
  std::uint64_t position_ = 0;
  const std::uint8_t* bytes_;
  std::uint64_t size_;
};

}  // namespace Kestrel
