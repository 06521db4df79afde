#include "valuelist/variant.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <string>
#include <typeindex>

#include "valuelist/buffer_pool.h"
#include "valuelist/error_of.h"

using namespace std::string_literals;

namespace Kestrel {
namespace {

constexpr char kNoText[] = "VariantExceptions::VariantStringConversionException: VariantException";
constexpr char kNoValue[] = "VariantExceptions::VariantStringToValueConversionException: ";
constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr Guid kGuid = {0x6f9619ff, 0x8b86, 0xd011, {0xb4, 0x2d, 0, 0xcf, 0x4f, 0xc9, 0x64, 0xff}};

Variant Binary(std::string_view bytes) {
  return Variant(BinaryData(CreateBuffer(bytes.data(), bytes.size())));
}

Variant FromText(std::uint8_t tag, std::string_view text) {
  Variant value = Variant::Create(tag);
  value.FromString(text);
  return value;
}

/// What an action gives, or how it fails.
template <class Action>
std::string TextOrError(Action action) {
  std::string text;
  const std::string error = ErrorOf([&] { text = action(); });
  return error.empty() ? text : error;
}

TEST(VariantTypes, HaveTheirTagSizeAndDefault) {
  struct Row {
    std::uint8_t written;
    std::uint64_t fixedSize;
    std::string text;
  };
  const Row rows[] = {
      {0, 1, "0"},
      {1, 1, "0"},
      {2, 1, "0"},
      {3, 1, "\0"s},
      {4, 2, "0"},
      {5, 2, "0"},
      {6, 4, "0"},
      {7, 4, "0"},
      {8, 8, "0"},
      {9, 4, "0."},
      {10, 8, "0."},
      {11, ~0ull, ""},
      {12, ~0ull, ""},
      {13, ~0ull, "binarydata 0 "},
      {14, ~0ull, "blobptr 00000000000000000"},
      {15, 8, "1601/01/01 00:00:00,000"},
      {16, 8, "1601/01/01 00:00:00,000 GMT+00:00"},
      {17, 8, "<nullref/>"},
      {18, 16, "00000000-0000-0000-0000-000000000000"},
      {19, 4, "0"},
      {8, 8, "0"},
  };
  std::set<std::type_index> types;
  for (std::uint8_t tag = 0; tag < std::size(rows); ++tag) {
    SCOPED_TRACE(int{tag});
    const Variant value = Variant::Create(tag);
    EXPECT_EQ(value.GetType(), rows[tag].written);
    EXPECT_EQ(value.GetFixedSize(), rows[tag].fixedSize);
    EXPECT_EQ(value.ToString(), rows[tag].text);
    types.insert(value.GetTypeInfo());
  }
  EXPECT_EQ(types.size(), 21u) << "also of tags 7 and 19, and of 8 and 20";
  EXPECT_EQ(ErrorOf([] { Variant::Create(21); }), "VariantExceptions::VariantInvalidTypeException: VariantException");
}

TEST(VariantText, IsWrittenInTheFormOfTheType) {
  const std::string line = "AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8gISIjJCUmJygpKissLS4vMDEyMzQ1Njc4";
  std::string counted;
  for (char c = 0; c < 58; ++c) counted += c;
  const struct {
    Variant value;
    std::string text;
  } rows[] = {
      {Variant(true), "1"},
      {Variant('\xFF'), "-1"},
      {Variant('A'), "65"},
      {Variant(static_cast<unsigned char>(200)), "200"},
      {Variant(static_cast<signed char>(65)), "A"},
      {Variant(std::uint64_t{0xFFFFFFFFFFFFFFFF}), "18446744073709551615"},
      {Variant(std::int64_t{-1}), "-1"},
      {Variant(3.0f), "3."},
      {Variant(-0.1f), "-0.1"},
      {Variant(0.05f), "5.e-002"},
      {Variant(999999.0f), "999999."},
      {Variant(1234567.0f), "1.23457e+006"},
      {Variant(1e20f), "1.e+020"},
      {Variant(100.0f), "100."},
      {Variant(-0.0f), "-0."},
      {Variant(-kInf), "-inf"},
      {Variant(kNan), "nan"},
      {Variant(0.1), "0.1"},
      {Variant(0.012), "1.2e-002"},
      {Variant(1.0 / 3), "0.333333333333333"},
      {Variant(123456789012345.0), "123456789012345."},
      {Variant(5e-324), "4.94065645841247e-324"},
      {Variant(u"\u00E4\0b"s), "\u00E4"},
      {Binary(std::string_view(counted).substr(0, 57)), "binarydata 57 " + line + "\r\n"},
      {Binary(counted), "binarydata 58 " + line + "\r\nOQ=="},
      {Variant(BlobPtr::Unreadable(0xABCDEF, 0x100000003)), "blobptr 30000000000ABCDEF"},
      {Variant(platform::FileTime{0x31672190, 0x01DA9BB1}), "2024/05/01 10:20:30,121"},
      {Variant(TKestrelDateTime(0xFF88'0000'0000'0000)), "1601/01/01 02:00:00,000 GMT+02:00"},
      {Variant(kGuid), "6f9619ff-8b86-d011-b42d-00cf4fc964ff"},
      {Variant(platform::FileTime{0, 0xFFFFFFFF}), kNoText},
  };
  for (const auto& row : rows) EXPECT_EQ(TextOrError([&] { return row.value.ToString(); }), row.text);
}

TEST(VariantText, IsReadByTheRuleOfTheType) {
  struct Row {
    std::uint8_t tag;
    std::string text, read;  ///< read: the text of the value, or the error
  };
  const std::string notBool = "StringConversionException: Failed to convert [";
  const std::string notBinary = kNoValue + "Tried to convert string to BinaryData: std::string = "s;
  const Row rows[] = {
      {0, " \t1x", "1"},
      {0, "+00", "0"},
      {0, "yes", notBool + "yes] into [bool]"},
      {0, "2", notBool + "2] into [bool]"},
      {0, "", notBool + "] into [bool]"},
      {1, "255", "-1"},
      {2, " 300.5", "44"},
      {2, "99999999999", "255"},
      {3, "65", "A"},
      {4, "-32769", "32767"},
      {5, "-1", "65535"},
      {6, "12abc", "12"},
      {6, "abc", "0"},
      {6, "- 1", "0"},
      {6, "4294967295", "4294967295"},
      {6, "-1", "4294967295"},
      {7, "4294967295", "2147483647"},
      {19, "-99999999999", "-2147483648"},
      {8, "-9223372036854775809", "-9223372036854775808"},
      {20, "18446744073709551615", "9223372036854775807"},
      {20, "-1", "18446744073709551615"},
      {9, " -1.5e1x", "-15."},
      {9, ".5", "0.5"},
      {9, "0x10", "0."},
      {9, "1e", notBool + "1e] into [float]"},
      {9, "inf", notBool + "inf] into [float]"},
      {9, "1e39", notBool + "1e39] into [float]"},
      {9, "+-1", notBool + "+-1] into [float]"},
      {10, "\n+2.5,", "2.5"},
      {10, "-1e", "-1."},
      {10, "text", "0."},
      {10, "+-1", "0."},
      {10, "-1e400", "-inf"},
      {10, "0." + std::string(400, '0') + "1", "0."},
      {10, "1" + std::string(400, '0'), "inf"},
      {10, "0x1.8p3", "12."},
      {10, "0xp", "0."},
      {10, "0x1" + std::string(400, '0') + "p-500", "inf"},
      {11, " a\0b"s, " a\0b"s},
      {12, "\u00E4", "\u00E4"},
      {13, "binarydata 2 QUJD", "binarydata 2 QUI="},
      {13, " binarydata\t4\nQUJD x", "binarydata 4 QUJDAA=="},
      {13, "binarydata x QUJD", "binarydata 0 "},
      {13, "binarydata1 QQ==", notBinary + "binarydata1 QQ=="},
      {13, "binarydata 65537 QQ==", notBinary + "binarydata 65537 QQ=="},
      {14, "blobptr 3 26", "blobptr 3000000000000001A"},
      {14, "blob 3 26", kNoValue + "Tried to convert string to BlobPtr: string = blob 3 26"s},
      {15, "2024-05-01T10:20:30.121", "2024/05/01 10:20:30,121"},
      {15, "2024-02-30", kNoText},
      {16, "2024/05/01 10:20 GMT+02:00", "2024/05/01 10:20:00,000 GMT+02:00"},
      {16, "2024/05/01 10:20",
       "EKestrelDateTime: Invalid hour part in date/time string. Expected a number from 0 to 14."},
      {17, "<nullref/>", kNoValue + "Tried to read VariantReferencePointer from string<nullref/>"s},
      {18, "{6F9619FF-8B86-D011-B42D-00CF4FC964FF}", "6f9619ff-8b86-d011-b42d-00cf4fc964ff"},
      {18, "42", "GuidConversionException: Conversion of guid '42' failed."},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(int{row.tag});
    EXPECT_EQ(TextOrError([&] { return FromText(row.tag, row.text).ToString(); }), row.read) << row.text;
  }
}

TEST(VariantConversion, FollowsTheRuleOfSourceAndTarget) {
  const std::uint64_t lowest = 0x8000000000000000;
  const struct {
    Variant source;
    std::uint8_t small;
    std::string flag;  ///< "0", "1", or what stands in the error
    std::uint32_t number;
    std::uint64_t wide;
    std::u16string text;
  } rows[] = {
      {Variant(true), 1, "1", 1, 1, u"1"},
      {Variant('\xFE'), 0xFE, "1", 0xFFFFFFFE, 0xFFFFFFFFFFFFFFFE, u"-2"},
      {Variant(static_cast<unsigned char>(0xFE)), 0xFE, "1", 0xFE, 0xFE, u"254"},
      {Variant(static_cast<signed char>(-2)), 0xFE, "1", 0xFFFFFFFE, 0xFFFFFFFFFFFFFFFE, u"\uFFFD"},
      {Variant(std::int16_t{-256}), 0, "1", 0xFFFFFF00, 0xFFFFFFFFFFFFFF00, u"-256"},
      {Variant(std::uint16_t{0xFF00}), 0, "1", 0xFF00, 0xFF00, u"65280"},
      {Variant(std::uint32_t{0xFFFFFFFF}), 0xFF, "1", 0xFFFFFFFF, 0xFFFFFFFF, u"4294967295"},
      {Variant(std::int32_t{-1}), 0xFF, "1", 0xFFFFFFFF, ~0ull, u"-1"},
      {Variant(VariantLong{-1}), 0xFF, "1", 0xFFFFFFFF, ~0ull, u"-1"},
      {Variant(std::int64_t{0x100000000}), 0, "1", 0, 0x100000000, u"4294967296"},
      {Variant(std::uint64_t{0xFFFFFFFFFFFFFFFF}), 0xFF, "1", 0xFFFFFFFF, ~0ull, u"18446744073709551615"},
      {Variant(2.9), 2, "1", 2, 2, u"2.9"},
      {Variant(-1.5f), 0xFF, "1", 0xFFFFFFFF, ~0ull, u"-1.5"},
      {Variant(-0.0), 0, "0", 0, 0, u"-0."},
      {Variant(kNan), 0, "1", 0, lowest, u"nan"},
      {Variant(2147483648.0), 0, "1", 0x80000000, 0x80000000, u"2147483648."},
      {Variant(9223372036854777856.0), 0, "1", 0, lowest + 2048, u"9.22337203685478e+018"},
      {Variant(-kInf), 0, "1", 0, lowest, u"-inf"},
      {Variant("300"), 44, "300", 300, 300, u"300"},
      {Variant(" 1x"), 1, "1", 1, 1, u" 1x"},
      {Variant("\u00E4"), 0, "\u00E4", 0, 0, u"\u00E4"},
      {Variant(u"42"), 42, "42", 42, 42, u"42"},
      {Variant(u"1\0002"s), 1, "1", 1, 1, u"1\0002"s},
      {Binary("A"), 0, "binarydata 1 QQ==", 0, 0, u"binarydata 1 QQ=="},
      {Variant::Create(vtBlobPtr), 0, "blobptr 00000000000000000", 0, 0, u"blobptr 00000000000000000"},
      {Variant::Create(vtFileTime), 0x41, "1601/01/01 00:00:00,000", 1601, 1601, u"1601/01/01 00:00:00,000"},
      {Variant::Create(vtReferencePointer), 0, "<nullref/>", 0, 0, u"<nullref/>"},
      {Variant(kGuid), 6, "6f9619ff-8b86-d011-b42d-00cf4fc964ff", 6, 6, u"6f9619ff-8b86-d011-b42d-00cf4fc964ff"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.source.ToString());
    EXPECT_EQ(row.source.To<unsigned char>(), row.small);
    const std::string flag = TextOrError([&] { return row.source.To<bool>() ? "1" : "0"; });
    EXPECT_EQ(flag, row.flag.size() == 1
                        ? row.flag
                        : "StringConversionException: Failed to convert [" + row.flag + "] into [bool]");
    EXPECT_EQ(row.source.To<std::uint32_t>(), row.number);
    EXPECT_EQ(row.source.To<std::uint64_t>(), row.wide);
    EXPECT_EQ(row.source.To<std::string>(), row.source.ToString());
    EXPECT_EQ(row.source.To<std::u16string>(), row.text);
  }
}

}  // namespace
}  // namespace Kestrel
