#include "capture/file_end.h"

#include <fstream>
#include <optional>

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

bool IsOurType(std::uint32_t type) {
  return type == kEnhancedPacket || type == kInterfaceDescription || type == kSectionHeader;
}

bool EndsWithBlock(std::ifstream& file, std::uint64_t size) {
  std::uint32_t length = 0;
  std::uint32_t head[2];
  return ReadAt(file, size - kBlockTailSize, &length, 1) && IsLength(length) && length <= size &&
         ReadAt(file, size - length, head, 2) && head[1] == length && IsOurType(head[0]);
}

/// Where the whole blocks end, with a block behind them that is cut off or with nothing. Null where something else
/// stands there, because whole blocks may follow the damage.
std::optional<std::uint64_t> EndOfBlocks(std::ifstream& file, std::uint64_t size) {
  std::uint64_t end = 0;
  std::uint32_t head[2], length = 0;
  while (ReadAt(file, end, head, 2)) {
    if (!IsLength(head[1])) return std::nullopt;
    if (head[1] > size - end) return IsOurType(head[0]) && head[1] <= kLargestBlock ? std::optional(end) : std::nullopt;
    if (!ReadAt(file, end + head[1] - kBlockTailSize, &length, 1) || length != head[1]) return std::nullopt;
    end += head[1];
  }
  return end;
}

}  // namespace

FileEnd MendFileEnd(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  if (!file) return FileEnd::kGood;
  const auto size = static_cast<std::uint64_t>(file.tellg());
  if (size == 0) return FileEnd::kGood;
  // The type of the first block reads the same in both byte orders, the magic does not.
  std::uint32_t head[3] = {0, 0, kByteOrderMagic};
  const std::size_t headNumbers = size < sizeof head ? 1 : 3;
  if (!ReadAt(file, 0, head, headNumbers) || head[0] != kSectionHeader || head[2] != kByteOrderMagic)
    return FileEnd::kNotOurs;
  if (EndsWithBlock(file, size)) return FileEnd::kGood;
  const std::optional<std::uint64_t> end = EndOfBlocks(file, size);
  if (!end) return FileEnd::kNotOurs;
  file.close();
  std::filesystem::resize_file(path, *end);
  return FileEnd::kMended;
}

}  // namespace capture
