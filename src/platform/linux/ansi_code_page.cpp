#include "platform/linux/ansi_code_page.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <string>

#include "platform/linux/iconv.h"
#include "platform/linux/text.h"

namespace platform {
namespace {

constexpr unsigned kPages[] = {874, 932, 936, 949, 950, 1250, 1251, 1252, 1253, 1254, 1255, 1256, 1257, 1258, 65001};
constexpr unsigned kDefaultPage = 1252;

/// Not a character, so no byte means it.
constexpr char16_t kLeadByte = 0xFFFF;
constexpr unsigned kFirstDoubleByte = 0x8000;
/// Replaces a lead byte that has no second byte, or whose pair means nothing.
constexpr char16_t kUnknownPair = u'?';

unsigned PageOfTheSetting() {
  const std::string setting = EnvironmentText("TARN_ANSI_CODE_PAGE", "");
  unsigned number = 0;
  const char* const end = setting.data() + setting.size();
  const bool isNumber = std::from_chars(setting.data(), end, number).ptr == end;
  return isNumber && std::ranges::find(kPages, number) != std::end(kPages) ? number : kDefaultPage;
}

}  // namespace

/// Both directions of a page, character by character.
class AnsiCodePage::Converter {
 public:
  explicit Converter(const std::string& page)
      : widening_("UTF-16LE", page.c_str()), narrowing_(page.c_str(), "UTF-16LE") {}

  bool IsKnown() const { return widening_.IsOpen() && narrowing_.IsOpen(); }

  /// 0 where the bytes mean nothing or need two units, kLeadByte where they are the beginning of a character.
  char16_t Widen(const char* bytes, std::size_t count) const {
    char16_t units[2] = {};
    const std::size_t written = widening_.Convert(bytes, count, units, sizeof units);
    if (written == sizeof units[0]) return units[0];
    return written == 0 && errno == EINVAL ? kLeadByte : u'\0';
  }

  /// The code of one or two bytes that the page writes for the unit, lead byte in the high half; 0 where there is none.
  std::uint16_t Narrow(char16_t unit) const {
    unsigned char bytes[4] = {};
    const std::size_t written = narrowing_.Convert(&unit, sizeof unit, bytes, sizeof bytes);
    if (written == 1) return bytes[0];
    return static_cast<std::uint16_t>(written == 2 ? bytes[0] << 8 | bytes[1] : 0);
  }

 private:
  Iconv widening_;
  Iconv narrowing_;
};

const AnsiCodePage& AnsiCodePage::Instance() {
  static constinit AnsiCodePage page;
  static const bool loaded = (page.Load(PageOfTheSetting()), true);
  static_cast<void>(loaded);
  return page;
}

void AnsiCodePage::Load(unsigned number) {
  number_ = number;
  if (IsUtf8()) return;
  const Converter page("CP" + std::to_string(number));
  AddSingleBytes(page);
  AddDoubleBytes(page);
}

void AnsiCodePage::AddSingleBytes(const Converter& page) {
  for (unsigned code = 0; code < 0x100; ++code) {
    const char byte = static_cast<char>(code);
    const char16_t unit = page.IsKnown() ? page.Widen(&byte, 1) : u'\0';
    Add(page, static_cast<std::uint16_t>(code), unit ? unit : static_cast<char16_t>(code));
  }
}

void AnsiCodePage::AddDoubleBytes(const Converter& page) {
  for (unsigned code = kFirstDoubleByte; code < 0x10000; ++code) {
    if (single_[code >> 8] != kLeadByte) continue;
    const char bytes[] = {static_cast<char>(code >> 8), static_cast<char>(code)};
    const char16_t unit = page.Widen(bytes, sizeof bytes);
    if (unit && unit != kLeadByte) Add(page, static_cast<std::uint16_t>(code), unit);
  }
}

/// Of several codes for one character the first is written, unless the page itself writes another.
void AnsiCodePage::Add(const Converter& page, std::uint16_t code, char16_t unit) {
  if (code < 0x100)
    single_[code] = unit;
  else
    double_[code - kFirstDoubleByte] = unit;
  if (unit != kLeadByte && (narrow_[unit] == 0 || page.Narrow(unit) == code)) narrow_[unit] = code;
}

std::size_t AnsiCodePage::Widen(std::string_view source, char16_t* target) const {
  std::size_t units = 0;
  for (std::size_t i = 0; i < source.size(); ++i, ++units) {
    const unsigned byte = static_cast<unsigned char>(source[i]);
    char16_t unit = single_[byte];
    if (unit == kLeadByte) {
      const unsigned second = i + 1 < source.size() ? static_cast<unsigned char>(source[i + 1]) : 0;
      unit = second ? double_[(byte << 8 | second) - kFirstDoubleByte] : u'\0';
      if (second) ++i;
      if (!unit) unit = kUnknownPair;
    }
    if (target) target[units] = unit;
  }
  return units;
}

std::size_t AnsiCodePage::Narrow(std::u16string_view source, char* target) const {
  std::size_t bytes = 0;
  const auto put = [&](unsigned byte) {
    if (target) target[bytes] = static_cast<char>(byte);
    ++bytes;
  };
  for (const char16_t unit : source) {
    const std::uint16_t code = narrow_[unit];
    if (code >= 0x100) put(code >> 8U);
    put(code || !unit ? code & 0xFFU : unsigned{'?'});
  }
  return bytes;
}

}  // namespace platform
