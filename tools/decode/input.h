/// The input of decode: its bytes, read out of a text where they were copied as one, and which message they are.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/decode/decoder.h"

namespace tarnfind {

/// Files and dumps beyond this are refused.
inline constexpr std::size_t kLargestInput = std::size_t{64} << 20;

/// The file's bytes, or those of standard input for "-". Throws WrongUse where it cannot be read or is too large.
std::vector<std::uint8_t> ReadInput(const std::string& path);

struct Recognised {
  std::vector<std::uint8_t> bytes;
  FormAndType what;
};
/// `as` is empty, or request, reply, block, block-1 to block-8, list or frame; checked by CheckForm. Text in
/// hexadecimal, base64 or UTF-16 is taken for what it stands for, unless the bytes themselves are a message. Throws
/// WrongUse where nothing is recognised.
Recognised Recognise(std::vector<std::uint8_t> bytes, const std::string& as);

/// An empty text for a good argument, else what is wrong with it.
std::string CheckForm(const std::string& text);

}  // namespace tarnfind
