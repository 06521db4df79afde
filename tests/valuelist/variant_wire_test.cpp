#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "fakes/counting_allocator.h"
#include "valuelist/buffer_pool.h"
#include "valuelist/error_of.h"
#include "valuelist/variant.h"

using namespace std::string_literals;

namespace Kestrel {
namespace {

constexpr char kStreamEnds[] = "IKestrelStream::IKestrelStreamException: RawStreamer - read failed";
constexpr char kBadPointer[] = "BufferException: invalid pointer request";

Variant FromRaw(std::uint8_t tag, std::string_view payload) {
  Variant value = Variant::Create(tag);
  value.ReadRaw(reinterpret_cast<const std::uint8_t*>(payload.data()), payload.size());
  return value;
}

std::string Raw(const Variant& value) {
  std::string payload(value.GetSize(), '\xEE');
  value.WriteRaw(reinterpret_cast<std::uint8_t*>(payload.data()));
  return payload;
}

/// A stream that is not the library's own: nobody can tell how much is left in it.
class OtherStream : public IKestrelStream {
 public:
  explicit OtherStream(std::string content = {}) : bytes(std::move(content)) {}
  void Write(const void* source, std::uint64_t n) override { bytes.append(static_cast<const char*>(source), n); }
  void Read(void* destination, std::uint64_t n) override {
    largestRead = std::max(largestRead, n);
    if (n > bytes.size()) throw IKestrelStreamException("RawStreamer - read failed");
    bytes.copy(static_cast<char*>(destination), n);
    bytes.erase(0, n);
  }
  std::string bytes;
  std::uint64_t largestRead = 0;
};

/// One value of each tag, by its payload.
const std::string kPayloads[] = {
    "\1"s,
    "\xFE"s,
    "\xFE"s,
    "\xFE"s,
    "\1\xFE"s,
    "\1\xFE"s,
    "\1\2\3\xFE"s,
    "\1\2\3\xFE"s,
    "\1\2\3\4\5\6\7\xFE"s,
    "\0\0\x40\x40"s,
    "\0\0\0\0\0\0\x08\x40"s,
    "a string beyond the small ones\0"s,
    "a\0\0\0"s,
    "\1\2\3"s,
    "\1\2\3"s,
    "\1\2\3\4\5\6\7\1"s,
    "\1\2\3\4\5\6\7\1"s,
    "\0\0\0\0\0\0\0\0"s,
    "\1\2\3\4\5\6\7\x8\x9\xA\xB\xC\xD\xE\xF\x10"s,
    "\1\2\3\xFE"s,
    "\1\2\3\4\5\6\7\xFE"s,
};
static_assert(std::size(kPayloads) == kVariantTypeCount);

TEST(VariantRaw, EveryTypeIsCopiedMovedAndWrittenAsItWasRead) {
  for (std::uint8_t tag = 0; tag < kVariantTypeCount; ++tag) {
    SCOPED_TRACE(int{tag});
    std::optional<Variant> value = FromRaw(tag, kPayloads[tag]);
    Variant copy(*value);
    Variant assigned("old");
    assigned = copy;
    copy = Variant::Create(tag);
    EXPECT_EQ(Raw(*value), kPayloads[tag]);
    Variant moved(std::move(*value));
    value.reset();
    EXPECT_EQ(Raw(moved), kPayloads[tag]);
    assigned = std::move(moved);
    EXPECT_EQ(Raw(assigned), kPayloads[tag]);
    EXPECT_EQ(assigned.GetTypeInfo(), Variant::Create(tag).GetTypeInfo());
  }
}

TEST(VariantRaw, TakesWhatTheLengthSaysAndRefusesTooLittle) {
  EXPECT_EQ(FromRaw(vtString, "ab\xFF").ToString(), "ab") << "the terminator is not looked at";
  EXPECT_EQ(FromRaw(vtString, "a\0b\0"s).ToString(), "a\0b"s);
  EXPECT_EQ(*FromRaw(vtWString, "a\0b\0\xFF"s).GetIf<std::u16string>(), u"a") << "the rest of an odd length is ignored";
  EXPECT_EQ(Raw(FromRaw(vtBool, "\x80")), "\1");
  EXPECT_EQ(FromRaw(vtBinaryData, "").GetIf<BinaryData>()->GetBuffer(), nullptr);

  const struct {
    std::uint8_t tag;
    std::string payload;
  } tooShort[] = {{vtString, ""}, {vtWString, ""}, {vtWString, "a"}, {vtUInt, "abc"}, {vtBool, ""}, {vtGuid, "abc"}};
  for (const auto& row : tooShort)
    EXPECT_EQ(ErrorOf([&] { FromRaw(row.tag, row.payload); }), kTooFewBytes) << int{row.tag};
}

TEST(VariantStream, IsWrittenAndReadInItsTwoForms) {
  struct Row {
    std::uint8_t tag;
    std::string payload, written, read;  ///< read: gives the same value
  };
  const Row rows[] = {
      {vtInt, "\1\2\3\4", "\1\2\3\4", "\1\2\3\4"},
      {vtGuid, kPayloads[vtGuid], kPayloads[vtGuid], kPayloads[vtGuid]},
      {vtReferencePointer, "\0\0\0\0\0\0\0\0"s, "\0\0\0\0\0\0\0\0"s, "\0\0\0\0\0\0\0\0"s},
      {vtString, "ab\0"s, "\2\0\0\0ab\0"s, "\3\0\0\0ab\xFF"s},
      {vtString, "\0"s, "\0\0\0\0\0"s, "\1\0\0\0\0"s},
      {vtWString, "a\0b\0\0\0"s, "\4\0\0\0a\0b\0\0\0"s, "\7\0\0\0a\0b\0\0\0\xFF"s},
      {vtWString, "\0\0"s, "\0\0\0\0\0\0"s, "\3\0\0\0\0\0\0"s},
      {vtBinaryData, "\1\2", "\2\0\0\0\1\2"s, "\2\0\0\0\1\2"s},
      {vtBinaryData, "", "\0\0\0\0"s, "\0\0\0\0"s},
      {vtBlobPtr, "\1\2", "\2\0\0\0\1\2"s, "\2\0\0\0\1\2"s},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(int{row.tag});
    OtherStream stream;
    FromRaw(row.tag, row.payload).WriteToStream(stream);
    EXPECT_EQ(stream.bytes, row.written);

    const std::string reply = row.read + "!";
    RawReader reader(reply.data(), reply.size());
    OtherStream other(reply);
    for (IKestrelStream* const source : {static_cast<IKestrelStream*>(&reader), static_cast<IKestrelStream*>(&other)}) {
      Variant value = Variant::Create(row.tag);
      value.ReadFromStream(*source);
      EXPECT_EQ(Raw(value), row.payload);
      const BlobPtr* const blob = value.GetIf<BlobPtr>();
      EXPECT_TRUE(!blob || blob->IsShared());
    }
    EXPECT_EQ(reader.GetRemaining(), 1u);
    EXPECT_EQ(other.bytes, "!");

    for (std::size_t n = 0; n < row.read.size(); ++n) {
      RawReader cut(row.read.data(), n);
      EXPECT_EQ(ErrorOf([&] { Variant::Create(row.tag).ReadFromStream(cut); }), kStreamEnds) << n;
    }
  }
}

TEST(VariantStream, HostileLengthsCostNothing) {
  const struct {
    std::uint8_t tag;
    std::string bytes;
  } rows[] = {
      {vtString, "\0\0\0\0abc"s},        {vtWString, "\1\0\0\0abc"s},          {vtString, "\xFF\xFF\xFF\xFFxyz"s},
      {vtWString, "\xFF\xFF\xFF\xFFx"s}, {vtBinaryData, "\xFF\xFF\xFF\xFFx"s}, {vtBlobPtr, "\xFF\xFF\xFF\xFFx"s},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(int{row.tag});
    fakes::ResetHeapPeak();
    const std::int64_t before = fakes::GetHeapUse().peak;
    RawReader reader(row.bytes.data(), row.bytes.size());
    EXPECT_EQ(ErrorOf([&] { Variant::Create(row.tag).ReadFromStream(reader); }), kStreamEnds);
    OtherStream other(row.bytes);
    EXPECT_EQ(ErrorOf([&] { Variant::Create(row.tag).ReadFromStream(other); }), kStreamEnds);
    EXPECT_LE(other.largestRead, 0x10000u);
    EXPECT_LT(fakes::GetHeapUse().peak - before, 0x20000);
  }
}

TEST(BinaryDataValue, HasABufferOfItsOwn) {
  const ReferencePointer<Buffer> shared = CreateBuffer("abc", 3);
  const Variant original{BinaryData(shared)};
  const Variant copy(original);
  shared->Append("d", 1);
  EXPECT_EQ(Raw(original), "abcd");
  EXPECT_EQ(Raw(copy), "abc");

  const Variant read = FromRaw(vtBinaryData, "abc");
  const auto bytes = read.GetIf<BinaryData>()->GetBytes();
  const ReferencePointer<Buffer> made = read.GetIf<BinaryData>()->GetBuffer();
  EXPECT_EQ(bytes[0], 'a') << "making the buffer leaves the bytes where they are";
  const Variant second(read);
  made->Append("d", 1);
  EXPECT_EQ(read.GetIf<BinaryData>()->GetBuffer(), made);
  EXPECT_EQ(Raw(read), "abcd");
  EXPECT_EQ(Raw(second), "abc");

  Variant again(original);
  again.ReadRaw(reinterpret_cast<const std::uint8_t*>("x"), 1);
  EXPECT_EQ(Raw(again), "x");

  const Variant empty{BinaryData(GetBuffer(SmallBufferList))};
  EXPECT_EQ(Variant(empty).GetIf<BinaryData>()->GetBuffer(), nullptr);
}

TEST(BlobValue, PointsIntoItsSourceUntilItOwnsItsBytes) {
  std::string source = "abc";
  Variant value = FromRaw(vtBlobPtr, source);
  source[0] = 'x';
  EXPECT_EQ(Raw(value), "xbc");
  value.OwnBytes();
  source.assign(source.size(), 'y');
  const Variant copy(value);
  value = FromRaw(vtBlobPtr, source);
  EXPECT_EQ(Raw(copy), "xbc");
  EXPECT_EQ(Raw(value), "yyy");

  BlobPtr shared = BlobPtr::AllocateShared(1);
  shared.Refer(source.data(), 2);
  EXPECT_FALSE(shared.IsShared()) << "no count lies before bytes of somebody else";
}

TEST(BlobValue, NeverFollowsAnAddressFromText) {
  Variant value = Variant::Create(vtBlobPtr);
  value.FromString("blobptr 4 4096");
  Variant copy(value);
  copy.OwnBytes();
  OtherStream stream;
  std::uint8_t room[4];
  EXPECT_EQ(copy.ToString(), "blobptr 40000000000001000");
  EXPECT_EQ(ErrorOf([&] { copy.WriteRaw(room); }), kBadPointer);
  EXPECT_EQ(ErrorOf([&] { copy.WriteToStream(stream); }), kBadPointer);
  EXPECT_EQ(stream.bytes, "");
}

class Counted : public ReferenceCounted {
 public:
  explicit Counted(int& alive) : alive_(alive) { ++alive_; }
  ~Counted() override { --alive_; }
  std::string ToString() const override { return "an object"; }

