#include "tools/decode/decoder.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/base64.h"
#include "base/byte_order.h"
#include "capture/capture_reader.h"
#include "protocol/block_format.h"
#include "protocol/record_format.h"
#include "protocol/request_wire.h"
#include "tools/decode/cursor.h"
#include "tools/decode/hex_text.h"
#include "tools/decode/meanings.h"
#include "tools/decode/values.h"
#include "tools/text.h"
#include "valuelist/value_list.h"
#include "valuelist/variant_types.h"

namespace tarnfind {
namespace {

using Bytes = std::span<const std::uint8_t>;
namespace wire = Tarn::CameraFinding;

class Decoder {
 public:
  explicit Decoder(Decoded& decoded) : decoded_(decoded) {}

  void DecodeRoot(FormAndType what) {
    Node& root = decoded_.root;
    Cursor cursor(decoded_.layers[0], 0, 0, decoded_.layers[0].size());
    try {
      switch (what.form) {
        case Form::kRequest:
          DecodeRequest(cursor, root);
          break;
        case Form::kReply:
          DecodeReply(cursor, root);
          break;
        case Form::kBlock:
          DecodeBlock(cursor, root, what.messageType);
          break;
        case Form::kList:
          DecodeList(cursor, root, 0);
          break;
        case Form::kFrame:
          DecodeFrame(cursor, root);
          break;
      }
    } catch (const Stop&) {
      CloseOpenNodes(cursor, root);
    }
    root.size = decoded_.layers[0].size();
    AddRest(cursor, root);
  }

 private:
  Node& Add(Node& parent, const Cursor& cursor, std::string type, std::optional<std::string> name = {}) {
    if (++nodes_ > kMostNodes) cursor.Fail(parent, fmt::format("at most {} values", kMostNodes), "another one");
    Node node;
    node.type = std::move(type);
    node.name = std::move(name);
    node.layer = cursor.GetLayer();
    node.offset = cursor.GetOffset();
    return parent.children.emplace_back(std::move(node));
  }

  static void Finish(const Cursor& cursor, Node& node) { node.size = cursor.GetOffset() - node.offset; }

  /// What is left over, as bytes.
  void AddRest(Cursor& cursor, Node& parent) {
    if (cursor.GetRemaining() == 0) return;
    Node rest;
    rest.type = "rest";
    rest.layer = cursor.GetLayer();
    rest.offset = cursor.GetOffset();
    rest.size = cursor.GetRemaining();
    rest.value = HexText(cursor.Peek());
    rest.meaning = "not read";
    parent.children.push_back(std::move(rest));
  }

  void DecodeRequest(Cursor& cursor, Node& node) {
    node.type = "request";
    node.meaning = "a command to the camera finder";
    const auto code = cursor.TakeNumber<std::uint32_t>(node, "request code");
    node.value = code;
    if (code != wire::kFinderRequestCode)
      cursor.Fail(node, fmt::format("the code {:#x}", wire::kFinderRequestCode), fmt::format("{:#x}", code));
    DecodeText(cursor, node, 2);
  }

  void DecodeReply(Cursor& cursor, Node& node) {
    node.type = "reply";
    node.meaning = "the camera finder's answer";
    if (cursor.GetRemaining() == 0) {
      node.meaning += ": nothing";
      return;
    }
    const auto tag = cursor.TakeNumber<std::uint8_t>(node, "type");
    node.value = std::string(NameOfTag(tag));
    const std::size_t unit = tag == Kestrel::vtWString ? 2 : 1;
    if (tag != Kestrel::vtWString && tag != Kestrel::vtString)
      cursor.Fail(node, "a text, type 12 or 11", fmt::format("type {}", tag));
    const auto length = cursor.TakeNumber<std::uint32_t>(node, "length");
    if (length < unit) cursor.Fail(node, "room for a terminator", fmt::format("length {}", length));
    if (length > cursor.GetRemaining()) {
      const std::size_t here = cursor.GetRemaining();
      // Decodes what is there, so that the cameras in it are shown.
      Cursor text = cursor.Split(here / unit * unit);
      DecodeText(text, node, unit);
      cursor.Fail(node, fmt::format("a text of {}", Counted(length)), Counted(here));
    }
    Cursor text = cursor.Split(length / unit * unit - unit);
    DecodeText(text, node, unit);
    cursor.TakeField(length - (length / unit * unit - unit), node, "terminator");
  }

