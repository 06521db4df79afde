#include "base/file_output_streamer.h"

#include <filesystem>
#include <system_error>

#include "base/text_conversion.h"
#include "base/xml_escape.h"

namespace Kestrel {

void FileOutputStreamer::Write(const DebugOutRecord& record, const std::u16string& text) {
  if (!file_) return;
  std::string block = "<debugout type=\"";
  block.append(XmlEscape(LevelText(record.level))).append("\" filter=\"");
  if (record.source) block += XmlEscape(record.source);
  block.append("\">\r\n<o>").append(WideToUtf8(text)).append("</o>\r\n</debugout>\r\n");
  file_->write(block.data(), static_cast<std::streamsize>(block.size()));
}

void FileOutputStreamer::Flush() {
  if (file_) file_->flush();
}

bool FileOutputStreamer::Open(const char16_t* path) {
  file_.reset();
  // Binary, so that line ends stay as they are written.
  try {
    file_.emplace(std::filesystem::path(path), std::ios::out | std::ios::binary);
  } catch (const std::system_error&) {  // no such name can be a path
    return false;
  }
  if (!file_->is_open()) file_.reset();
  return file_.has_value();
}

}  // namespace Kestrel
