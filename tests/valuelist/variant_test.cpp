#include "valuelist/variant.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "fakes/counting_allocator.h"
#include "thrown.h"
#include "valuelist/buffer_pool.h"

using namespace std::string_literals;

namespace Kestrel {
namespace {

constexpr char kNoText[] = "VariantExceptions::VariantStringConversionException: VariantException";
constexpr char kNoValue[] = "VariantExceptions::VariantStringToValueConversionException: ";
constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

Variant FromRaw(std::uint8_t tag, std::string_view payload) {
  Variant value = Variant::Create(tag);
  value.ReadRaw(reinterpret_cast<const std::uint8_t*>(payload.data()), payload.size());
  return value;
}

/// What an action gives, or how it fails.
template <class Action>
std::string TextOrError(Action action) {
  std::string text;
  const std::string error = ErrorOf([&] { text = action(); });
  return error.empty() ? text : error;
}

/// Texts that messages rarely need. The second decoder (tests/oracle) checks texts and conversions of every type.
TEST(VariantText, IsWrittenInTheFormOfTheType) {
  const std::pair<Variant, std::string> rows[] = {{Variant(platform::FileTime{0, 0xFFFFFFFF}), kNoText},
                                                  {Variant(u"\u00E4\0b"s), "\u00E4"},
                                                  {Variant(static_cast<unsigned char>(200)), "200"},
                                                  {Variant(BlobPtr()), "blobptr 00000000000000000"},
                                                  {Variant(BlobPtr(nullptr, 0x100000005)), "blobptr 50000000000000000"},
                                                  {Variant(-kNan), "-nan(ind)"},
                                                  {Variant(0.05), "5.e-002"},
                                                  {Variant(123456.0), "123456."},
                                                  {Variant(-0.1f), "-0.1"},
                                                  {Variant(1e20f), "1.e+020"},
                                                  {Variant(-kInf), "-inf"},
                                                  {Variant(kNan), "nan"},
                                                  {Variant(5e-324), "4.94065645841247e-324"}};
  for (const auto& [value, text] : rows) EXPECT_EQ(TextOrError([&value = value] { return value.ToString(); }), text);
}

TEST(VariantText, OfTextAndBytesTellsThatMemoryIsMissing) {
  for (const Variant& value : {Variant(std::string(100, 'x')), Variant(BlobPtr())}) {
    const fakes::FailingAllocation failing(1);
    EXPECT_THROW(value.ToString(), std::bad_alloc);
  }
}

TEST(VariantText, IsReadByTheRuleOfTheType) {
  const std::string notBool = "StringConversionException: Failed to convert [", notFloat = "] into [float]";
  const std::string zeros(400, '0'), instant = "1601/01/01 00:00:00,000";
  struct Case {
    std::string text, read;  ///< read: the text of the value then, or the error
  };
  const struct {
    std::string initial;  ///< the text of a new value
    std::vector<Case> cases;
  } rows[] = {
      {"0",
       {Case{" \t1x", "1"}, Case{"+00", "0"}, Case{"2", notBool + "2] into [bool]"},
        Case{"", notBool + "] into [bool]"}}},
      {"0", {Case{"255", "-1"}}},
      {"0", {Case{" 300.5", "44"}, Case{"99999999999", "255"}}},
      {"\0"s, {Case{"65", "A"}}},
      {"0", {Case{"-32769", "32767"}}},
      {"0", {Case{"-1", "65535"}}},
      {"0", {Case{"12abc", "12"}, Case{"abc", "0"}, Case{"- 1", "0"}, Case{"-1", "4294967295"}}},
      {"0", {Case{"4294967295", "2147483647"}}},
      {"0", {Case{"-9223372036854775809", "-9223372036854775808"}}},
      {"0.",
       {Case{" -1.5e1x", "-15."}, Case{".5", "0.5"}, Case{"0x10", "0."}, Case{"1e", notBool + "1e" + notFloat},
        Case{"1e39", notBool + "1e39" + notFloat}, Case{"1E", notBool + "1E" + notFloat}, Case{"-1e-50", "-0."},
        Case{"1e-50e", "0."}, Case{"2e3elf", "2000."}, Case{"", notBool + notFloat},
        Case{".", notBool + "." + notFloat}, Case{"+-1", notBool + "+-1" + notFloat}}},
      {"0.",
       {Case{"\n+2.5,", "2.5"}, Case{"+-1", "0."}, Case{"-1e400", "-inf"}, Case{"1" + zeros, "inf"},
        Case{"0x1.8p3", "12."}, Case{"0x1p+-4", "1."}, Case{"0x1" + zeros + "p-500", "inf"}, Case{"0X.8", "0.5"},
        Case{"0x.F", "0.9375"}, Case{"0x", "0."}, Case{"0x.", "0."}, Case{"0xAp-2000", "0."}, Case{"0xFP2000", "inf"},
        Case{"0." + zeros + "1", "0."}, Case{"0." + zeros + "1e500", "1.e+099"}, Case{"0." + zeros + "1e50", "0."},
        Case{"1E9999999999", "inf"}, Case{"", "0."}}},
      {"", {Case{" a\0b"s, " a\0b"s}}},
      {"", {Case{"\u00E4", "\u00E4"}}},
      {"binarydata 0 ",
       {Case{"binarydata 2 QUJD", "binarydata 2 QUI="}, Case{" binarydata\t4\nQUJD x", "binarydata 4 QUJDAA=="},
        Case{"binarydata x", "binarydata 0 "},
        Case{"binarydatax 2 QUI=",
             kNoValue + "Tried to convert string to BinaryData: std::string = binarydatax 2 QUI="s},
        Case{"binarydata 5 x QUJD", "binarydata 5 AAAAAAA="}, Case{"binarydata 4294967296 QQ==", "binarydata 0 "},
        Case{"binarydata -4294967296 QQ==", "binarydata 0 "},
        Case{"binarydata 65537 QQ==",
             kNoValue + "Tried to convert string to BinaryData: std::string = binarydata 65537 QQ=="s}}},
      {"blobptr 00000000000000000",
       {Case{"blobptr 3 26", "blobptr 3000000000000001A"}, Case{"blobptr 3", "blobptr 30000000000000000"},
        Case{"blobptr", "blobptr 00000000000000000"},
        Case{"blobptrx 3 26", kNoValue + "Tried to convert string to BlobPtr: string = blobptrx 3 26"s}}},
      {instant, {Case{"2024-05-01T10:20:30.121", "2024/05/01 10:20:30,121"}, Case{"2024-02-30", kNoText}}},
      {instant + " GMT+00:00", {Case{"2024/05/01 10:20 GMT+02:00", "2024/05/01 10:20:00,000 GMT+02:00"}}},
      {"<nullref/>", {Case{"<nullref/>", kNoValue + "Tried to read VariantReferencePointer from string<nullref/>"s}}},
      {"00000000-0000-0000-0000-000000000000",
       {Case{"42", "GuidConversionException: Conversion of guid '42' failed."}}},
      {"0", {Case{"-99999999999", "-2147483648"}}},
      {"0", {Case{"18446744073709551615", "9223372036854775807"}, Case{"-1", "18446744073709551615"}}}};
  for (std::uint8_t tag = 0; tag < std::size(rows); ++tag) {
    SCOPED_TRACE(int{tag});
    Variant value = Variant::Create(tag);
    EXPECT_EQ(value.ToString(), rows[tag].initial);
    for (const auto& [text, read] : rows[tag].cases) {
      const auto convert = [&value, &text = text] { return value.FromString(text), value.ToString(); };
      EXPECT_EQ(TextOrError(convert), read) << text;
    }
  }
}

TEST(VariantConversion, OfFloatingPointBeyondTheTargetIsWhatTheProcessorGives) {
  for (const auto& [number, truth, byte, narrow, wide] : {std::tuple(kNan, true, 0, 0u, 0x8000000000000000u),
                                                          {9223372036854777856.0, true, 0, 0u, 9223372036854777856u},
                                                          {18446744073709551616.0, true, 0, 0u, 0x8000000000000000u},
                                                          {2147483905.0, true, 0, 2147483905u, 2147483905u},
                                                          {2147483647.9, true, 255, 2147483647u, 2147483647u},
                                                          {-258.9, true, 254, 0xFFFFFEFEu, 0xFFFFFFFFFFFFFEFEu},
                                                          {0.5, true, 0, 0u, 0u},
                                                          {-0.0, false, 0, 0u, 0u}}) {
    SCOPED_TRACE(number);
    EXPECT_EQ(Variant(number).To<bool>(), truth);
    EXPECT_EQ(Variant(number).To<unsigned char>(), byte);
    EXPECT_EQ(Variant(number).To<std::uint32_t>(), narrow);
    EXPECT_EQ(Variant(number).To<std::uint64_t>(), wide);
  }
  EXPECT_EQ(Variant(static_cast<signed char>(-2)).To<std::u16string>(), u"\uFFFD");
  EXPECT_EQ(Variant(u"1\0002"s).To<std::u16string>(), u"1\0002"s);
}

constexpr char kStreamEnds[] = "IKestrelStream::IKestrelStreamException: RawStreamer - read failed";
constexpr char kBadPointer[] = "BufferException: invalid pointer request";

std::string Raw(const Variant& value) {
  std::string payload(value.GetSize(), '\xEE');
  value.WriteRaw(reinterpret_cast<std::uint8_t*>(payload.data()));
  return payload;
}

struct WrittenStream : IKestrelStream {
  void Write(const void* source, std::uint64_t n) override { bytes.append(static_cast<const char*>(source), n); }
  void Read(void*, std::uint64_t) override { FAIL(); }
  std::string bytes;
};

TEST(VariantRaw, EveryTypeIsCopiedMovedAndWrittenAsItWasRead) {
  for (std::uint8_t tag = 0; tag < kVariantTypeCount; ++tag) {
    SCOPED_TRACE(int{tag});
    const std::uint64_t size = Variant::Create(tag).GetFixedSize();
    std::string payload = tag == vtBool ? "\1" : "\1\2\3\4\5\6\7\1\x9\xA\xB\xC\xD\xE\xF\x10"s.substr(0, size);
    if (tag == vtString || tag == vtWString) payload = "a string beyond the small ones\0\0"s;
    if (tag == vtReferencePointer) payload.assign(size, '\0');
    if (tag == vtString) payload.pop_back();
    Variant value = FromRaw(tag, payload), copy(value), assigned("old");
    assigned = copy;
    copy = Variant::Create(tag);
    EXPECT_EQ(Raw(value), payload);
    copy = std::move(assigned);
    const Variant moved(std::move(copy));
    EXPECT_EQ(Raw(moved), payload);
    EXPECT_EQ(moved.GetTypeInfo(), Variant::Create(tag).GetTypeInfo());
  }
}

TEST(VariantStream, IsWrittenAndReadInItsTwoForms) {
  // a tag, a payload, how it is written, and what gives the same value when it is read
  for (const auto& [tag, payload, form, source] :
       {std::tuple(vtInt, "\1\2\3\4"s, "\1\2\3\4"s, "\1\2\3\4"s),
        std::tuple(vtString, "ab\0"s, "\2\0\0\0ab\0"s, "\3\0\0\0ab\xFF"s),
        std::tuple(vtWString, "a\0b\0\0\0"s, "\4\0\0\0a\0b\0\0\0"s, "\7\0\0\0a\0b\0\0\0\xFF"s),
        std::tuple(vtBinaryData, ""s, "\0\0\0\0"s, "\0\0\0\0"s),
        std::tuple(vtBlobPtr, "\1\2"s, "\2\0\0\0\1\2"s, "\2\0\0\0\1\2"s)}) {
    SCOPED_TRACE(tag);
    WrittenStream written;
    FromRaw(tag, payload).WriteToStream(written);
    EXPECT_EQ(written.bytes, form);
    const std::string bytes = source + "!";
    RawReader reader(bytes.data(), bytes.size());
    Variant value = Variant::Create(tag);
    value.ReadFromStream(reader);
    EXPECT_EQ(Raw(value), payload);
    EXPECT_TRUE(tag != vtBlobPtr || value.GetIf<BlobPtr>()->IsShared());
    char last = 0;
    reader.Read(&last, 1);
    EXPECT_EQ(last, '!');
    EXPECT_EQ(ErrorOf([&] { value.WriteToStream(reader); }),
              "IKestrelStream::IKestrelStreamException: RawReader - write not allowed");
  }
}

TEST(VariantStream, RefusesTooLittleAtNoCost) {
  const std::string huge = "\xFF\xFF\xFF\xFFx";
  for (const auto& [tag, bytes] :
       {std::pair(vtInt, "\1\2\3"s), std::pair(vtString, "\0\0\0\0abc"s), std::pair(vtString, "\2\0\0\0a"s),
        std::pair(vtString, huge), std::pair(vtWString, "\1\0\0\0abc"s), std::pair(vtWString, huge),
        std::pair(vtBinaryData, huge), std::pair(vtBlobPtr, "\1\0\0"s), std::pair(vtBlobPtr, huge)}) {
    SCOPED_TRACE(tag);
    fakes::ResetHeapPeak();
    const std::int64_t before = fakes::GetHeapUse().peak;
    RawReader reader(bytes.data(), bytes.size());
    EXPECT_EQ(ErrorOf([&reader, tag = tag] { Variant::Create(tag).ReadFromStream(reader); }), kStreamEnds);
    EXPECT_LT(fakes::GetHeapUse().peak - before, 0x1000);
  }
}

TEST(BinaryDataValue, HasABufferOfItsOwn) {
  for (const Variant& original : {Variant(BinaryData(CreateBuffer("abc", 3))), FromRaw(vtBinaryData, "abc")}) {
    const ReferencePointer<Buffer> buffer = original.GetIf<BinaryData>()->GetBuffer();
    Variant copy(original);
    buffer->Append("d", 1);
    EXPECT_EQ(original.GetIf<BinaryData>()->GetBuffer(), buffer);
    EXPECT_EQ(Raw(original) + Raw(copy), "abcdabc");
    copy = original;
    copy.ReadRaw(reinterpret_cast<const std::uint8_t*>("x"), 1);
    EXPECT_EQ(Raw(original) + Raw(copy), "abcdx");
  }
  const std::string bytes(70'000, 'x');
  Variant large = FromRaw(vtBinaryData, bytes);
  large.FromString(large.ToString());
  EXPECT_EQ(Raw(large), bytes.substr(0, 57) + std::string(bytes.size() - 57, '\0')) << "the text's first line";
  const Variant empty{BinaryData(GetBuffer(SmallBufferList))};
  EXPECT_EQ(Variant(empty).GetIf<BinaryData>()->GetBuffer(), nullptr);
}

TEST(BlobValue, PointsIntoItsSourceUntilItOwnsItsBytesAndNowhereFromText) {
  std::string source = "abc";
  Variant value = FromRaw(vtBlobPtr, source);
  source[0] = 'x';
  EXPECT_EQ(Raw(value), "xbc");
  value.OwnBytes();
  source[0] = 'y';
  EXPECT_EQ(Raw(Variant(value)), "xbc");
  EXPECT_THROW(BlobPtr(source.data(), ~std::uint64_t{0}).OwnBytes(), std::bad_alloc);
  value.FromString("blobptr 4 4096");
  Variant unreadable(value);
  unreadable.OwnBytes();
  WrittenStream stream;
  EXPECT_EQ(unreadable.ToString(), "blobptr 40000000000001000");
  EXPECT_EQ(ErrorOf([&] { Raw(unreadable); }), kBadPointer);
  EXPECT_EQ(ErrorOf([&] { unreadable.WriteToStream(stream); }), kBadPointer);
  unreadable.FromString("blobptr 0 4096");
  EXPECT_EQ(Raw(unreadable), "");
}

std::string AddressOf(const ReferenceCounted* object) {
  return {reinterpret_cast<const char*>(&object), sizeof object};
}

TEST(ReferenceValue, FollowsOnlyWhatAValueHolds) {
  struct Counted : ReferenceCounted {
    explicit Counted(int& count) : alive(count) { ++alive; }
    ~Counted() override { --alive; }
    std::string ToString() const override { return "an object"; }
    int& alive;
  };
  int alive = 0;
  const ReferencePointer<ReferenceCounted> outside(new ReferenceCounted);
  std::optional<Variant> value = Variant(VariantReferencePointer(new Counted(alive)));
  const std::string address = Raw(*value);
  std::optional<Variant> read = FromRaw(vtReferencePointer, address);
  value.reset();
  for (const std::string& refused : {"\0\0\0\0\0\0\0\1"s, AddressOf(outside.Get())}) {
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(refused.data());
    EXPECT_EQ(ErrorOf([&] { read->ReadRaw(bytes, refused.size()); }), kBadPointer) << "held by no value";
    EXPECT_EQ(read->ToString(), "an object") << "a refused address leaves the value as it was";
  }
  read.reset();
  EXPECT_EQ(alive, 0);
  EXPECT_EQ(ErrorOf([&] { FromRaw(vtReferencePointer, address); }), kBadPointer) << "the object is dead";
}

TEST(ReferenceValue, DyingObjectsAreNeverFollowed) {
  std::atomic<const ReferenceCounted*> object{nullptr};
  std::atomic<bool> done{false};
  std::thread follower([&] {
    while (!done) {
      const auto follow = [&] { return FromRaw(vtReferencePointer, AddressOf(object)).ToString(); };
      EXPECT_NE(("|<refptr/>|<nullref/>|"s + kBadPointer).find(TextOrError(follow)), std::string::npos);
    }
  });
  for (int i = 0; i < 20'000; ++i) {
    const VariantReferencePointer value(new ReferenceCounted);
    object = value.Get();
  }
  done = true;
  follower.join();
}

}  // namespace
}  // namespace Kestrel