  /// Base64 up to the end of the cursor, and the value list in it.
  void DecodeText(Cursor& cursor, Node& parent, std::size_t unit) {
    Node& node = Add(parent, cursor, unit == 2 ? "base64-utf16" : "base64");
    const std::size_t count = cursor.GetRemaining() / unit;
    const Bytes text = cursor.TakeField(count * unit, node, "base64");
    Finish(cursor, node);
    if (count == 0) return;
    std::vector<std::uint8_t> bytes(Kestrel::Base64DecodedBound(count));
    Kestrel::Base64Decoded result{};
    if (unit == 2) {
      std::u16string units(count, u'\0');
      Kestrel::LoadLittleEndian(text.data(), std::span(units));
      result = Kestrel::Base64DecodeTo(std::u16string_view(units), bytes.data());
    } else {
      result =
          Kestrel::Base64DecodeTo(std::string_view(reinterpret_cast<const char*>(text.data()), count), bytes.data());
    }
    bytes.resize(result.byteCount);
    node.meaning = result.success ? "" : "a character that is no base64 ends the text";
    decoded_.layers.push_back(std::move(bytes));
    const std::size_t layer = decoded_.layers.size() - 1;
    Cursor inner(decoded_.layers[layer], layer, 0, decoded_.layers[layer].size());
    Contain(inner, node, [&] { DecodeList(inner, Add(node, inner, "list"), 0); });
  }

  /// Runs the decoding of a part whose end is known: damage in it ends only this part, and the rest of it is shown.
  template <class Decoding>
  void Contain(Cursor& part, Node& node, Decoding decoding) {
    try {
      decoding();
    } catch (const Stop&) {
      CloseOpenNodes(part, node);
    }
    AddRest(part, node);
  }

  /// The nodes that were being decoded end where decoding stopped.
  static void CloseOpenNodes(const Cursor& cursor, Node& node) {
    for (Node* open = &node; !open->children.empty();) {
      open = &open->children.back();
      if (open->layer != cursor.GetLayer()) return;
      if (open->size == 0) open->size = cursor.GetOffset() - open->offset;
    }
  }

  void DecodeList(Cursor& cursor, Node& node, int depth) {
    node.type = "list";
    const Bytes start = cursor.Peek().first(std::min<std::size_t>(4, cursor.GetRemaining()));
    if (start.size() == 4 && Kestrel::LoadLittleEndian<std::uint32_t>(start.data()) != Kestrel::ValueListIdentifier)
      cursor.Fail(node, "\"VLIS\"", HexText(start));
    cursor.TakeField(4, node, "identifier \"VLIS\"");
    node.name = DecodeName(cursor, node, "list name");
    const auto count = cursor.TakeNumber<std::uint32_t>(node, "entries");
    for (std::uint32_t i = 0; i < count; ++i) {
      if (cursor.GetRemaining() == 0) cursor.Fail(node, fmt::format("entry {} of {}", i + 1, count), "the end");
      Node& entry = Add(node, cursor, "entry");
      entry.name = DecodeName(cursor, entry, "name");
      DecodeValue(cursor, entry, depth);
      Finish(cursor, entry);
    }
    Finish(cursor, node);
  }

  /// A name record: any type may stand there, its text counts.
  std::string DecodeName(Cursor& cursor, Node& owner, const char* what) {
    Node record;
    record.layer = cursor.GetLayer();
    record.offset = cursor.GetOffset();
    try {
      DecodeValue(cursor, record, kDeepest);
    } catch (const Stop&) {
      owner.damage = record.damage;
      owner.size = record.damage->offset - owner.offset;
      throw;
    }
    for (Field& field : record.fields)
      owner.fields.push_back({field.offset, field.size, fmt::format("{}: {}", what, field.meaning)});
    return record.value.is_string() ? record.value.get<std::string>() : record.value.dump();
  }

