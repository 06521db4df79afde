/// Kestrel::Variant: one value of one of 21 types.
///
/// The value lies inline and the variant points at the traits of its type; everything is dispatched through that table
/// (variant_traits.h). Copying is deep for binary data; a blob that was read from a buffer points into that buffer.
///
/// Threads  No lock inside. The counts of shared blobs and of referenced objects are atomic, so copies of one value may
///          live on different threads.
/// Errors   VariantInvalidTypeException, VariantStringConversionException, VariantStringToValueConversionException,
///          StringConversionException, GuidConversionException, EKestrelDateTime, SystemException; BufferException for
///          payloads that cannot be a value. A failed FromString leaves the type unchanged.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <typeinfo>

#include "base/date_time.h"
#include "base/guid.h"
#include "platform/clock.h"
#include "valuelist/stream.h"
#include "valuelist/variant_payloads.h"
#include "valuelist/variant_types.h"

namespace Kestrel {

struct VariantTypeTraits;

class Variant {
 public:
  explicit Variant(std::same_as<bool> auto value) : Variant(BoolTag{}, value) {}
  explicit Variant(char value);  ///< vtChar, a signed number
  explicit Variant(unsigned char value);
  explicit Variant(signed char value);
  explicit Variant(std::int16_t value);
  explicit Variant(std::uint16_t value);
  explicit Variant(std::uint32_t value);
  explicit Variant(std::int32_t value);  ///< vtInt; a vtLong is made by Create(vtLong)
  explicit Variant(std::int64_t value);
  explicit Variant(std::uint64_t value);  ///< reports vtInt64
  explicit Variant(float value);
  explicit Variant(double value);
  explicit Variant(std::string value);
  explicit Variant(std::string_view value);
  explicit Variant(const char* value) : Variant(std::string_view(value)) {}
  explicit Variant(std::u16string value);
  explicit Variant(BinaryData value);
  explicit Variant(BlobPtr value);
  explicit Variant(platform::FileTime value);
  explicit Variant(TKestrelDateTime value);
  explicit Variant(VariantReferencePointer value);
  explicit Variant(const Guid& value);

  /// The default value of a tag; throws VariantInvalidTypeException for 21 and more.
  static Variant Create(std::uint8_t tag);

  Variant(const Variant& other);
  Variant(Variant&& other) noexcept;
  Variant& operator=(const Variant& other);
  Variant& operator=(Variant&& other) noexcept;
  ~Variant();

  std::uint8_t GetType() const;  ///< the tag that is written
  const std::type_info& GetTypeInfo() const;
  std::uint64_t GetSize() const;       ///< payload bytes
  std::uint64_t GetFixedSize() const;  ///< payload bytes, or kVariableSize
  void WriteRaw(std::uint8_t* payload) const;
  /// Builds the value from n payload bytes.
  void ReadRaw(const std::uint8_t* payload, std::uint64_t n);
  void ReadFromStream(IKestrelStream& stream);
  void WriteToStream(IKestrelStream& stream) const;

  std::string ToString() const;
  void FromString(std::string_view text);

  /// The value converted to Target: unsigned char, bool, std::uint32_t, std::uint64_t, std::string or std::u16string.
  template <class Target>
  Target To() const;

  /// The held value where it is a T exactly, else null. T is the held type of variant_types' tag.
  template <class T>
  const T* GetIf() const {
    return GetTypeInfo() == typeid(T) ? static_cast<const T*>(static_cast<const void*>(storage_)) : nullptr;
  }

 private:
  struct BoolTag {};
  Variant(BoolTag, bool value);
  explicit Variant(const VariantTypeTraits& traits);

  /// A string is the largest held value.
  static constexpr std::size_t kStorageSize = sizeof(std::string);
  alignas(std::max_align_t) std::byte storage_[kStorageSize];
  const VariantTypeTraits* traits_;
};

template <>
unsigned char Variant::To<unsigned char>() const;
template <>
bool Variant::To<bool>() const;
template <>
std::uint32_t Variant::To<std::uint32_t>() const;
template <>
std::uint64_t Variant::To<std::uint64_t>() const;
template <>
std::string Variant::To<std::string>() const;
template <>
std::u16string Variant::To<std::u16string>() const;

}  // namespace Kestrel
