/// Decoded messages for people: a tree of names, types and values, or an annotated dump of the bytes.
#pragma once

#include <string>

#include "tools/decode/node.h"
#include "tools/text_output.h"

namespace tarnfind {

struct ViewOptions {
  bool showPasswords = false;
};

/// Without showPasswords a password is masked, and bytes that are not read are counted, because one can be among them.
void WriteTree(const Decoded& decoded, const ViewOptions& options, TextOutput& output);
/// Offset, bytes, meaning, indented by nesting. Bytes inside a base64 text follow it, with offsets of their own.
/// Everything is shown as it is, passwords too.
void WriteDump(const Decoded& decoded, TextOutput& output);

}  // namespace tarnfind