  /// A variant record: tag, length where the type has one, payload.
  void DecodeValue(Cursor& cursor, Node& node, int depth) {
    const auto tag = cursor.TakeNumber<std::uint8_t>(node, "type");
    if (tag >= Kestrel::kVariantTypeCount) cursor.Fail(node, "a type below 21", fmt::format("type {}", tag));
    node.type = NameOfTag(tag);
    std::uint64_t size = Kestrel::kVariantTypes[tag].fixedSize;
    const bool variable = size == Kestrel::kVariableSize;
    if (variable) size = cursor.TakeNumber<std::uint32_t>(node, "length");
    if (size > cursor.GetRemaining()) {
      const std::size_t here = cursor.GetRemaining();
      // The elements that are there tell which camera was meant.
      if (tag == Kestrel::vtBinaryData && depth < kDeepest && IsListBlock(cursor.Peek()))
        DecodeListBlock(cursor, node, here, depth);
      cursor.Fail(node, fmt::format("{} of {}", node.type, Counted(size)), Counted(here));
    }
    const std::size_t terminator = tag == Kestrel::vtString ? 1 : tag == Kestrel::vtWString ? 2 : 0;
    if (size < terminator) cursor.Fail(node, "room for a terminator", fmt::format("length {}", size));
    if (tag == Kestrel::vtBinaryData && depth < kDeepest && IsListBlock(cursor.Peek().first(size)))
      return DecodeListBlock(cursor, node, size, depth);
    const Bytes payload = cursor.TakeField(size, node, "value");
    SetValue(node, tag, payload);
    Explain(node);
  }

  static bool IsListBlock(Bytes payload) {
    return payload.size() >= 8 && Kestrel::LoadLittleEndian<std::uint32_t>(payload.data()) == wire::ListMarker;
  }

  /// Binary data that holds a list of records or texts.
  void DecodeListBlock(Cursor& cursor, Node& node, std::size_t size, int depth) {
    Cursor block = cursor.Split(size);
    node.meaning = MeaningOfEntry(node.name.value_or(""), 0, {});
    Contain(block, node, [&] {
      block.TakeField(4, node, "list marker");
      const auto count = block.TakeNumber<std::uint32_t>(node, "elements");
      node.meaning += fmt::format("{}{} element{}", node.meaning.empty() ? "" : ", ", count, count == 1 ? "" : "s");
      for (std::uint32_t i = 0; i < count; ++i) {
        if (block.GetRemaining() == 0) block.Fail(node, fmt::format("element {} of {}", i + 1, count), "the end");
        DecodeList(block, Add(node, block, "list"), depth + 1);
      }
    });
  }

  void DecodeBlock(Cursor& cursor, Node& node, std::uint32_t messageType) {
    node.type = "block";
    node.meaning = messageType == 0 ? "a pushed block"
                                    : fmt::format("a pushed block, message type {}: {}", messageType,
                                                  MeaningOfMessageType(messageType));
    while (cursor.GetRemaining() > 0) {
      Node& chunk = Add(node, cursor, "chunk");
      const auto tag = cursor.TakeNumber<std::uint32_t>(chunk, "tag");
      chunk.value = tag;
      chunk.meaning = MeaningOfChunk(tag, messageType);
      if (tag == wire::ctEnd) {
        chunk.type = "end";
        Finish(cursor, chunk);
        break;
      }
      DecodeChunk(cursor, chunk, tag, messageType);
      Finish(cursor, chunk);
    }
    Finish(cursor, node);
  }

