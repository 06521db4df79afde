/// The held types of vtBinaryData, vtBlobPtr and vtReferencePointer.
#pragma once

#include <cstdint>
#include <span>
#include <utility>

#include "base/reference_counting.h"
#include "valuelist/buffer.h"

namespace Kestrel {

/// Bytes of a value, or none. Copies are deep; a copy of no bytes has no buffer.
class BinaryData {
 public:
  BinaryData() = default;
  /// Shares the buffer.
  explicit BinaryData(ReferencePointer<Buffer> buffer) : buffer_(std::move(buffer)) {}
  /// A copy of n bytes in an exact buffer, because a hostile message can hold a great many values of few bytes; without
  /// a buffer where n is 0.
  BinaryData(const void* bytes, std::uint64_t n);
  BinaryData(const BinaryData& other);
  BinaryData(BinaryData&& other) noexcept = default;
  BinaryData& operator=(BinaryData other) noexcept;

  /// Valid until the value, or its buffer, is changed.
  std::span<const std::uint8_t> GetBytes() const;
  /// The value's own buffer; null where the value has none.
  const ReferencePointer<Buffer>& GetBuffer() const { return buffer_; }

 private:
  ReferencePointer<Buffer> buffer_;
};

/// A view of bytes: not owned, or in a shared block that begins 4 bytes before the address with an atomic 32-bit count.
///
/// A third kind comes from text: its address is a number that somebody wrote, kept to be shown and never followed.
class BlobPtr {
 public:
  BlobPtr() = default;
  /// Not owned; the bytes must outlive every copy.
  BlobPtr(const void* address, std::uint64_t size);
  /// A new shared block of size uninitialised bytes, count 1.
  static BlobPtr AllocateShared(std::uint64_t size);
  /// Size and address are reported as they are given; there are no bytes.
  static BlobPtr Unreadable(std::uint64_t address, std::uint64_t size);
  BlobPtr(const BlobPtr& other) noexcept;
  BlobPtr(BlobPtr&& other) noexcept;
  BlobPtr& operator=(BlobPtr other) noexcept;
  ~BlobPtr();

  std::uint8_t* GetAddress() const { return address_; }
  std::uint64_t GetSize() const { return size_; }
  bool IsShared() const { return kind_ == Kind::Shared; }
  /// Throws BufferException kInvalidPointerRequest where the address is not one to follow, unless the size is 0.
  std::span<const std::uint8_t> GetBytes() const;
  /// Points at other bytes, which are not owned. A shared block is let go: its count does not lie before those bytes.
  void Refer(const void* address, std::uint64_t size) { *this = BlobPtr(address, size); }
  /// Copies bytes that are not owned into a shared block, so that they may go away.
  void OwnBytes();

 private:
  enum class Kind : std::uint8_t { Borrowed, Shared, Unreadable };
  BlobPtr(std::uint8_t* address, std::uint64_t size, Kind kind) : address_(address), size_(size), kind_(kind) {}
  void Swap(BlobPtr& other) noexcept;

  std::uint8_t* address_ = nullptr;
  std::uint64_t size_ = 0;
  Kind kind_ = Kind::Borrowed;
};

/// A reference on an object of this process, whose address is the payload.
///
/// Only an address that such a value of this process holds, and whose object is alive therefore, is followed when it is
/// read back; null stays null, any other address throws BufferException "invalid pointer request". No call ever goes
/// through an address that came from outside.
class VariantReferencePointer {
 public:
  VariantReferencePointer() = default;
  explicit VariantReferencePointer(ReferenceCounted* object);
  VariantReferencePointer(const VariantReferencePointer& other) : VariantReferencePointer(other.Get()) {}
  VariantReferencePointer(VariantReferencePointer&& other) noexcept = default;
  VariantReferencePointer& operator=(VariantReferencePointer other) noexcept;
  ~VariantReferencePointer();

  ReferenceCounted* Get() const { return object_.Get(); }
  /// The address as it is written.
  std::uint64_t GetAddress() const;
  /// A reference on the object at an address that came in a payload.
  static VariantReferencePointer FromAddress(std::uint64_t address);

 private:
  ReferencePointer<ReferenceCounted> object_;
};

}  // namespace Kestrel
