/// Whether a capture file may be continued behind its last byte.
#pragma once

#include <cstdint>
#include <filesystem>

namespace capture {

enum class FileEnd {
  kGood,     ///< no file that can be opened, an empty one, or one that ends with a whole block
  kMended,   ///< it ended in the middle of a block, as after a kill: that part has been cut off
  kNotOurs,  ///< it begins with something else, or is damaged in the middle; it is left as it is
};
/// Looks at both ends, so that a long file takes no longer; only a file that has to be mended is walked, head by head.
/// Throws std::filesystem::filesystem_error where the file cannot be cut.
FileEnd MendFileEnd(const std::filesystem::path& path);

}  // namespace capture
