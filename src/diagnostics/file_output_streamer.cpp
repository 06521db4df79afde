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

void FileOutputStreamer::Write(const DebugOutRecord& record, std::u16string_view text) {
  if (!file_) return;
  // The texts are local, because storage that several threads use in turns moves between their processors' caches,
  // which takes longer than an allocation.
  constexpr std::size_t kUsualFrame = 96;
  std::string block, message;
  block.reserve(text.size() + kUsualFrame);
  block.append("<debugout type=\"").append(LevelText(record.level)).append("\" filter=\"");
  if (record.source) block += XmlEscape(record.source);
  const std::uint32_t length = std::min<std::uint32_t>(ClipSizeT(text.size()), std::numeric_limits<int>::max());
  WideToMulti(message, platform::CP_UTF8, 0, text.data(), static_cast<int>(length));
  block.append("\">\r\n<o>").append(message).append("</o>\r\n</debugout>\r\n");
  const platform::BytePiece bytes = std::as_bytes(std::span(block));
  platform::Append(file_, {&bytes, 1});
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
