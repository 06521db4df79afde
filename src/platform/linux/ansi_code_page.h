/// The system's ANSI code page: the one that TARN_ANSI_CODE_PAGE names by its Windows number, as tables made once.
///
/// The pages are those that Windows offers: 874, 932, 936, 949, 950, 1250 to 1258, and 65001, which is UTF-8 and needs
/// no tables. Without a setting, and with any other, it is 1252. A byte that the page does not define becomes the
/// character of the same value, so that it survives both ways; so does every byte above 0x7F, where the C library lacks
/// the page.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace platform {

class AnsiCodePage {
 public:
  /// The page of the process, made at the first call. Never destroyed, because lines are written until the very end.
  static const AnsiCodePage& Instance();

  /// All zeros, so that the static page lies in .bss and most of its memory is never touched.
  constexpr AnsiCodePage() = default;
  /// Fills the tables. Requires an object that is new.
  void Load(unsigned number);

  bool IsUtf8() const { return number_ == 65001; }
  /// Units that the text becomes, at most one for each byte. target: null to count them.
  std::size_t Widen(std::string_view source, char16_t* target) const;
  /// Bytes that the text becomes, at most two for each unit. target: null to count them.
  std::size_t Narrow(std::u16string_view source, char* target) const;

 private:
  class Converter;

  void AddSingleBytes(const Converter& page);
  void AddDoubleBytes(const Converter& page);
  void Add(const Converter& page, std::uint16_t code, char16_t unit);

  unsigned number_ = 0;
  char16_t single_[256] = {};           ///< kLeadByte where a second byte follows
  std::uint16_t narrow_[0x10000] = {};  ///< lead byte in the high half; 0: the page lacks the unit
  char16_t double_[0x8000] = {};        ///< by the code less 0x8000; 0: no character
};

}  // namespace platform
