/// The held types of vtBinaryData, vtBlobPtr and vtReferencePointer.
#pragma once

#include <cstdint>
#include <span>
#include <utility>

#include "base/reference_counting.h"
#include "valuelist/buffer.h"

namespace Kestrel {

/// Bytes of a value in a buffer, or none. A copy has a buffer of its own, or none where there are no bytes.
class BinaryData {
 public:
  BinaryData() = default;
  /// Shares the buffer: what others append to it belongs to the value.
  explicit BinaryData(ReferencePointer<Buffer> buffer) : buffer_(std::move(buffer)) {}
  /// A copy of n bytes in an exact buffer (Buffer::CreateExact); without a buffer where n is 0.
  BinaryData(const void* bytes, std::uint64_t n);
  BinaryData(const BinaryData& other);
  BinaryData(BinaryData&& other) noexcept = default;
  BinaryData& operator=(BinaryData other) noexcept;

  /// Valid until the value or its buffer changes.
  std::span<const std::uint8_t> GetBytes() const;
  /// The value's own buffer; null where the value has none.
  const ReferencePointer<Buffer>& GetBuffer() const { return buffer_; }

 private:
  ReferencePointer<Buffer> buffer_;
};

/// The address and the size of bytes, of one of three kinds:
///
///     borrowed      not owned: a payload in the buffer that it was read from
///     shared        in a block that copies share; it begins 4 bytes before the address with an atomic 32-bit count
///     unreadable    from text: the address is a number that somebody wrote, so it is shown but never followed
class BlobPtr {
 public:
  BlobPtr() = default;
  /// Borrowed. Requires that the bytes outlive every copy.
  BlobPtr(const void* address, std::uint64_t size);
  /// The only reference on a new shared block of uninitialised bytes.
  static BlobPtr AllocateShared(std::uint64_t size);
  static BlobPtr Unreadable(std::uint64_t address, std::uint64_t size);
  BlobPtr(const BlobPtr& other) noexcept;
  BlobPtr(BlobPtr&& other) noexcept;
  BlobPtr& operator=(BlobPtr other) noexcept;
  ~BlobPtr();

  std::uint8_t* GetAddress() const { return address_; }
  std::uint64_t GetSize() const { return size_; }
  bool IsShared() const { return kind_ == Kind::Shared; }
  /// Throws BufferException kInvalidPointerRequest where the blob is unreadable and its size not 0.
  std::span<const std::uint8_t> GetBytes() const;
  /// Copies borrowed bytes into a new shared block, so that their buffer may go. No effect on the other kinds.
  void OwnBytes();

 private:
  enum class Kind : std::uint8_t { Borrowed, Shared, Unreadable };
  BlobPtr(std::uint8_t* address, std::uint64_t size, Kind kind) : address_(address), size_(size), kind_(kind) {}
  void Swap(BlobPtr& other) noexcept;

  std::uint8_t* address_ = nullptr;
  std::uint64_t size_ = 0;
  Kind kind_ = Kind::Borrowed;
};

/// A reference on an object of this process. Its payload is the object's address.
///
/// An address that is read back is followed only where another such value holds the object at that moment, because
/// only then is it known to be alive. Null stays null, any other address throws BufferException kInvalidPointerRequest.
/// So no call ever goes through an address that came from outside.
class VariantReferencePointer {
 public:
  VariantReferencePointer() = default;
  explicit VariantReferencePointer(ReferenceCounted* object);
  VariantReferencePointer(const VariantReferencePointer& other) : VariantReferencePointer(other.Get()) {}
  VariantReferencePointer(VariantReferencePointer&& other) noexcept = default;
  VariantReferencePointer& operator=(VariantReferencePointer other) noexcept;
  ~VariantReferencePointer();

  ReferenceCounted* Get() const { return object_.Get(); }
  /// The payload.
  std::uint64_t GetAddress() const;
  /// A reference on the object at the address that a payload names.
  static VariantReferencePointer FromAddress(std::uint64_t address);

 private:
  ReferencePointer<ReferenceCounted> object_;
};

}  // namespace Kestrel
