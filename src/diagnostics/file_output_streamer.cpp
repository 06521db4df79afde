#include "diagnostics/file_output_streamer.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <system_error>

#include "base/text_conversion.h"
#include "base/xml_escape.h"

namespace Kestrel {

void FileOutputStreamer::Write(const DebugOutRecord& record, const std::u16string& text) {
  if (!file_.is_open()) return;
  block_.assign("<debugout type=\"").append(LevelText(record.level)).append("\" filter=\"");
  if (record.source) block_ += XmlEscape(record.source);
  const std::uint32_t length = std::min<std::uint32_t>(ClipSizeT(text.size()), std::numeric_limits<int>::max());
  WideToMulti(message_, platform::CP_UTF8, 0, text.data(), static_cast<int>(length));
  block_.append("\">\r\n<o>").append(message_).append("</o>\r\n</debugout>\r\n");
  file_.sputn(block_.data(), static_cast<std::streamsize>(block_.size()));
}

void FileOutputStreamer::Flush() {
  if (file_.is_open()) file_.pubsync();
}

bool FileOutputStreamer::Open(const char16_t* path) {
  file_.close();
  try {
    // Binary, so that line ends stay as they are written.
    return file_.open(std::filesystem::path(path), std::ios::out | std::ios::binary);
  } catch (const std::system_error&) {  // not valid UTF-16
    return false;
  }
}

}  // namespace Kestrel
