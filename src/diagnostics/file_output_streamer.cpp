#include "diagnostics/file_output_streamer.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <span>
#include <system_error>
#include <utility>

#include "base/text_conversion.h"
#include "base/xml_escape.h"

namespace Kestrel {

void FileOutputStreamer::Write(const DebugOutRecord& record, const std::u16string& text) {
  if (!file_) return;
  block_.assign("<debugout type=\"").append(LevelText(record.level)).append("\" filter=\"");
  if (record.source) block_ += XmlEscape(record.source);
  const std::uint32_t length = std::min<std::uint32_t>(ClipSizeT(text.size()), std::numeric_limits<int>::max());
  WideToMulti(message_, platform::CP_UTF8, 0, text.data(), static_cast<int>(length));
  block_.append("\">\r\n<o>").append(message_).append("</o>\r\n</debugout>\r\n");
  const platform::BytePiece block = std::as_bytes(std::span(block_));
  platform::Append(file_, {&block, 1});
}

bool FileOutputStreamer::Open(const char16_t* path) {
  Close();
  try {
    const std::filesystem::path file(path);
    // Emptied by its name, because a pipe must not be opened twice.
    if (std::filesystem::is_regular_file(file)) std::filesystem::resize_file(file, 0);
  } catch (const std::system_error&) {  // no such path, or no right to write
    return false;
  }
  file_ = platform::OpenForAppend(path);
  return file_ != nullptr;
}

void FileOutputStreamer::Close() {
  if (file_) platform::CloseAppendFile(std::exchange(file_, nullptr));
}

}  // namespace Kestrel
