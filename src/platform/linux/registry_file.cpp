#include "platform/linux/registry_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <optional>

#include "platform/linux/text.h"
#include "platform/registry.h"

namespace platform {
namespace {

constexpr std::u16string_view kRoot = u"HKEY_LOCAL_MACHINE";

std::u16string Decoded(std::string_view content) {
  if (content.starts_with("\xFF\xFE")) {
    std::u16string text(content.size() / 2 - 1, u'\0');
    std::memcpy(text.data(), content.data() + 2, text.size() * 2);
    return text;
  }
  if (content.starts_with("\xEF\xBB\xBF")) content.remove_prefix(3);
  return WideText(content);
}

std::u16string_view Trimmed(std::u16string_view text) {
  constexpr std::u16string_view kBlanks = u" \t\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  return first == text.npos ? std::u16string_view() : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Removes prefix from the front of text. False, with text untouched, where text begins otherwise.
bool Skip(std::u16string_view& text, std::u16string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

/// Removes a quoted text from the front of text and returns its content. Nothing where there is none.
std::optional<std::u16string> QuotedText(std::u16string_view& text) {
  if (!Skip(text, u"\"")) return std::nullopt;
  std::u16string content;
  while (!text.empty() && text.front() != u'"') {
    Skip(text, u"\\");
    if (text.empty()) break;
    content += text.front();
    text.remove_prefix(1);
  }
  return Skip(text, u"\"") ? std::optional(content) : std::nullopt;
}

/// One to mostDigits hexadecimal digits and nothing else.
std::optional<std::uint32_t> HexNumber(std::u16string_view text, std::size_t mostDigits) {
  if (text.empty() || text.size() > mostDigits) return std::nullopt;
  const std::string digits = Utf8Text(text);
  const char* const end = digits.data() + digits.size();
  std::uint32_t number = 0;
  const auto read = std::from_chars(digits.data(), end, number, 16);
  return read.ptr == end ? std::optional(number) : std::nullopt;
}

std::optional<std::vector<std::uint8_t>> HexBytes(std::u16string_view text) {
  std::vector<std::uint8_t> bytes;
  while (!(text = Trimmed(text)).empty()) {
    const std::size_t comma = std::min(text.find(u','), text.size());
    const auto byte = HexNumber(Trimmed(text.substr(0, comma)), 2);
    if (!byte) return std::nullopt;
    bytes.push_back(static_cast<std::uint8_t>(*byte));
    text.remove_prefix(std::min(comma + 1, text.size()));
  }
  return bytes;
}

template <class Unit>
std::vector<std::uint8_t> BytesOf(const Unit* units, std::size_t count) {
  std::vector<std::uint8_t> bytes(count * sizeof(Unit));
  std::memcpy(bytes.data(), units, bytes.size());
  return bytes;
}

/// Type and data from the text behind a value's "=". Nothing where it is malformed.
std::optional<RegistryValue> ParseData(std::u16string_view text) {
  if (text.starts_with(u'"')) {
    const auto content = QuotedText(text);
    if (!content || !text.empty()) return std::nullopt;
    return RegistryValue{{}, REG_SZ, BytesOf(content->c_str(), content->size() + 1)};
  }
  if (Skip(text, u"dword:")) {
    const auto number = HexNumber(text, 8);
    return number ? std::optional(RegistryValue{{}, REG_DWORD, BytesOf(&*number, 1)}) : std::nullopt;
  }
  std::uint32_t type = REG_BINARY;
  if (Skip(text, u"hex(")) {
    const std::size_t close = std::min(text.find(u')'), text.size());
    const auto number = HexNumber(text.substr(0, close), 8);
    text.remove_prefix(close);
    if (!number || !Skip(text, u"):")) return std::nullopt;
    type = *number;
  } else if (!Skip(text, u"hex:")) {
    return std::nullopt;
  }
  auto bytes = HexBytes(text);
  return bytes ? std::optional(RegistryValue{{}, type, std::move(*bytes)}) : std::nullopt;
}

/// The content of a regular file within the limit, else empty. O_NONBLOCK, because opening a pipe waits for its other
/// end.
std::string ContentOf(const char* path) {
  constexpr std::size_t kMostBytes = 16 << 20;
  const int descriptor = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  struct stat status {};
  std::string content;
  if (descriptor >= 0 && fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
    char block[4096];
    ssize_t bytes = 0;
    while (content.size() <= kMostBytes && (bytes = read(descriptor, block, sizeof block)) > 0)
      content.append(block, static_cast<std::size_t>(bytes));
    if (bytes < 0 || content.size() > kMostBytes) content.clear();
  }
  if (descriptor >= 0) close(descriptor);
  return content;
}

bool SameName(std::u16string_view a, std::u16string_view b) {
  return UpperCase(a) == UpperCase(b);
}

class Parser {
 public:
  RegistryKeys Parse(std::u16string_view text) {
    std::u16string line;
    while (!text.empty()) {
      const std::size_t end = std::min(text.find(u'\n'), text.size());
      line += Trimmed(text.substr(0, end));
      text.remove_prefix(std::min(end + 1, text.size()));
      if (IsContinued(line) && !text.empty()) {
        line.pop_back();
        continue;
      }
      ParseLine(line);
      line.clear();
    }
    return std::move(keys_);
  }

 private:
  /// A backslash at the end of a line continues it where it is a list of bytes; a comment may end in one too.
  static bool IsContinued(std::u16string_view line) {
    return line.ends_with(u'\\') && !line.starts_with(u';') && line.find(u"hex") != line.npos;
  }

  void ParseLine(std::u16string_view line) {
    if (line.starts_with(u'['))
      ParseSection(line);
    else if (current_)
      ParseValue(line);
  }

  void ParseSection(std::u16string_view line) {
    current_ = nullptr;
    if (!line.ends_with(u']')) return;
    line.remove_suffix(1);
    line.remove_prefix(1);
    const bool removed = Skip(line, u"-");
    const std::u16string path = UpperCase(line);
    std::u16string_view below = path;
    if (!Skip(below, kRoot) || !(below.empty() || Skip(below, u"\\"))) return;
    if (removed)
      Remove(below);
    else
      current_ = &Add(below);
  }

  RegistryValues& Add(std::u16string_view path) {
    for (std::size_t i = path.find(u'\\'); i != path.npos; i = path.find(u'\\', i + 1))
      keys_.try_emplace(std::u16string(path.substr(0, i)));
    return keys_[std::u16string(path)];
  }

  void Remove(std::u16string_view path) {
    const std::u16string below = std::u16string(path) + u'\\';
    std::erase_if(keys_, [&](const auto& key) { return key.first == path || key.first.starts_with(below); });
  }

  void ParseValue(std::u16string_view line) {
    std::optional<std::u16string> name = Skip(line, u"@") ? std::u16string() : QuotedText(line);
    line = Trimmed(line);
    if (!name || !Skip(line, u"=")) return;
    line = Trimmed(line);
    const auto existing = std::find_if(current_->begin(), current_->end(),
                                       [&](const auto& value) { return SameName(value.name, *name); });
    if (line == u"-") {
      if (existing != current_->end()) current_->erase(existing);
    } else if (auto value = ParseData(line)) {
      value->name = std::move(*name);
      if (existing == current_->end())
        current_->push_back(std::move(*value));
      else
        *existing = std::move(*value);
    }
  }

  RegistryKeys keys_;
  RegistryValues* current_ = nullptr;  ///< of the section that is being read; null: its values are skipped
};

}  // namespace

RegistryKeys ParseRegistryFile(std::string_view content) {
  return Parser().Parse(Decoded(content));
}

RegistryKeys ReadRegistryFile(const char* path) {
  return ParseRegistryFile(ContentOf(path));
}

const RegistryValue* FindValue(const RegistryValues& values, std::u16string_view name) {
  const auto found =
      std::find_if(values.begin(), values.end(), [name](const auto& value) { return SameName(value.name, name); });
  return found == values.end() ? nullptr : &*found;
}

}  // namespace platform
