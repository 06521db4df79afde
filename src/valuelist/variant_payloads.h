/// The held types of vtBinaryData, vtBlobPtr and vtReferencePointer.
#pragma once

#include <cstdint>
#include <span>

#include "base/reference_counting.h"
#include "valuelist/buffer.h"

namespace Kestrel {

/// Bytes of a value, or none. Copies are deep.
///
/// Bytes that were read from the wire are held exactly, in one block of their size: a pooled buffer takes a page of
/// 4096 bytes even for one byte, and a hostile list can hold a great many of those. The buffer is made when somebody
/// asks for it and is the value's own from then on.
class BinaryData {
 public:
  BinaryData() = default;
  /// Shares the buffer.
  explicit BinaryData(ReferencePointer<Buffer> buffer);
  BinaryData(const BinaryData& other);
  BinaryData(BinaryData&& other) noexcept;
  BinaryData& operator=(BinaryData other) noexcept;
  ~BinaryData();

  std::span<const std::uint8_t> GetBytes() const;
  /// The value's own buffer; null where the value has no data.
  const ReferencePointer<Buffer>& GetBuffer() const;
  /// Replaces the bytes by a copy, and returns where it lies.
  std::uint8_t* Assign(const void* bytes, std::uint64_t n);

 private:
  mutable ReferencePointer<Buffer> buffer_;
  mutable std::uint8_t* exact_ = nullptr;
  mutable std::uint64_t exactSize_ = 0;
};

/// A view of bytes: not owned, or in a shared block that begins 4 bytes before the address with an atomic 32-bit count.
class BlobPtr {
 public:
  BlobPtr() = default;
  /// Not owned; the bytes must outlive every copy.
  BlobPtr(const void* address, std::uint64_t size);
  /// A new shared block of size uninitialised bytes, count 1.
  static BlobPtr AllocateShared(std::uint64_t size);
  BlobPtr(const BlobPtr& other) noexcept;
  BlobPtr(BlobPtr&& other) noexcept;
  BlobPtr& operator=(BlobPtr other) noexcept;
  ~BlobPtr();

  std::uint8_t* GetAddress() const { return address_; }
  std::uint64_t GetSize() const { return size_; }
  bool IsShared() const { return shared_; }
  /// Points at other bytes; the shared flag stays.
  void Refer(const void* address, std::uint64_t size);

 private:
  std::uint8_t* address_ = nullptr;
  std::uint64_t size_ = 0;
  bool shared_ = false;
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
  VariantReferencePointer(const VariantReferencePointer& other);
  VariantReferencePointer(VariantReferencePointer&& other) noexcept;
  VariantReferencePointer& operator=(VariantReferencePointer other) noexcept;
  ~VariantReferencePointer();

  ReferenceCounted* Get() const { return object_; }
  /// A reference on the object at an address that came in a payload.
  static VariantReferencePointer FromAddress(std::uint64_t address);

 private:
  ReferenceCounted* object_ = nullptr;
};

}  // namespace Kestrel
