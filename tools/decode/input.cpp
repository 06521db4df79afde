#include "tools/decode/input.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>

#include "base/base64.h"
#include "base/byte_order.h"
#include "capture/format.h"
#include "protocol/block_format.h"
#include "protocol/request_wire.h"
#include "tools/decode/hex_text.h"
#include "tools/failure.h"
#include "tools/text.h"
#include "valuelist/value_list.h"
#include "valuelist/variant_types.h"

namespace tarnfind {
namespace {

using Bytes = std::vector<std::uint8_t>;
namespace wire = Tarn::CameraFinding;

struct FormRow {
  std::string_view name;
  Form form;
};
constexpr FormRow kForms[] = {
    {"request", Form::kRequest}, {"reply", Form::kReply}, {"block", Form::kBlock},
    {"list", Form::kList},       {"frame", Form::kFrame},
};
constexpr std::string_view kBlockPrefix = "block-";

std::optional<FormAndType> FormOf(std::string_view text) {
  for (const FormRow& row : kForms)
    if (row.name == text) return FormAndType{row.form, 0};
  const bool isBlock = text.size() == kBlockPrefix.size() + 1 && text.starts_with(kBlockPrefix);
  if (isBlock && text.back() >= '1' && text.back() <= '8')
    return FormAndType{Form::kBlock, static_cast<std::uint32_t>(text.back() - '0')};
  return std::nullopt;
}

template <class Number>
std::optional<Number> NumberAt(const Bytes& bytes, std::size_t offset) {
  if (bytes.size() < offset || bytes.size() - offset < sizeof(Number)) return std::nullopt;
  return Kestrel::LoadLittleEndian<Number>(bytes.data() + offset);
}

/// Whether a chunk of that tag may begin like this: by its length, or by its payload where the rest has been cut off.
bool BeginsChunk(const Bytes& bytes, std::uint32_t tag) {
  const auto length = NumberAt<std::uint64_t>(bytes, 4);
  if (!length || tag < wire::ctRecordsKind3 || tag > wire::ctCtt) return false;
  if (*length <= bytes.size() - 12) return true;
  if (tag <= wire::ctRecordsKind2) return NumberAt<std::uint32_t>(bytes, 12) == Kestrel::ValueListIdentifier;
  return NumberAt<std::uint8_t>(bytes, 12) == Kestrel::vtWString;
}

/// Whether a reply's text may begin like this: it is whole, or begins as base64 of a value list does.
bool BeginsReply(const Bytes& bytes) {
  const auto length = NumberAt<std::uint32_t>(bytes, 1);
  if (!length || (bytes[0] != Kestrel::vtWString && bytes[0] != Kestrel::vtString)) return false;
  const std::size_t second = bytes[0] == Kestrel::vtWString ? 7 : 6;
  return *length == bytes.size() - 5 || (bytes.size() > second && bytes[5] == 'V' && bytes[second] == 'k');
}

/// By how the bytes begin, the more certain forms first.
std::optional<Form> FormByBytes(const Bytes& bytes) {
  const auto first = NumberAt<std::uint32_t>(bytes, 0);
  if (!first) return std::nullopt;
  if (*first == Kestrel::ValueListIdentifier) return Form::kList;
  if (*first == wire::kFinderRequestCode) return Form::kRequest;
  if (bytes.size() >= sizeof(capture::FrameHeader) && bytes[0] == capture::kVersion &&
      bytes[1] == sizeof(capture::FrameHeader) && bytes[2] < capture::kEventNames.size())
    return Form::kFrame;
  if (BeginsReply(bytes)) return Form::kReply;
  return BeginsChunk(bytes, *first) ? std::optional(Form::kBlock) : std::nullopt;
}

/// UTF-16 that holds nothing but ASCII, with or without a byte-order mark.
std::optional<std::string> TextOfUtf16(const Bytes& bytes) {
  const std::size_t start = bytes.size() >= 2 && bytes[0] == 0xFF && bytes[1] == 0xFE ? 2 : 0;
  if (bytes.size() < start + 2 || bytes.size() % 2 != 0) return std::nullopt;
  std::string text;
  for (std::size_t i = start; i < bytes.size(); i += 2) {
    if (bytes[i + 1] != 0 || bytes[i] == 0 || bytes[i] >= 0x80) return std::nullopt;
    text += static_cast<char>(bytes[i]);
  }
  return text;
}

/// The bytes that a text stands for: base64 of a value list, else a dump, else hexadecimal digits, else base64 of
/// another message.
std::optional<Bytes> BytesOfText(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return std::nullopt;
  text.remove_prefix(first);
  text = text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
  Bytes bytes;
  const bool isBase64 = Kestrel::Base64Decode(text, bytes);
  if (text.starts_with("VkxJU")) return bytes;
  if (auto fromDump = BytesOfDump(text)) return fromDump;
  if (auto fromHex = BytesOfHex(text)) return fromHex;
  return isBase64 ? std::optional(bytes) : std::nullopt;
}

std::optional<Bytes> Unwrapped(const Bytes& bytes) {
  if (const auto text = TextOfUtf16(bytes)) return BytesOfText(*text);
  return BytesOfText({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

}  // namespace

std::vector<std::uint8_t> ReadInput(const std::string& path) {
  std::ifstream file;
  if (path != "-") {
    file.open(PathFromUtf8(path), std::ios::binary);
    if (!file) throw WrongUse(fmt::format("{} cannot be read", Printable(path)));
  }
  std::istream& input = path == "-" ? std::cin : file;
  Bytes bytes;
  char room[65536];
  while (input.read(room, sizeof room), input.gcount() > 0) {
    bytes.insert(bytes.end(), room, room + input.gcount());
    if (bytes.size() > kLargestInput)
      throw WrongUse(fmt::format("{} has more than {} bytes", Printable(path), kLargestInput));
  }
  if (input.bad()) throw WrongUse(fmt::format("{} cannot be read", Printable(path)));
  return bytes;
}

Recognised Recognise(std::vector<std::uint8_t> bytes, const std::string& as) {
  const auto named = as.empty() ? std::nullopt : FormOf(as);
  if (!FormByBytes(bytes))
    if (auto unwrapped = Unwrapped(bytes); unwrapped && !unwrapped->empty()) bytes = std::move(*unwrapped);
  if (named) return {std::move(bytes), *named};
  const auto form = FormByBytes(bytes);
  if (NumberAt<std::uint32_t>(bytes, 0) == capture::kSectionHeader)
    throw WrongUse("the input is a whole capture; tarnfind show prints it");
  if (bytes.empty()) throw WrongUse("the input is empty");
  if (!form) throw WrongUse("the input is no message that is recognised; name it with --as");
  return {std::move(bytes), {*form, 0}};
}

std::string CheckForm(const std::string& text) {
  return FormOf(text) ? "" : "must be request, reply, block, block-1 to block-8, list or frame";
}

}  // namespace tarnfind
