/// The ANSI code page that TARN_ANSI_CODE_PAGE names (a Windows code page number; 1252 unless set), as tables made
/// once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace platform {

class AnsiCodePage {
 public:
  static const AnsiCodePage& Instance();

  bool IsUtf8() const { return number_ == 65001; }
  /// Units that the text becomes, at most one for each byte. target: null to count them.
  std::size_t Widen(std::string_view source, char16_t* target) const;
  /// Bytes that the text becomes, at most two for each unit. target: null to count them.
  std::size_t Narrow(std::u16string_view source, char* target) const;

 private:
  AnsiCodePage();
  void AddSingleBytes(void* converter);
  void AddDoubleBytes(void* converter);
  void Add(std::uint16_t code, char16_t unit);

  unsigned number_;
  char16_t single_[256];           ///< kLeadByte where a second byte follows
  std::uint16_t narrow_[0x10000];  ///< lead byte in the high half; 0: the page lacks the unit
  char16_t double_[0x8000];        ///< by the code less 0x8000; 0: no character
};

}  // namespace platform