 private:
  int& alive_;
};

TEST(ReferenceValue, FollowsOnlyWhatAValueHolds) {
  int alive = 0;
  std::optional<Variant> value = Variant(VariantReferencePointer(new Counted(alive)));
  const std::string address = Raw(*value);
  RawReader reader(address.data(), address.size());
  Variant streamed = Variant::Create(vtReferencePointer);
  streamed.ReadFromStream(reader);
  std::optional<Variant> read = FromRaw(vtReferencePointer, address);
  value.reset();
  streamed = Variant(false);
  EXPECT_EQ(read->ToString(), "an object");
  EXPECT_EQ(ErrorOf([&] { read->ReadRaw(reinterpret_cast<const std::uint8_t*>("\0\0\0\0\0\0\0\1"), 8); }), kBadPointer);
  EXPECT_EQ(alive, 1) << "a refused address leaves the value as it was";

  int others = 0;
  const ReferencePointer<Counted> outside(new Counted(others));
  const auto* const notHeld = outside.Get();
  EXPECT_EQ(ErrorOf([&] {
              FromRaw(vtReferencePointer, {reinterpret_cast<const char*>(&notHeld), sizeof notHeld});
            }),
            kBadPointer);

  read.reset();
  EXPECT_EQ(alive, 0);
  EXPECT_EQ(ErrorOf([&] { FromRaw(vtReferencePointer, address); }), kBadPointer) << "the object is dead";
}

TEST(ReferenceValue, DyingObjectsAreNeverFollowed) {
  std::atomic<std::uint64_t> address{0};
  std::atomic<bool> done{false};
  std::thread follower([&] {
    while (!done) {
      const std::uint64_t number = address;
      const std::string payload(reinterpret_cast<const char*>(&number), sizeof number);
      std::string text;
      const std::string error = ErrorOf([&] { text = FromRaw(vtReferencePointer, payload).ToString(); });
      EXPECT_TRUE(error == kBadPointer || text == "<refptr/>" || text == "<nullref/>") << text << error;
    }
  });
  for (int i = 0; i < 20'000; ++i) {
    const VariantReferencePointer value(new ReferenceCounted);
    address = value.GetAddress();
  }
  done = true;
  follower.join();
}

}  // namespace
}  // namespace Kestrel
