#include "capture/file_end.h"

#include <fstream>

#include "capture/format.h"

namespace capture {
namespace {

/// False where the bytes are not there.
bool ReadAt(std::ifstream& file, std::uint64_t offset, std::uint32_t* numbers, std::size_t count) {
  file.clear();
  file.seekg(static_cast<std::streamoff>(offset));
  return static_cast<bool>(file.read(reinterpret_cast<char*>(numbers), static_cast<std::streamsize>(4 * count)));
}

bool IsLength(std::uint32_t length) {
  return length >= kBlockHeadSize + kBlockTailSize && length % 4 == 0;
}

bool EndsWithBlock(std::ifstream& file, std::uint64_t size) {
  std::uint32_t length = 0;
  std::uint32_t head[2];
  return ReadAt(file, size - kBlockTailSize, &length, 1) && IsLength(length) && length <= size &&
         ReadAt(file, size - length, head, 2) && head[1] == length &&
         (head[0] == kEnhancedPacket || head[0] == kInterfaceDescription || head[0] == kSectionHeader);
}

/// Where the last whole block ends.
std::uint64_t EndOfBlocks(std::ifstream& file, std::uint64_t size) {
  std::uint64_t end = 0;
  std::uint32_t head[2];
  while (ReadAt(file, end, head, 2) && IsLength(head[1]) && head[1] <= size - end) end += head[1];
  return end;
}

}  // namespace

FileEnd MendFileEnd(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  if (!file) return FileEnd::kGood;
  const auto size = static_cast<std::uint64_t>(file.tellg());
  if (size == 0) return FileEnd::kGood;
  std::uint32_t type = 0;
  if (!ReadAt(file, 0, &type, 1) || type != kSectionHeader) return FileEnd::kNotOurs;
  if (EndsWithBlock(file, size)) return FileEnd::kGood;
  const std::uint64_t end = EndOfBlocks(file, size);
  file.close();
  std::filesystem::resize_file(path, end);
  return FileEnd::kMended;
}

}  // namespace capture
