#include "base/text_format.h"

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

/// Only the low byte is looked at, here and in DigitOf.
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

class Expansion {
 public:
  Expansion(std::u16string_view format, std::u16string& output, std::span<const std::u16string> arguments)
      : format_(format), output_(output), arguments_(arguments), open_(format.find(u'{')), close_(format.find(u'}')) {}

  void Run() {
    while (open_ != kNone || close_ != kNone) {
      if (close_ < open_) {
        CloseBrace();
      } else if (close_ == kNone) {
        LoneOpenBrace();
      } else {
        output_.append(format_.substr(cursor_, open_ - cursor_));
        Placeholder(format_.substr(open_ + 1, close_ - open_ - 1));
      }
    }
    output_.append(format_.substr(cursor_));
  }

 private:
  [[noreturn]] void Fail(const char* reason, std::size_t position) const {
    throw InvalidFormatStringException(reason, format_, position);
  }

  /// A brace behind the cursor stands where it was found; only those that the cursor has passed are searched anew.
  void MoveCursorTo(std::size_t position) {
    cursor_ = position;
    if (open_ < cursor_) open_ = format_.find(u'{', cursor_);
    if (close_ < cursor_) close_ = format_.find(u'}', cursor_);
  }

  bool IsDoubled(std::size_t brace) const { return brace + 1 < format_.size() && format_[brace + 1] == format_[brace]; }

  void CloseBrace() {
    if (!IsDoubled(close_)) Fail(kIllegalEnd, close_);
    output_.append(format_.substr(cursor_, close_ + 1 - cursor_));
    MoveCursorTo(close_ + 2);
  }

  /// No "}" follows. The text in front of a doubled brace is lost; an error has no index, so its position is kNone.
  void LoneOpenBrace() {
    if (!IsDoubled(open_)) Fail(kIllegalBegin, kNone);
    output_ += u'{';
    MoveCursorTo(open_ + 2);
  }

  void Placeholder(std::u16string_view inside) {
    if (inside.size() == 1 && IsDigit(inside[0])) {
      AppendArgument(DigitOf(inside[0]));
    } else if (inside.size() == 2 && IsDigit(inside[0]) && IsDigit(inside[1])) {
      AppendArgument(10 * DigitOf(inside[0]) + DigitOf(inside[1]));
    } else if (inside.starts_with(u'{')) {
      output_ += u'{';
      MoveCursorTo(open_ + 2);
    } else if (inside.size() > 2 && IsDigit(inside[0]) && inside[1] == u',') {
      AppendAligned(DigitOf(inside[0]), inside.substr(2));
    } else {
      Fail(kIllegalFormat, open_);
    }
  }

  void AppendArgument(std::size_t number) {
    if (number >= arguments_.size()) Fail(kIllegalArgument, open_);
    output_ += arguments_[number];
    MoveCursorTo(close_ + 1);
  }

  void AppendAligned(std::size_t number, std::u16string_view digits) {
    const bool left = digits.starts_with(u'-');
    if (left) digits.remove_prefix(1);
    if (digits.empty() || !std::all_of(digits.begin(), digits.end(), IsDigit)) Fail(kIllegalFormat, open_);
    if (number >= arguments_.size()) Fail(kIllegalAlignedArgument, open_);
    const std::u16string& argument = arguments_[number];
    const std::size_t width = WidthOf(digits);
    const std::size_t fill = width > argument.size() ? width - argument.size() : 0;
    if (!left) output_.append(fill, u' ');
    output_ += argument;
    if (left) output_.append(fill, u' ');
    MoveCursorTo(close_ + 1);
  }

  const std::u16string_view format_;
  std::u16string& output_;
  const std::span<const std::u16string> arguments_;
  std::size_t cursor_ = 0;
  std::size_t open_;   ///< first "{" from the cursor on
  std::size_t close_;  ///< first "}" from the cursor on
};

}  // namespace

void Format(const char16_t* format, std::u16string& output, std::span<const std::u16string> arguments) {
  if (!format) return;
  const std::u16string_view text(format);
  std::size_t likelyLength = output.size() + text.size();
  for (const std::u16string& argument : arguments) likelyLength += argument.size();
  output.reserve(likelyLength);
  Expansion(text, output, arguments).Run();
}

}  // namespace Kestrel::Text
