#include "platform/linux/ansi_code_page.h"

#include <iconv.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "platform/linux/text.h"

namespace platform {
namespace {

/// Not a character, so no byte means it.
constexpr char16_t kLeadByte = 0xFFFF;
constexpr unsigned kFirstDoubleByte = 0x8000;
/// What stands for a pair of bytes that mean nothing.
constexpr char16_t kUnknownPair = u'?';

/// One character of a code page in UTF-16: 0 where the bytes mean nothing or need two units, kLeadByte where they are
/// the beginning of a character.
char16_t Convert(iconv_t converter, const char* bytes, std::size_t count) {
  char16_t units[2] = {};
  auto* source = const_cast<char*>(bytes);
  auto* target = reinterpret_cast<char*>(units);
  std::size_t room = sizeof units;
  iconv(converter, nullptr, nullptr, nullptr, nullptr);
  if (iconv(converter, &source, &count, &target, &room) == static_cast<std::size_t>(-1))
    return errno == EINVAL ? kLeadByte : u'\0';
  return room == sizeof units[1] ? units[0] : u'\0';
}

}  // namespace

const AnsiCodePage& AnsiCodePage::Instance() {
  static const AnsiCodePage page;
  return page;
}

/// The tables are left alone: the only object is static and so begins as zeros, of which most are never touched.
AnsiCodePage::AnsiCodePage()
    : number_(static_cast<unsigned>(std::atoi(EnvironmentText("TARN_ANSI_CODE_PAGE", "1252").c_str()))) {
  iconv_t const converter = iconv_open("UTF-16LE", ("CP" + std::to_string(number_)).c_str());
  AddSingleBytes(converter);
  if (converter != reinterpret_cast<iconv_t>(-1)) {
    AddDoubleBytes(converter);
    iconv_close(converter);
  }
}

/// A byte that the page does not define is the control character of the same value; so is every byte, where the system
/// does not know the page.
void AnsiCodePage::AddSingleBytes(void* converter) {
  const bool known = converter != reinterpret_cast<iconv_t>(-1);
  for (unsigned code = 0; code < 0x100; ++code) {
    const char byte = static_cast<char>(code);
    const char16_t unit = known ? Convert(converter, &byte, 1) : u'\0';
    Add(static_cast<std::uint16_t>(code), unit ? unit : static_cast<char16_t>(code));
  }
}

void AnsiCodePage::AddDoubleBytes(void* converter) {
  for (unsigned code = kFirstDoubleByte; code < 0x10000; ++code) {
    if (single_[code >> 8] != kLeadByte) continue;
    const char bytes[] = {static_cast<char>(code >> 8), static_cast<char>(code)};
    const char16_t unit = Convert(converter, bytes, sizeof bytes);
    if (unit && unit != kLeadByte) Add(static_cast<std::uint16_t>(code), unit);
  }
}

/// Of several codes for one character the first is written.
void AnsiCodePage::Add(std::uint16_t code, char16_t unit) {
  if (code < 0x100)
    single_[code] = unit;
  else
    double_[code - kFirstDoubleByte] = unit;
  if (unit != kLeadByte && narrow_[unit] == 0) narrow_[unit] = code;
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
