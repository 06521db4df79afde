#include "tools/text.h"

#include <algorithm>
#include <cstdint>
#include <memory>

#include "base/text_conversion.h"

namespace tarnfind {

namespace {

/// By the first byte: how long the sequence is, and the smallest code point that needs this length.
struct SequenceForm {
  unsigned char mask;
  unsigned char lead;
  unsigned char payload;
  std::size_t length;
  char32_t smallest;
};
constexpr SequenceForm kSequenceForms[] = {
    {0x80, 0x00, 0x7F, 1, 0x0},
    {0xE0, 0xC0, 0x1F, 2, 0x80},
    {0xF0, 0xE0, 0x0F, 3, 0x800},
    {0xF8, 0xF0, 0x07, 4, 0x10000},
};

struct CodePointRange {
  char32_t first;
  char32_t last;
};
constexpr CodePointRange kControls[] = {
    {0x00, 0x1F},        // C0: escape sequences, line ends
    {0x7F, 0x9F},        // DEL and C1: escape sequences in one character
    {0xAD, 0xAD},        // soft hyphen: invisible
    {0x34F, 0x34F},      // invisible
    {0x61C, 0x61C},      // mark of direction
    {0x115F, 0x1160},    // Hangul fillers: invisible
    {0x17B4, 0x17B5},    // invisible
    {0x180B, 0x180F},    // invisible
    {0x200B, 0x200F},    // invisible, and marks of direction
    {0x2028, 0x202E},    // line ends, and overrides of direction
    {0x2060, 0x206F},    // invisible, and isolates of direction
    {0x3164, 0x3164},    // Hangul filler: invisible
    {0xFE00, 0xFE0F},    // variation selectors: invisible
    {0xFEFF, 0xFEFF},    // byte-order mark
    {0xFFA0, 0xFFA0},    // Hangul filler: invisible
    {0xFFF0, 0xFFFB},    // invisible, and marks of interlinear text
    {0x13430, 0x1345F},  // Egyptian format controls: invisible
    {0x1BCA0, 0x1BCA3},  // invisible
    {0x1D173, 0x1D17A},  // invisible
    {0xE0000, 0xE0FFF},  // tags and variation selectors: invisible
};

bool IsSurrogate(char32_t codePoint) {
  return codePoint >= 0xD800 && codePoint <= 0xDFFF;
}

}  // namespace

char32_t NextCodePoint(std::string_view utf8, std::size_t& position) {
  const std::size_t start = position++;
  const auto lead = static_cast<unsigned char>(utf8[start]);
  for (const SequenceForm& form : kSequenceForms) {
    if ((lead & form.mask) != form.lead) continue;
    if (form.length > utf8.size() - start) return kReplacementCharacter;
    char32_t codePoint = lead & form.payload;
    for (std::size_t i = 1; i < form.length; ++i) {
      const auto next = static_cast<unsigned char>(utf8[start + i]);
      if ((next & 0xC0) != 0x80) return kReplacementCharacter;
      codePoint = codePoint << 6 | (next & 0x3F);
    }
    if (codePoint < form.smallest || codePoint > 0x10FFFF || IsSurrogate(codePoint)) return kReplacementCharacter;
    position = start + form.length;
    return codePoint;
  }
  return kReplacementCharacter;
}

void AppendUtf8(std::string& utf8, char32_t codePoint) {
  const auto continuation = [&](int shift) { return static_cast<char>(0x80 | (codePoint >> shift & 0x3F)); };
  if (codePoint < 0x80) {
    utf8 += static_cast<char>(codePoint);
  } else if (codePoint < 0x800) {
    utf8 += {static_cast<char>(0xC0 | codePoint >> 6), continuation(0)};
  } else if (codePoint < 0x10000) {
    utf8 += {static_cast<char>(0xE0 | codePoint >> 12), continuation(6), continuation(0)};
  } else {
    utf8 += {static_cast<char>(0xF0 | codePoint >> 18), continuation(12), continuation(6), continuation(0)};
  }
}

bool IsValidUtf8(std::string_view text) {
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t start = position;
    // A U+FFFD that really stands there is three bytes long.
    if (NextCodePoint(text, position) == kReplacementCharacter && position - start != 3) return false;
  }
  return true;
}

std::string Utf8FromUtf16(std::u16string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t codePoint = text[i];
    if (codePoint >= 0xD800 && codePoint < 0xDC00 && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00)
      codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (text[++i] - 0xDC00U);
    AppendUtf8(result, IsSurrogate(codePoint) ? kReplacementCharacter : codePoint);
  }
  return result;
}

std::u16string Utf16FromUtf8(std::string_view text) {
  std::u16string result;
  result.reserve(text.size());
  for (std::size_t position = 0; position < text.size();) {
    const char32_t codePoint = NextCodePoint(text, position);
    if (codePoint < 0x10000) {
      result += static_cast<char16_t>(codePoint);
    } else {
      result += static_cast<char16_t>(0xD800 + (codePoint - 0x10000) / 0x400);
      result += static_cast<char16_t>(0xDC00 + codePoint % 0x400);
    }
  }
  return result;
}

std::filesystem::path PathFromUtf8(std::string_view text) {
  return {std::u8string(text.begin(), text.end())};
}

std::string Utf8FromPath(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

std::string TakeBstr(BSTR text) {
  if (!text) return {};
  const std::unique_ptr<OLECHAR, decltype(&SysFreeString)> owner(text, &SysFreeString);
  return Utf8FromUtf16({text, SysStringByteLen(text) / sizeof(OLECHAR)});
}

std::string Utf8FromSystemText(std::string_view text) {
  return Utf8FromUtf16(Kestrel::AnsiToWideOrAscii(text));
}

bool IsControl(char32_t codePoint) {
  if (codePoint >= ' ' && codePoint <= '~') return false;  // nearly all; the search through the table costs more
  return std::any_of(std::begin(kControls), std::end(kControls),
                     [&](const CodePointRange& range) { return codePoint >= range.first && codePoint <= range.last; });
}

std::string Printable(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t position = 0; position < text.size();) {
    const char32_t codePoint = NextCodePoint(text, position);
    AppendUtf8(result, IsControl(codePoint) ? kReplacementCharacter : codePoint);
  }
  return result;
}

std::string OneLine(std::string_view text) {
  std::string result;
  for (const char c : text) {
    const bool blank = c == ' ' || c == '\t' || c == '\r' || c == '\n';
    if (!blank)
      result += c;
    else if (!result.empty() && result.back() != ' ')
      result += ' ';
  }
  if (!result.empty() && result.back() == ' ') result.pop_back();
  return Printable(result);
}

std::string Upper(std::string text) {
  std::ranges::transform(text, text.begin(),
                         [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
  return text;
}

std::string Counted(std::uint64_t count, std::string_view what) {
  return std::to_string(count) + ' ' + std::string(what) + (count == 1 ? "" : "s");
}

}  // namespace tarnfind
