#include "tools/decode/values.h"

#include <cmath>

#include "base/byte_order.h"
#include "base/exceptions.h"
#include "tools/decode/hex_text.h"
#include "tools/decode/meanings.h"
#include "tools/text.h"
#include "valuelist/variant.h"
#include "valuelist/variant_types.h"

namespace tarnfind {
namespace {

using Bytes = std::span<const std::uint8_t>;

template <class Number>
void SetFloating(Node& node, Bytes payload) {
  const auto number = Kestrel::LoadLittleEndian<Number>(payload.data());
  if (std::isfinite(number)) node.value = number;
  node.meaning = std::isfinite(number) ? "" : "no finite number";
}

void SetInteger(Node& node, std::uint8_t tag, Bytes payload) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < payload.size(); ++i) number |= std::uint64_t{payload[i]} << 8 * i;
  const bool isSigned = tag == Kestrel::vtChar || tag == Kestrel::vtSChar || tag == Kestrel::vtShort ||
                        tag == Kestrel::vtInt || tag == Kestrel::vtInt64 || tag == Kestrel::vtLong;
  const auto shift = static_cast<int>(64 - 8 * payload.size());
  if (isSigned)
    node.value = static_cast<std::int64_t>(number << shift) >> shift;
  else
    node.value = number;
}

/// The types whose text form says more than their number. The number is what is encoded again.
void SetByText(Node& node, std::uint8_t tag, Bytes payload) {
  if (tag == Kestrel::vtGuid)
    node.value = HexText(payload);
  else
    node.value = Kestrel::LoadLittleEndian<std::uint64_t>(payload.data());
  try {
    Kestrel::Variant variant = Kestrel::Variant::Create(tag);
    variant.ReadRaw(payload.data(), payload.size());
    node.meaning = variant.ToString();
  } catch (const Kestrel::KestrelException&) {
    node.meaning = "no date";
  }
}

}  // namespace

void SetValue(Node& node, std::uint8_t tag, Bytes payload) {
  switch (tag) {
    case Kestrel::vtString: {
      const std::string text(reinterpret_cast<const char*>(payload.data()), payload.size() - 1);
      node.value = Printable(text);
      if (IsValidUtf8(text)) node.value = text;
      return;
    }
    case Kestrel::vtWString: {
      std::u16string text(payload.size() / 2 - 1, u'\0');
      Kestrel::LoadLittleEndian(payload.data(), std::span(text));
      node.value = Utf8FromUtf16(text);
      return;
    }
    case Kestrel::vtBinaryData:
    case Kestrel::vtBlobPtr:
      node.value = HexText(payload);
      return;
    case Kestrel::vtGuid:
    case Kestrel::vtFileTime:
    case Kestrel::vtDateTime:
      SetByText(node, tag, payload);
      return;
    case Kestrel::vtBool:
      node.value = payload[0] != 0;
      return;
    case Kestrel::vtFloat:
      SetFloating<float>(node, payload);
      return;
    case Kestrel::vtDouble:
      SetFloating<double>(node, payload);
      return;
    default:
      SetInteger(node, tag, payload);
      return;
  }
}

void Explain(Node& node) {
  const std::uint64_t number = node.value.is_number_integer() ? node.value.get<std::uint64_t>() : 0;
  const std::string text = node.value.is_string() ? node.value.get<std::string>() : std::string();
  const std::string meaning = MeaningOfEntry(node.name.value_or(""), number, text);
  if (!meaning.empty()) node.meaning += (node.meaning.empty() ? "" : "; ") + meaning;
}

}  // namespace tarnfind
