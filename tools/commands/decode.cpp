#include <nlohmann/json.hpp>

#include "tools/commands/commands.h"
#include "tools/decode/decoder.h"
#include "tools/decode/input.h"
#include "tools/decode/message_json.h"
#include "tools/decode/views.h"
#include "tools/json_objects.h"

namespace tarnfind {

void RunDecode(const Options& options, TextOutput& output) {
  Recognised recognised = Recognise(ReadInput(options.capture.file), options.capture.form);
  const Decoded decoded = Decode(std::move(recognised.bytes), recognised.what);
  if (options.json)
    output.Write(JsonLine(ToJson(decoded)));
  else if (options.capture.hex)
    WriteDump(decoded, output);
  else
    WriteTree(decoded, {options.showPasswords}, output);
}

}  // namespace tarnfind
