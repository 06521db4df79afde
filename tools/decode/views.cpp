#include "tools/decode/views.h"

#include <fmt/format.h>

#include <algorithm>
#include <span>

#include "tools/camera_snapshot.h"
#include "tools/decode/cursor.h"
#include "tools/text.h"

namespace tarnfind {
namespace {

constexpr std::size_t kLongestValue = 200;
constexpr std::size_t kDumpBytes = 16;
constexpr std::size_t kDumpRowsOfAField = 4;

std::string Shortened(const std::string& text) {
  if (text.size() <= kLongestValue) return text;
  return Printable(text.substr(0, kLongestValue)) + fmt::format("… ({} characters)", text.size());
}

std::string ValueText(const Node& node, const ViewOptions& options) {
  if (node.value.is_null()) return {};
  if (node.name == "LPD" && !options.showPasswords && node.value.is_string() && node.value != kUnsetCredential)
    return node.value.get_ref<const std::string&>().empty() ? " \"\"" : " \"********\"";
  const bool notRead = node.type == "raw" || node.type == "rest";
  if (notRead && !options.showPasswords) return " " + Counted(node.size);  // because a password can be among them
  if (notRead || node.type == "vtBinaryData" || node.type == "vtBlobPtr" || node.type == "vtGuid")
    return " " + Shortened(node.value.get<std::string>());
  if (node.type == "frame" || node.type == "part") return {};
  if (node.value.is_string()) return " \"" + Shortened(Printable(node.value.get<std::string>())) + "\"";
  return " " + Shortened(Printable(node.value.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace)));
}

std::string DamageText(const Damage& damage) {
  return fmt::format("damage at offset {}: expected {}, found {}", damage.offset, damage.expected, damage.found);
}

void WriteNode(const Node& node, std::size_t depth, const ViewOptions& options, TextOutput& output) {
  std::string line(2 * depth, ' ');
  if (node.name && !node.name->empty()) line += Printable(*node.name) + " ";
  line += node.type + ValueText(node, options);
  if (!node.meaning.empty()) line += "  — " + Printable(node.meaning);
  output.Write(line + "\n");
  for (const Node& child : node.children) WriteNode(child, depth + 1, options, output);
  if (node.damage) output.Write(fmt::format("{}!! {}\n", std::string(2 * depth + 2, ' '), DamageText(*node.damage)));
}

class Dump {
 public:
  Dump(const Decoded& decoded, TextOutput& output) : decoded_(decoded), output_(output) {}

  /// Fields and children in the order of their bytes; a layer of its own behind the text that it comes from.
  void Write(const Node& node, std::size_t depth) {
    const std::string name = node.name && !node.name->empty() ? Printable(*node.name) + " " : "";
    output_.Write(fmt::format("{:>8}  {:<49} {}{}{}{}\n", "", "", std::string(2 * depth, ' '), name, node.type,
                              node.meaning.empty() ? "" : ": " + Printable(node.meaning)));
    auto field = node.fields.begin();
    for (const Node& child : node.children) {
      for (; field != node.fields.end() && (child.layer != node.layer || field->offset < child.offset); ++field)
        WriteField(node.layer, *field, depth + 1);
      if (child.fields.empty() && child.children.empty())
        WriteField(child.layer, {child.offset, child.size, child.type + " " + Printable(child.meaning)}, depth + 1);
      else
        Write(child, depth + 1);
    }
    for (; field != node.fields.end(); ++field) WriteField(node.layer, *field, depth + 1);
    if (node.damage)
      output_.Write(
          fmt::format("{:>8}  {:<49} {}!! {}\n", "", "", std::string(2 * depth + 2, ' '), DamageText(*node.damage)));
  }

 private:
  void WriteField(std::size_t layer, const Field& field, std::size_t depth) {
    const auto bytes = std::span(decoded_.layers[layer]).subspan(field.offset, field.size);
    for (std::size_t row = 0; row == 0 || row * kDumpBytes < bytes.size(); ++row) {
      const std::size_t start = row * kDumpBytes;
      if (row == kDumpRowsOfAField && bytes.size() - start > kDumpBytes) {
        output_.Write(fmt::format("{:>8}  … {} bytes more\n", "", bytes.size() - start));
        return;
      }
      std::string digits;
      for (const std::uint8_t byte : bytes.subspan(start, std::min(kDumpBytes, bytes.size() - start)))
        digits += fmt::format("{:02x} ", byte);
      output_.Write(fmt::format("{:>{}}{:0{}x}  {:<49} {}{}\n", "", layer == 0 ? 2 : 4, field.offset + start,
                                layer == 0 ? 6 : 4, digits, row == 0 ? std::string(2 * depth, ' ') : "",
                                row == 0 ? Printable(field.meaning) : ""));
    }
  }

  const Decoded& decoded_;
  TextOutput& output_;
};

}  // namespace

void WriteTree(const Decoded& decoded, const ViewOptions& options, TextOutput& output) {
  WriteNode(decoded.root, 0, options, output);
}

void WriteDump(const Decoded& decoded, TextOutput& output) {
  Dump(decoded, output).Write(decoded.root, 0);
}

}  // namespace tarnfind
