#include "valuelist/wire_text.h"

#include "platform/compiler.h"

namespace Kestrel {

/// Flattened, because the copy is made at the bottom of several calls, and only there the size must be constant.
TARN_FLATTEN void WireText::AssignTo(std::string& text) const {
  if (!IsCopiedInPiece()) {
    text.assign(characters);
    return;
  }
  text.assign(characters.data(), kPieceSize);
  text.resize(characters.size());
}

}  // namespace Kestrel
