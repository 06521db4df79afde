#include "diagnostics/output_target.h"

#include <iterator>

#include "base/append_text.h"

namespace Kestrel {
namespace {

/// Row = level.
constexpr const char* kLevelTexts[] = {"ERROR", "SECTY", "WARNG", "INFO ", "DEBUG"};

}  // namespace

const char* LevelText(std::uint32_t level) {
  return level < std::size(kLevelTexts) ? kLevelTexts[level] : "UNKNOWN";
}

std::u16string StandardLine(const DebugOutRecord& record, std::u16string_view text) {
  constexpr std::size_t kUsualFrame = 48;
  std::u16string line;
  line.reserve(text.size() + kUsualFrame);
  AppendText(line, LevelText(record.level));
  line += u" [";
  AppendText(line, record.source);
  line += u',';
  AppendText(line, record.threadId);
  line += u"] ";
  line += text;
  line += u"\r\n";
  return line;
}

}  // namespace Kestrel
