#include "tools/decode/message_json.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <span>

#include "base/base64.h"
#include "base/byte_order.h"
#include "capture/format.h"
#include "protocol/block_format.h"
#include "protocol/record_format.h"
#include "protocol/request_wire.h"
#include "tools/decode/hex_text.h"
#include "tools/decode/meanings.h"
#include "tools/text.h"
#include "valuelist/value_list.h"
#include "valuelist/variant_types.h"

namespace tarnfind {
namespace {

using Json = nlohmann::ordered_json;
using Bytes = std::vector<std::uint8_t>;

constexpr int kDeepestJson = 64;

template <class Number>
void Append(Bytes& bytes, Number number) {
  const std::size_t before = bytes.size();
  bytes.resize(before + sizeof number);
  Kestrel::StoreLittleEndian<Number>(bytes.data() + before, number);
}
void AppendBytes(Bytes& bytes, const Bytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

class Encoder {
 public:
  Bytes EncodeNode(const Json& node) {
    if (!node.is_object()) Complain("must be an object");
    if (++depth_ > kDeepestJson) Complain("is nested too deep");
    Bytes bytes = node.contains("bytes") ? Unhex(node, "bytes") : EncodeByType(node);
    --depth_;
    return bytes;
  }

 private:
  struct TypeRow {
    std::string_view type;
    Bytes (Encoder::*encode)(const Json& node);
  };
  static const std::array<TypeRow, 15> kTypes;

  [[noreturn]] void Complain(const std::string& what) const { throw tarnfind::EncodeError(path_ + " " + what); }

  const Json& Get(const Json& node, const char* key) const {
    const auto found = node.find(key);
    if (found == node.end()) Complain(fmt::format("has no \"{}\"", key));
    return *found;
  }
  std::string Text(const Json& node, const char* key) const {
    const Json& value = Get(node, key);
    if (!value.is_string()) Complain(fmt::format("\"{}\" must be a text", key));
    return value.get<std::string>();
  }
  /// A whole number that fits: from -2^(bits-1) to 2^bits - 1.
  std::uint64_t Number(const Json& value, std::size_t bits, const char* key) const {
    const std::uint64_t most = bits == 64 ? UINT64_MAX : (std::uint64_t{1} << bits) - 1;
    if (value.is_number_unsigned() && value.get<std::uint64_t>() <= most) return value.get<std::uint64_t>();
    if (value.is_number_integer() && !value.is_number_unsigned() &&
        value.get<std::int64_t>() >= -static_cast<std::int64_t>(std::uint64_t{1} << (bits - 1) >> 1) * 2)
      return static_cast<std::uint64_t>(value.get<std::int64_t>());
    Complain(fmt::format("\"{}\" must be a whole number of at most {} bits", key, bits));
  }
  template <class Value>
  Value NumberOf(const Json& node, const char* key) const {
    return static_cast<Value>(Number(Get(node, key), 8 * sizeof(Value), key));
  }
  Bytes Unhex(const Json& node, const char* key) const {
    const auto bytes = BytesOfHex(Text(node, key));
    if (!bytes) Complain(fmt::format("\"{}\" must be pairs of hexadecimal digits", key));
    return *bytes;
  }

  template <class Visit>
  std::size_t VisitItems(const Json& node, Visit visit) {
    const auto items = node.find("items");
    if (items == node.end()) return 0;
    if (!items->is_array()) Complain("\"items\" must be an array");
    const std::string path = path_;
    for (std::size_t i = 0; i < items->size(); ++i) {
      path_ = fmt::format("{}.items[{}]", path, i);
      visit((*items)[i]);
    }
    path_ = path;
    return items->size();
  }
  Bytes Items(const Json& node) {
    Bytes bytes;
    VisitItems(node, [&](const Json& item) { AppendBytes(bytes, EncodeNode(item)); });
    return bytes;
  }

  Bytes EncodeByType(const Json& node) {
    const std::string type = Text(node, "type");
    if (const std::uint8_t tag = TagOfName(type); tag < Kestrel::kVariantTypeCount) return EncodeRecord(node, tag);
    for (const TypeRow& row : kTypes)
      if (row.type == type) return (this->*row.encode)(node);
    Complain(fmt::format("has the unknown type \"{}\"", Printable(type)));
  }

  Bytes EncodeRequest(const Json& node) {
    Bytes bytes;
    Append(bytes,
           node.contains("value") ? NumberOf<std::uint32_t>(node, "value") : Tarn::CameraFinding::kFinderRequestCode);
    AppendBytes(bytes, Items(node));
    return bytes;
  }

  Bytes EncodeReply(const Json& node) {
    if (!node.contains("value")) return {};
    const std::string type = Text(node, "value");
    const std::uint8_t tag = TagOfName(type);
    if (tag != Kestrel::vtString && tag != Kestrel::vtWString) Complain("\"value\" must be vtWString or vtString");
    return Record(tag, Terminated(Items(node), tag));
  }

  Bytes EncodeBase64(const Json& node) {
    const Bytes list = Items(node);
    const std::string text = Kestrel::Base64Encode(list.data(), list.size());
    return Bytes(text.begin(), text.end());
  }
  Bytes EncodeWideBase64(const Json& node) {
    Bytes bytes;
    for (const std::uint8_t character : EncodeBase64(node)) Append<std::uint16_t>(bytes, character);
    return bytes;
  }

  Bytes EncodeList(const Json& node) {
    Bytes entries;
    const std::size_t count = VisitItems(node, [&](const Json& item) { AppendBytes(entries, EncodeNode(item)); });
    Bytes bytes;
    Append<std::uint32_t>(bytes, Kestrel::ValueListIdentifier);
    AppendBytes(bytes, NameRecord(node.contains("name") ? Text(node, "name") : std::string()));
    Append(bytes, static_cast<std::uint32_t>(count));
    AppendBytes(bytes, entries);
    return bytes;
  }

  static Bytes Terminated(Bytes bytes, std::uint8_t tag) {
    bytes.insert(bytes.end(), tag == Kestrel::vtWString ? 2 : 1, 0);
    return bytes;
  }
  static Bytes Record(std::uint8_t tag, const Bytes& payload) {
    Bytes bytes = {tag};
    if (Kestrel::kVariantTypes[tag].fixedSize == Kestrel::kVariableSize)
      Append(bytes, static_cast<std::uint32_t>(payload.size()));
    AppendBytes(bytes, payload);
    return bytes;
  }
  static Bytes NameRecord(const std::string& name) {
    return Record(Kestrel::vtString, Terminated(Bytes(name.begin(), name.end()), Kestrel::vtString));
  }

  /// The name of an entry stands before its value; the field of a chunk has none.
  Bytes EncodeRecord(const Json& node, std::uint8_t tag) {
    Bytes bytes = node.contains("name") ? NameRecord(Text(node, "name")) : Bytes();
    AppendBytes(bytes, Record(tag, Payload(node, tag)));
    return bytes;
  }

  Bytes Payload(const Json& node, std::uint8_t tag) {
    Bytes bytes;
    switch (tag) {
      case Kestrel::vtBool: {
        const Json& value = Get(node, "value");
        if (!value.is_boolean()) Complain("\"value\" must be true or false");
        return {static_cast<std::uint8_t>(value.get<bool>() ? 1 : 0)};
      }
      case Kestrel::vtString: {
        const std::string text = Text(node, "value");
        return Terminated(Bytes(text.begin(), text.end()), tag);
      }
      case Kestrel::vtWString:
        for (const char16_t unit : Utf16FromUtf8(Text(node, "value"))) Append<std::uint16_t>(bytes, unit);
        return Terminated(bytes, tag);
      case Kestrel::vtBinaryData:
        if (!node.contains("items")) return Unhex(node, "value");
        Append<std::uint32_t>(bytes, Tarn::CameraFinding::ListMarker);
        Append(bytes, static_cast<std::uint32_t>(node["items"].size()));
        AppendBytes(bytes, Items(node));
        return bytes;
      case Kestrel::vtBlobPtr:
        return Unhex(node, "value");
      case Kestrel::vtGuid:
        bytes = Unhex(node, "value");
        if (bytes.size() != 16) Complain("\"value\" must be 16 bytes");
        return bytes;
      case Kestrel::vtFloat:
        Append(bytes, static_cast<float>(Floating(node)));
        return bytes;
      case Kestrel::vtDouble:
        Append(bytes, Floating(node));
        return bytes;
      default: {
        const auto size = static_cast<std::size_t>(Kestrel::kVariantTypes[tag].fixedSize);
        Append<std::uint64_t>(bytes, Number(Get(node, "value"), 8 * size, "value"));
        bytes.resize(size);
        return bytes;
      }
    }
  }
  double Floating(const Json& node) const {
    const Json& value = Get(node, "value");
    if (!value.is_number()) Complain("\"value\" must be a number");
    return value.get<double>();
  }

  Bytes EncodeChunk(const Json& node) {
    const Bytes payload = Items(node);
    Bytes bytes;
    Append(bytes, NumberOf<std::uint32_t>(node, "value"));
    Append(bytes, node.contains("length") ? NumberOf<std::uint64_t>(node, "length") : std::uint64_t{payload.size()});
    AppendBytes(bytes, payload);
    return bytes;
  }
  Bytes EncodeEnd(const Json&) { return Bytes(sizeof(std::uint32_t)); }
  Bytes EncodeRaw(const Json& node) { return Unhex(node, "value"); }

  Bytes EncodeValues(const Json& node) {
    const Json& values = Get(node, "value");
    if (!values.is_array()) Complain("\"value\" must be an array of numbers");
    Bytes bytes;
    Append<std::uint64_t>(bytes, values.size());
    Append<std::uint64_t>(bytes, sizeof(std::uint64_t));
    for (const Json& value : values) Append(bytes, Number(value, 64, "value"));
    return bytes;
  }

  Bytes EncodeFrame(const Json& node) {
    Bytes bytes = Unhex(node, "value");
    if (bytes.size() != sizeof(capture::FrameHeader)) Complain("\"value\" must be a header of 48 bytes");
    const Bytes body = Items(node);
    Kestrel::StoreLittleEndian<std::uint64_t>(&bytes[offsetof(capture::FrameHeader, bodySize)], body.size());
    AppendBytes(bytes, body);
    return bytes;
  }
  Bytes EncodeNumber(const Json& node) {
    Bytes bytes;
    Append(bytes, NumberOf<std::uint64_t>(node, "value"));
    return bytes;
  }
  Bytes EncodeError(const Json& node) {
    const Json& value = Get(node, "value");
    Bytes bytes;
    Append(bytes, NumberOf<std::uint32_t>(value, "class"));
    Append(bytes, NumberOf<std::uint32_t>(value, "code"));
    for (const char* const key : {"className", "description", "additionalText"}) {
      const std::string text = Text(value, key);
      Bytes units(text.begin(), text.end());
      if (std::string_view(key) == "description") {
        units.clear();
        for (const char16_t unit : Utf16FromUtf8(text)) Append<std::uint16_t>(units, unit);
      }
      Append(bytes, static_cast<std::uint32_t>(units.size()));
      AppendBytes(bytes, units);
    }
    return bytes;
  }

  std::string path_ = "the message";
  int depth_ = 0;
};

constexpr std::array<Encoder::TypeRow, 15> Encoder::kTypes = {{
    {"request", &Encoder::EncodeRequest},
    {"reply", &Encoder::EncodeReply},
    {"base64", &Encoder::EncodeBase64},
    {"base64-utf16", &Encoder::EncodeWideBase64},
    {"list", &Encoder::EncodeList},
    {"block", &Encoder::Items},
    {"chunk", &Encoder::EncodeChunk},
    {"part", &Encoder::EncodeChunk},
    {"end", &Encoder::EncodeEnd},
    {"rest", &Encoder::EncodeRaw},
    {"raw", &Encoder::EncodeRaw},
    {"values", &Encoder::EncodeValues},
    {"frame", &Encoder::EncodeFrame},
    {"u64", &Encoder::EncodeNumber},
    {"error", &Encoder::EncodeError},
}};

Json NodeToJson(const Decoded& decoded, const Node& node) {
  Json object = {{"type", node.type}};
  if (node.name) object["name"] = *node.name;
  if (!node.value.is_null()) object["value"] = node.value;
  if (node.statedLength) object["length"] = *node.statedLength;
  if (!node.meaning.empty()) object["meaning"] = node.meaning;
  if (node.damage)
    object["damage"] = {
        {"offset", node.damage->offset}, {"expected", node.damage->expected}, {"found", node.damage->found}};
  if (!node.children.empty()) {
    Json& items = object["items"] = Json::array();
    for (const Node& child : node.children) items.push_back(NodeToJson(decoded, child));
  }
  const auto bytes = std::span(decoded.layers[node.layer]).subspan(node.offset, node.size);
  bool same = false;
  try {
    same = std::ranges::equal(Encoder().EncodeNode(object), bytes);
  } catch (const EncodeError&) {  // nothing that could be encoded, so the bytes have to stand for it
  }
  if (!same) object["bytes"] = HexText(bytes);
  return object;
}

}  // namespace

Json ToJson(const Decoded& decoded) {
  return NodeToJson(decoded, decoded.root);
}

Bytes Encode(const Json& message) {
  return Encoder().EncodeNode(message);
}

}  // namespace tarnfind