  /// Whether a parser of the message type reads the chunk; where the type is not known, whether any would.
  static bool IsRead(std::uint32_t tag, std::uint32_t messageType) {
    const bool isCamera = messageType >= wire::fmtCameraKind3;
    switch (tag) {
      case wire::ctText:
        return true;
      case wire::ctPicture:
        return messageType == wire::fmtPicture || messageType == 0;
      case wire::ctValues:
        return messageType == wire::fmtValues || messageType == 0;
      case wire::ctCtt:
        return isCamera || messageType == 0;
      case wire::ctIpAddress:
      case wire::ctVendorDisplayName:
      case wire::ctPluginName:
        return messageType == wire::fmtAssembledCamera || messageType == 0;
      default:
        return tag <= wire::ctRecordsKind2 && (messageType == 0 || tag + 2 == messageType);
    }
  }

  void DecodeChunk(Cursor& cursor, Node& chunk, std::uint32_t tag, std::uint32_t messageType) {
    const auto length = cursor.TakeNumber<std::uint64_t>(chunk, "length");
    const std::size_t start = cursor.GetOffset();
    const bool known = messageType <= wire::fmtCameraKind4;
    if (!known || !IsRead(tag, messageType) || tag == wire::ctPicture) {
      if (tag != wire::ctPicture) chunk.meaning += ", skipped by its length";
      DecodeRaw(cursor, chunk, length);
    } else if (tag == wire::ctValues) {
      DecodeValues(cursor, chunk, length);
    } else if (tag == wire::ctCtt) {
      Node& byte = Add(chunk, cursor, "vtUChar");
      byte.value = cursor.TakeNumber<std::uint8_t>(byte, "CTT");
      Finish(cursor, byte);
      if (messageType == wire::fmtAssembledCamera && length > 0) DecodeRaw(cursor, chunk, length);
    } else if (tag <= wire::ctRecordsKind2) {
      DecodeList(cursor, Add(chunk, cursor, "list"), 0);
    } else {
      Node& text = Add(chunk, cursor, "record");
      DecodeValue(cursor, text, kDeepest);
      Finish(cursor, text);
    }
    const std::size_t used = cursor.GetOffset() - start;
    if (used == length) return;
    chunk.statedLength = length;
    if (tag != wire::ctCtt) chunk.meaning += fmt::format("; its length says {} but {} were used", length, used);
  }

  void DecodeRaw(Cursor& cursor, Node& parent, std::uint64_t size) {
    if (size > cursor.GetRemaining()) cursor.Fail(parent, Counted(size), Counted(cursor.GetRemaining()));
    Node& node = Add(parent, cursor, "raw");
    node.value = HexText(cursor.TakeField(size, node, Counted(size)));
    Finish(cursor, node);
  }

  void DecodeValues(Cursor& cursor, Node& parent, std::uint64_t length) {
    if (length > cursor.GetRemaining()) cursor.Fail(parent, Counted(length), Counted(cursor.GetRemaining()));
    Node& node = Add(parent, cursor, "values");
    Cursor payload = cursor.Split(length);
    Contain(payload, node, [&] {
      const auto count = payload.TakeNumber<std::uint64_t>(node, "count");
      const auto size = payload.TakeNumber<std::uint64_t>(node, "element size");
      node.value = nlohmann::ordered_json::array();
      if (size != 8) payload.Fail(node, "elements of 8 bytes", fmt::format("elements of {}", size));
      for (std::uint64_t i = 0; i < count; ++i)
        node.value.push_back(payload.TakeNumber<std::uint64_t>(node, fmt::format("value {}:", i + 1)));
    });
    node.size = length;
  }

  void DecodeFrame(Cursor& cursor, Node& node) {
    node.type = "frame";
    const Bytes head = cursor.TakeField(sizeof(capture::FrameHeader), node, "header");
    const auto header = Kestrel::LoadLittleEndian<capture::FrameHeader>(head.data());
    const auto event = static_cast<std::size_t>(header.event);
    if (header.version != capture::kVersion || header.headerSize != sizeof header ||
        event >= capture::kEventNames.size())
      cursor.Fail(node, "version 1 with a header of 48 bytes",
                  fmt::format("version {}, {} bytes", header.version, header.headerSize));
    const bool isCall = header.event == capture::FrameEvent::kCall && header.function < capture::kFunctionCount;
    node.name = std::string(isCall ? capture::kFunctionNames[header.function] : capture::kEventNames[event]);
    node.value = HexText(head);
    node.meaning = fmt::format("{}, thread {}, {:.3f} ms, stream {:#x}", header.result ? "succeeded" : "failed",
                               header.thread, static_cast<double>(header.duration) / 1e6, header.stream);
    if (header.flags & capture::kCredentialsReplaced) node.meaning += ", credentials replaced";
    if (header.bodyOffset != 0) return;
    while (cursor.GetRemaining() > 0) DecodePart(cursor, node, header);
  }

