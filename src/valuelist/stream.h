/// The byte stream that values are read from and written to, and its one implementation, which reads a server's reply.
#pragma once

#include <cstdint>

#include "base/exceptions.h"

namespace Kestrel {

/// The interface of the platform's streams: exactly these two operations in this order, no virtual destructor. Only
/// WriteToStream (variant_wire.h) calls Write, and this library never calls that.
class IKestrelStream {
 public:
  class IKestrelStreamException : public KestrelException {
   public:
    explicit IKestrelStreamException(std::string_view text) : KestrelException(text) {}
  };

  /// Each moves exactly n bytes or throws.
  virtual void Write(const void* source, std::uint64_t n) = 0;
  virtual void Read(void* destination, std::uint64_t n) = 0;

 protected:
  ~IKestrelStream() = default;
};

inline constexpr char kReadFailed[] = "RawStreamer - read failed";

/// Reads memory that it does not own; the memory must outlive it.
///
/// Errors  IKestrelStreamException. Read: kReadFailed where fewer than n bytes are left; the position stays. Write:
///         always "RawReader - write not allowed".
class RawReader final : public IKestrelStream {
 public:
  RawReader(const void* bytes, std::uint64_t size) : bytes_(static_cast<const std::uint8_t*>(bytes)), size_(size) {}

  void Write(const void* source, std::uint64_t n) override;
  void Read(void* destination, std::uint64_t n) override;
  /// Moves the position over n bytes and returns their address. Errors as Read.
  const std::uint8_t* Take(std::uint64_t n);

  std::uint64_t GetPosition() const { return position_; }

 private:
  std::uint64_t position_ = 0;
  const std::uint8_t* bytes_;
  std::uint64_t size_;
};

}  // namespace Kestrel
