#include "valuelist/variant_payloads.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstring>
#include <limits>
#include <map>
#include <mutex>
#include <new>
#include <utility>

#include "base/critical_section.h"
#include "base/exceptions.h"
#include "base/static_lock.h"
#include "valuelist/buffer_pool.h"

namespace Kestrel {
namespace {

using SharedCount = std::uint32_t;

std::uint8_t* BlockOf(std::uint8_t* address) {
  return address - sizeof(SharedCount);
}

std::atomic_ref<SharedCount> CountOf(std::uint8_t* address) {
  return std::atomic_ref<SharedCount>(*std::launder(reinterpret_cast<SharedCount*>(BlockOf(address))));
}

/// The objects that values hold, by address. A value adds its object after it has taken a reference, and removes it
/// before it drops the reference, so every object that is found under the lock is alive.
class HeldObjects {
 public:
  static HeldObjects& Get() { return NeverDestroyed<HeldObjects>(); }

  void Add(ReferenceCounted* object) {
    const std::lock_guard guard(lock_);
    Holders& holders = holders_[AddressOf(object)];
    holders.object = object;
    ++holders.count;
  }
  void Remove(ReferenceCounted* object) {
    const std::lock_guard guard(lock_);
    const auto found = holders_.find(AddressOf(object));
    if (--found->second.count == 0) holders_.erase(found);
  }
  /// Null where no value holds an object of that address.
  ReferencePointer<ReferenceCounted> Find(std::uint64_t address) {
    const std::lock_guard guard(lock_);
    const auto found = holders_.find(address);
    return ReferencePointer<ReferenceCounted>(found == holders_.end() ? nullptr : found->second.object);
  }

  static std::uint64_t AddressOf(const ReferenceCounted* object) { return std::bit_cast<std::uintptr_t>(object); }

 private:
  struct Holders {
    ReferenceCounted* object = nullptr;
    std::size_t count = 0;
  };

  CriticalSection lock_;
  std::map<std::uint64_t, Holders> holders_;  ///< owns no memory while it is empty, unlike a hash table
};

}  // namespace

BinaryData::BinaryData(const void* bytes, std::uint64_t n) {
  if (n == 0) return;
  buffer_ = Buffer::CreateExact(n);
  std::memcpy(buffer_->GetData(), bytes, static_cast<std::size_t>(n));
}

/// The copy of a pooled buffer comes from the small list whatever its size; the copy of an exact one is exact.
BinaryData::BinaryData(const BinaryData& other) {
  const auto bytes = other.GetBytes();
  if (bytes.empty()) return;
  if (other.buffer_->IsPoolable()) {
    buffer_ = Kestrel::GetBuffer(SmallBufferList);
    buffer_->Append(bytes.data(), bytes.size());
  } else {
    *this = BinaryData(bytes.data(), bytes.size());
  }
}

BinaryData& BinaryData::operator=(BinaryData other) noexcept {
  std::swap(buffer_, other.buffer_);
  return *this;
}

std::span<const std::uint8_t> BinaryData::GetBytes() const {
  return buffer_ ? buffer_->GetBytes() : std::span<const std::uint8_t>();
}

BlobPtr::BlobPtr(const void* address, std::uint64_t size)
    : address_(const_cast<std::uint8_t*>(static_cast<const std::uint8_t*>(address))), size_(size) {}

BlobPtr BlobPtr::AllocateShared(std::uint64_t size) {
  if (size > std::numeric_limits<std::size_t>::max() - sizeof(SharedCount)) throw std::bad_alloc();
  void* const block = ::operator new(sizeof(SharedCount) + static_cast<std::size_t>(size));
  ::new (block) SharedCount{1};
  return BlobPtr(static_cast<std::uint8_t*>(block) + sizeof(SharedCount), size, Kind::Shared);
}

BlobPtr BlobPtr::Unreadable(std::uint64_t address, std::uint64_t size) {
  return BlobPtr(std::bit_cast<std::uint8_t*>(static_cast<std::uintptr_t>(address)), size, Kind::Unreadable);
}

BlobPtr::BlobPtr(const BlobPtr& other) noexcept : address_(other.address_), size_(other.size_), kind_(other.kind_) {
  if (IsShared()) CountOf(address_).fetch_add(1, std::memory_order_relaxed);
}

BlobPtr::BlobPtr(BlobPtr&& other) noexcept {
  Swap(other);
}

BlobPtr& BlobPtr::operator=(BlobPtr other) noexcept {
  Swap(other);
  return *this;
}

BlobPtr::~BlobPtr() {
  if (IsShared() && CountOf(address_).fetch_sub(1, std::memory_order_acq_rel) == 1)
    ::operator delete(BlockOf(address_));
}

std::span<const std::uint8_t> BlobPtr::GetBytes() const {
  if (size_ == 0) return {};
  if (kind_ == Kind::Unreadable) throw BufferException(kInvalidPointerRequest);
  return {address_, static_cast<std::size_t>(size_)};
}

void BlobPtr::OwnBytes() {
  if (kind_ != Kind::Borrowed || !address_) return;
  BlobPtr own = AllocateShared(size_);
  std::ranges::copy(GetBytes(), own.address_);
  Swap(own);
}

void BlobPtr::Swap(BlobPtr& other) noexcept {
  std::swap(address_, other.address_);
  std::swap(size_, other.size_);
  std::swap(kind_, other.kind_);
}

VariantReferencePointer::VariantReferencePointer(ReferenceCounted* object) : object_(object) {
  if (object) HeldObjects::Get().Add(object);
}

VariantReferencePointer& VariantReferencePointer::operator=(VariantReferencePointer other) noexcept {
  std::swap(object_, other.object_);
  return *this;
}

VariantReferencePointer::~VariantReferencePointer() {
  if (object_) HeldObjects::Get().Remove(object_.Get());
}

std::uint64_t VariantReferencePointer::GetAddress() const {
  return HeldObjects::AddressOf(Get());
}

VariantReferencePointer VariantReferencePointer::FromAddress(std::uint64_t address) {
  if (address == 0) return VariantReferencePointer();
  const ReferencePointer<ReferenceCounted> object = HeldObjects::Get().Find(address);
  if (!object) throw BufferException(kInvalidPointerRequest);
  return VariantReferencePointer(object.Get());
}

}  // namespace Kestrel