  void DecodePart(Cursor& cursor, Node& frame, const capture::FrameHeader& header) {
    Node& part = Add(frame, cursor, "part");
    const auto kind = cursor.TakeNumber<std::uint32_t>(part, "part");
    part.value = kind;
    const auto length = cursor.TakeNumber<std::uint64_t>(part, "length");
    Cursor payload = cursor.Split(std::min<std::uint64_t>(length, cursor.GetRemaining()));
    const std::size_t here = payload.GetRemaining();
    Contain(payload, part, [&] {
      switch (static_cast<capture::PartKind>(kind)) {
        case capture::PartKind::kArguments:
          DecodeArguments(payload, part, header);
          break;
        case capture::PartKind::kRequest:
          DecodeRequest(payload, Add(part, payload, "request"));
          break;
        case capture::PartKind::kReply:
          DecodeReply(payload, Add(part, payload, "reply"));
          break;
        case capture::PartKind::kBlock:
          DecodeBlock(payload, Add(part, payload, "block"), header.messageType);
          break;
        case capture::PartKind::kError:
          DecodeError(payload, Add(part, payload, "error"));
          break;
        default:
          DecodeRaw(payload, part, payload.GetRemaining());
      }
    });
    Finish(cursor, part);
    if (here < length) cursor.Fail(part, Counted(length), Counted(here));
  }

  void DecodeArguments(Cursor& cursor, Node& part, const capture::FrameHeader& header) {
    const bool isCall = header.event == capture::FrameEvent::kCall && header.function < capture::kFunctionCount;
    const auto& names = isCall ? capture::kArgumentNames[header.function] : capture::kBlockArgumentNames;
    for (std::size_t i = 0; cursor.GetRemaining() >= sizeof(std::uint64_t); ++i) {
      const std::string name(i < names.size() && !names[i].empty() ? names[i] : "argument");
      Node& argument = Add(part, cursor, "u64", name);
      argument.value = cursor.TakeNumber<std::uint64_t>(argument, name);
      argument.meaning = fmt::format("{:#x}", argument.value.get<std::uint64_t>());
      Finish(cursor, argument);
    }
  }

  void DecodeError(Cursor& cursor, Node& node) {
    const auto errorClass = cursor.TakeNumber<std::uint32_t>(node, "class");
    const auto code = cursor.TakeNumber<std::uint32_t>(node, "code");
    std::string texts[3];
    for (std::size_t i = 0; i < 3; ++i) {
      constexpr const char* kNames[] = {"class name", "description", "additional text"};
      const auto size = cursor.TakeNumber<std::uint32_t>(node, "length");
      const Bytes bytes = cursor.TakeField(size, node, kNames[i]);
      texts[i] = Printable({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
      if (i != 1) continue;
      std::u16string text(bytes.size() / 2, u'\0');
      Kestrel::LoadLittleEndian(bytes.data(), std::span(text));
      texts[i] = Printable(Utf8FromUtf16(text));
    }
    node.value = {{"class", errorClass},
                  {"code", code},
                  {"className", texts[0]},
                  {"description", texts[1]},
                  {"additionalText", texts[2]}};
    node.meaning = "error record";
    Finish(cursor, node);
  }

  Decoded& decoded_;
  std::size_t nodes_ = 0;
};

}  // namespace

Decoded Decode(std::vector<std::uint8_t> bytes, FormAndType what) {
  Decoded decoded;
  decoded.layers.push_back(std::move(bytes));
  Decoder(decoded).DecodeRoot(what);
  return decoded;
}

}  // namespace tarnfind
