/// Record blocks in a file, in UTF-8:
///
///     <debugout type="INFO " filter="NET">\r\n
///     <o>Camera answered</o>\r\n
///     </debugout>\r\n
///
/// The source is escaped. The message is not, because the file is read by people rather than by a parser.
#pragma once

#include <string>
#include <string_view>

#include "diagnostics/output_target.h"
#include "platform/append_file.h"

namespace Kestrel {

class FileOutputStreamer final : public IDebugOutStreamerObject {
 public:
  ~FileOutputStreamer() override { Close(); }

  /// Hands the block to the system at once, so that there is nothing to flush. Does nothing while no file is open. What
  /// a full disk or a pipe without a reader does not take is lost; the process gets no signal.
  void Write(const DebugOutRecord& record, std::u16string_view text) override;
  /// Closes the file that is open, and creates or empties the new one. After a failure no file is open.
  bool Open(const char16_t* path) override;

 private:
  void Close();

  platform::AppendFile* file_ = nullptr;
};

}  // namespace Kestrel
