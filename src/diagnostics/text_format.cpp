#include "diagnostics/text_format.h"

#include <algorithm>
#include <string_view>

#include "base/exceptions.h"

namespace Kestrel::Text {
namespace {

constexpr const char* kIllegalEnd = "Text::Format illegal end of format string:";
constexpr const char* kIllegalBegin = "Text::Format illegal begin of format string:";
constexpr const char* kIllegalArgument = "Text::Format illegal argument number :";
constexpr const char* kIllegalAlignedArgument = "Text::Format illegal argument number (,):";
constexpr const char* kIllegalFormat = "Text::Format illegal format string :";

constexpr std::size_t kNone = std::u16string_view::npos;
constexpr std::size_t kMaxWidth = 512;

/// Here and in DigitOf only the low byte counts.
constexpr bool IsDigit(char16_t unit) {
  return (unit & 0xFF) >= u'0' && (unit & 0xFF) <= u'9';
}
constexpr std::size_t DigitOf(char16_t unit) {
  return static_cast<std::size_t>((unit & 0xFF) - u'0');
}

/// The number that the ASCII digits in front give; 0 for one above kMaxWidth.
std::size_t WidthOf(std::u16string_view digits) {
  std::size_t width = 0;
  for (const char16_t unit : digits) {
    if (unit < u'0' || unit > u'9') break;
    width = width * 10 + DigitOf(unit);
    if (width > kMaxWidth) return 0;
  }
  return width;
}

/// Each unit of the format is read at most twice, so that a long row of braces takes linear time.
class Expansion {
 public:
  Expansion(const char16_t* format, std::u16string& output, std::span<const std::u16string> arguments)
      : format_(format), output_(output), arguments_(arguments) {}

  void Run() {
    for (;;) {
      const std::size_t brace = FirstBrace();
      if (format_[brace] == 0) return CopyUpTo(brace);
      if (format_[brace] == u'}') {
        CloseBrace(brace);
      } else if (const std::size_t close = FirstCloseBehind(brace); close == kNone) {
        LoneOpenBrace(brace);
      } else {
        CopyUpTo(brace);
        Placeholder(brace, close);
      }
    }
  }

 private:
  [[noreturn]] void Fail(const char* reason, std::size_t position) const {
    throw InvalidFormatStringException(reason, format_, position);
  }

  /// Position of the first brace from the cursor on, or of the end.
  std::size_t FirstBrace() const {
    std::size_t position = cursor_;
    while (format_[position] != 0 && format_[position] != u'{' && format_[position] != u'}') ++position;
    return position;
  }
  std::size_t FirstCloseBehind(std::size_t open) {
    if (close_ > open) return close_;
    std::size_t position = open + 1;
    while (format_[position] != 0 && format_[position] != u'}') ++position;
    return close_ = format_[position] == u'}' ? position : kNone;
  }
  bool IsDoubled(std::size_t brace) const { return format_[brace + 1] == format_[brace]; }
  void CopyUpTo(std::size_t position) { output_.append(format_ + cursor_, position - cursor_); }

  void CloseBrace(std::size_t close) {
    if (!IsDoubled(close)) Fail(kIllegalEnd, close);
    CopyUpTo(close + 1);
    cursor_ = close + 2;
  }

  /// For a "{" with no "}" behind it. The text in front of a doubled one is lost. The error has no position: kNone.
  void LoneOpenBrace(std::size_t open) {
    if (!IsDoubled(open)) Fail(kIllegalBegin, kNone);
    output_ += u'{';
    cursor_ = open + 2;
  }

  void Placeholder(std::size_t open, std::size_t close) {
    const std::u16string_view inside(format_ + open + 1, close - open - 1);
    cursor_ = close + 1;
    if (inside.size() == 1 && IsDigit(inside[0])) {
      output_ += Argument(DigitOf(inside[0]), open, kIllegalArgument);
    } else if (inside.size() == 2 && IsDigit(inside[0]) && IsDigit(inside[1])) {
      output_ += Argument(10 * DigitOf(inside[0]) + DigitOf(inside[1]), open, kIllegalArgument);
    } else if (inside.starts_with(u'{')) {
      output_ += u'{';
      cursor_ = open + 2;
    } else if (inside.size() > 2 && IsDigit(inside[0]) && inside[1] == u',') {
      Aligned(open, inside);
    } else {
      Fail(kIllegalFormat, open);
    }
  }

  void Aligned(std::size_t open, std::u16string_view inside) {
    std::u16string_view digits = inside.substr(2);
    const bool left = digits.starts_with(u'-');
    if (left) digits.remove_prefix(1);
    if (digits.empty() || !std::all_of(digits.begin(), digits.end(), IsDigit)) Fail(kIllegalFormat, open);
    const std::u16string& argument = Argument(DigitOf(inside[0]), open, kIllegalAlignedArgument);
    const std::size_t width = WidthOf(digits);
    const std::size_t fill = width > argument.size() ? width - argument.size() : 0;
    if (!left) output_.append(fill, u' ');
    output_ += argument;
    if (left) output_.append(fill, u' ');
  }

  const std::u16string& Argument(std::size_t number, std::size_t open, const char* failure) const {
    if (number >= arguments_.size()) Fail(failure, open);
    return arguments_[number];
  }

  const char16_t* const format_;
  std::u16string& output_;
  const std::span<const std::u16string> arguments_;
  std::size_t cursor_ = 0;
  std::size_t close_ = 0;  ///< first "}" behind the "{" that was looked at last, or kNone
};

}  // namespace

void Format(const char16_t* format, std::u16string& output, std::span<const std::u16string> arguments) {
  constexpr std::size_t kUsualLength = 40;
  if (!format) return;
  std::size_t likelyLength = output.size() + kUsualLength;
  for (const std::u16string& argument : arguments) likelyLength += argument.size();
  output.reserve(likelyLength);
  Expansion(format, output, arguments).Run();
}

}  // namespace Kestrel::Text
