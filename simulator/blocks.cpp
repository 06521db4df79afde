#include "simulator/blocks.h"

#include "base/byte_order.h"
#include "base/text_conversion.h"
#include "protocol/record_wire.h"
#include "valuelist/buffer_pool.h"
#include "valuelist/value_list.h"
#include "valuelist/variant_types.h"

namespace simulator {
namespace {

using namespace Tarn::CameraFinding;

class BlockWriter {
 public:
  void AddText(ChunkTag tag, const std::string& utf8) {
    const std::u16string units = Kestrel::Utf8ToWide(utf8);
    const std::size_t textLength = (units.size() + 1) * sizeof(char16_t);
    AddHeader(tag, sizeof(std::uint8_t) + sizeof(std::uint32_t) + textLength);
    Append<std::uint8_t>(Kestrel::vtWString);
    Append(static_cast<std::uint32_t>(textLength));
    AppendBytes(units.c_str(), textLength);
  }
  void AddRaw(ChunkTag tag, std::span<const std::uint8_t> payload) {
    AddHeader(tag, payload.size());
    AppendBytes(payload.data(), payload.size());
  }
  void AddValues(std::span<const std::uint64_t> values) {
    AddHeader(ctValues, 2 * sizeof(std::uint64_t) + values.size_bytes());
    Append<std::uint64_t>(values.size());
    Append<std::uint64_t>(sizeof(std::uint64_t));
    for (const std::uint64_t value : values) Append(value);
  }
  void AddByte(ChunkTag tag, std::uint8_t byte, std::uint64_t statedLength) {
    AddHeader(tag, statedLength);
    Append(byte);
  }
  Block Finish(FinderMessageType type) {
    Append<std::uint32_t>(ctEnd);
    return {type, std::move(bytes_)};
  }

 private:
  void AddHeader(ChunkTag tag, std::uint64_t length) {
    Append<std::uint32_t>(tag);
    Append(length);
  }
  template <class Number>
  void Append(Number number) {
    bytes_.resize(bytes_.size() + sizeof number);
    Kestrel::StoreLittleEndian(bytes_.data() + bytes_.size() - sizeof number, number);
  }
  void AppendBytes(const void* source, std::size_t count) {
    const auto* const first = static_cast<const std::uint8_t*>(source);
    bytes_.insert(bytes_.end(), first, first + count);
  }

  Bytes bytes_;
};

}  // namespace

Block PictureBlock(const std::string& text, std::span<const std::uint8_t> picture) {
  BlockWriter writer;
  writer.AddText(ctText, text);
  writer.AddRaw(ctPicture, picture);
  return writer.Finish(fmtPicture);
}

Block ValuesBlock(const std::string& text, std::span<const std::uint64_t> values) {
  BlockWriter writer;
  writer.AddText(ctText, text);
  writer.AddValues(values);
  return writer.Finish(fmtValues);
}

Block RecordBlock(FinderMessageType type, const CameraRecord& record) {
  Kestrel::ValueList list;
  WriteRecordList(list, kCameraInfoListKey, {record});
  const auto buffer = Kestrel::GetBuffer(Kestrel::SmallBufferList);
  list.Write(*buffer);
  BlockWriter writer;
  writer.AddRaw(RowOf(type).recordTag, {buffer->GetData(), buffer->GetLength()});
  return writer.Finish(type);
}

Block AssembledBlock(const CameraRecord& record) {
  BlockWriter writer;
  writer.AddText(ctText, record.mac);
  writer.AddText(ctIpAddress, record.ip);
  writer.AddText(ctVendorDisplayName, record.vendorDisplayName);
  for (const std::string& plugin : record.pluginNames) writer.AddText(ctPluginName, plugin);
  // Length 0, because a parser of this type skips that many bytes behind the byte.
  writer.AddByte(ctCtt, record.ctt, 0);
  return writer.Finish(fmtAssembledCamera);
}

Block GoneBlock(const CameraRecord& record) {
  BlockWriter writer;
  writer.AddText(ctText, record.mac);
  writer.AddByte(ctCtt, record.ctt, sizeof record.ctt);
  return writer.Finish(fmtCameraKind4);
}

}  // namespace simulator
