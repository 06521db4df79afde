/// Record blocks in a file, in UTF-8:
///
///     <debugout type="INFO " filter="NET">\r\n
///     <o>Camera answered</o>\r\n
///     </debugout>\r\n
///
/// The source is escaped. The message is not, because the file is read by people rather than by a parser.
#pragma once

#include <fstream>
#include <string>

#include "diagnostics/output_target.h"

namespace Kestrel {

class FileOutputStreamer final : public IDebugOutStreamerObject {
 public:
  /// Does nothing while no file is open.
  void Write(const DebugOutRecord& record, const std::u16string& text) override;
  void Flush() override;
  /// Closes the file that is open, and creates or empties the new one.
  bool Open(const char16_t* path) override;

 private:
  std::filebuf file_;
  // Members, so that their storage is used again from message to message.
  std::string block_;
  std::string message_;
};

}  // namespace Kestrel
