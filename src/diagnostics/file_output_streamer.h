/// Record blocks in a file, in UTF-8:
///
///     <debugout type="INFO " filter="NET">\r\n
///     <o>Camera answered</o>\r\n
///     </debugout>\r\n
///
/// The source is escaped; the message is written as it is, for people rather than for a parser.
#pragma once

#include <fstream>
#include <string>

#include "diagnostics/output_target.h"

namespace Kestrel {

class FileOutputStreamer final : public IDebugOutStreamerObject {
 public:
  /// Nothing happens while no file is open.
  void Write(const DebugOutRecord& record, const std::u16string& text) override;
  void Flush() override;
  /// Closes the file that was open; an existing file is emptied.
  bool Open(const char16_t* path) override;

 private:
  std::filebuf file_;
  // Kept from line to line for their room.
  std::string block_;
  std::string message_;
};

}  // namespace Kestrel
