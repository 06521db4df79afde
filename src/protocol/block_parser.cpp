#include "protocol/block_parser.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "base/byte_order.h"
#include "base/exceptions.h"
#include "base/text_conversion.h"
#include "com/bstr.h"
#include "com/com_ptr.h"
#include "platform/debugger.h"
#include "protocol/block_format.h"
#include "protocol/camera_info.h"
#include "protocol/camera_record.h"
#include "protocol/camera_type.h"
#include "protocol/record_wire.h"
#include "valuelist/value_list.h"

namespace Tarn::CameraFinding {
namespace {

constexpr char kInvalidStructSize[] = "Invalid struct size in read vector\r\n";
/// "Wizard was already closed", the usual reason why ValuesReceived throws. The text stays as it is, its spelling
/// included, because people search logs for it.
constexpr char16_t kWizardClosed[] = u"Wizzard wurde schon geschlossen\r\n";

struct Chunk {
  std::uint32_t tag;
  std::uint64_t length;
};

/// Reads the tag and length of the next chunk; false at the block's end.
bool NextChunk(Kestrel::Buffer& block, Chunk& chunk) {
  if (block.GetUnreadLength() == 0) return false;
  chunk.tag = block.ReadUInt32();
  if (chunk.tag == ctEnd) return false;
  chunk.length = block.ReadUInt64();
  return true;
}

std::string ReadNarrowText(Kestrel::Buffer& block) {
  std::u16string wide;
  Kestrel::ReadWideString(block, wide);
  return Kestrel::WideToAnsi(wide);
}

/// Appends the elements of a values payload. Elements of another size than 8 bytes are reported and left out.
void AppendValues(std::span<const std::uint8_t> payload, std::vector<std::uint64_t>& values) {
  constexpr std::size_t kElementSize = sizeof(std::uint64_t);
  constexpr std::size_t kHeadSize = 2 * sizeof(std::uint64_t);
  if (payload.size() < kHeadSize) throw Kestrel::BufferException(Kestrel::kNotEnoughBytes);
  const auto count = Kestrel::LoadLittleEndian<std::uint64_t>(payload.data());
  const auto elementSize = Kestrel::LoadLittleEndian<std::uint64_t>(payload.data() + sizeof count);
  if (elementSize != kElementSize) {
    platform::OutputDebugStringA(kInvalidStructSize);
    return;
  }
  const auto elements = payload.subspan(kHeadSize);
  if (count > elements.size() / kElementSize) throw Kestrel::BufferException(Kestrel::kNotEnoughBytes);
  const std::size_t before = values.size();
  values.resize(before + static_cast<std::size_t>(count));
  Kestrel::LoadLittleEndian(elements.data(), std::span(values).subspan(before));
}

struct MessageRow;

void ParsePicture(const CurrentWizard& wizard, Kestrel::Buffer& block, const MessageRow&) {
  std::u16string text;
  std::span<const std::uint8_t> picture;
  bool pictureSeen = false;
  for (Chunk chunk; NextChunk(block, chunk);) {
    if (chunk.tag == ctText) {
      Kestrel::ReadWideString(block, text);
      continue;
    }
    const std::uint8_t* const payload = block.Take(chunk.length);
    if (chunk.tag != ctPicture) continue;
    picture = {payload, static_cast<std::size_t>(chunk.length)};
    pictureSeen = true;
  }
  if (text.empty() || !pictureSeen) return;
  if (INewCameraDataCallback* const callback = wizard.load())
    callback->PictureReceived(picture.data(), picture.size(), Kestrel::MakeBstr(text));
}

void ParseValues(const CurrentWizard& wizard, Kestrel::Buffer& block, const MessageRow&) {
  std::u16string text;
  std::vector<std::uint64_t> values;
  for (Chunk chunk; NextChunk(block, chunk);) {
    if (chunk.tag == ctText) {
      Kestrel::ReadWideString(block, text);
      continue;
    }
    const std::uint8_t* const payload = block.Take(chunk.length);
    if (chunk.tag == ctValues) AppendValues({payload, static_cast<std::size_t>(chunk.length)}, values);
  }
  if (text.empty() || values.empty()) return;
  INewCameraDataCallback* const callback = wizard.load();
  if (!callback) return;
  const BSTR cameraText = Kestrel::MakeBstr(text);
  try {
    callback->ValuesReceived(cameraText, values.data(), values.size());
  } catch (...) {  // the one call whose failure is reported
    platform::OutputDebugStringW(kWizardClosed);
  }
}

/// How a chunk changes the camera that a block describes.
struct CameraChunk {
  std::uint32_t tag;
  /// Consumes the payload.
  void (*apply)(Kestrel::Buffer& block, std::uint64_t length, CameraRecord& camera);
};

template <auto member>
void ApplyText(Kestrel::Buffer& block, std::uint64_t, CameraRecord& camera) {
  camera.*member = ReadNarrowText(block);
}

void ApplyPluginName(Kestrel::Buffer& block, std::uint64_t, CameraRecord& camera) {
  camera.pluginNames.push_back(ReadNarrowText(block));
}

void ApplyCtt(Kestrel::Buffer& block, std::uint64_t, CameraRecord& camera) {
  camera.ctt = block.ReadUInt8();
}

void ApplyCttAndSkip(Kestrel::Buffer& block, std::uint64_t length, CameraRecord& camera) {
  camera.ctt = block.ReadUInt8();
  block.Take(length);
}

void ApplyRecords(Kestrel::Buffer& block, std::uint64_t, CameraRecord& camera) {
  camera = ReadFirstRecord(block);
}

constexpr std::array<CameraChunk, 3> CameraByRecord(ChunkTag recordTag) {
  return {{{ctText, ApplyText<&CameraRecord::mac>}, {ctCtt, ApplyCtt}, {recordTag, ApplyRecords}}};
}
constexpr auto kCameraByRecordKind3 = CameraByRecord(ctRecordsKind3);
constexpr auto kCameraByRecordKind1 = CameraByRecord(ctRecordsKind1);
constexpr auto kCameraByRecordKind0 = CameraByRecord(ctRecordsKind0);
constexpr auto kCameraByRecordKind2 = CameraByRecord(ctRecordsKind2);
constexpr auto kCameraByAddress =
    std::to_array<CameraChunk>({{ctText, ApplyText<&CameraRecord::mac>}, {ctCtt, ApplyCtt}});
constexpr auto kAssembledCamera = std::to_array<CameraChunk>({
    {ctText, ApplyText<&CameraRecord::mac>},
    {ctIpAddress, ApplyText<&CameraRecord::ip>},
    {ctVendorDisplayName, ApplyText<&CameraRecord::vendorDisplayName>},
    {ctPluginName, ApplyPluginName},
    {ctCtt, ApplyCttAndSkip},
});

void StartGone(CameraRecord& camera) {
  camera.vendorTypeMask = std::numeric_limits<std::uint64_t>::max();
}

void StartAssembled(CameraRecord& camera) {
  camera.mac = "UNKNOWN";
  camera.deviceFlags = CameraRecord::kDeviceFlag17;
}

void FinishAssembled(CameraRecord& camera) {
  camera.loginPassword.clear();
  camera.loginUser.clear();
  camera.dhcpMode = 0;
  camera.ni2 = {"0.0.0.0"};
  camera.rbl = true;
  camera.subnetMask.clear();
  camera.firmwareVersion.clear();
  camera.model = camera.vendorDisplayName;
  camera.serialNumber = camera.pluginNames.empty() ? "" : camera.pluginNames.front();
}

void LeaveAsItIs(CameraRecord&) {}

struct MessageRow {
  FinderMessageType type;
  void (*parse)(const CurrentWizard& wizard, Kestrel::Buffer& block, const MessageRow& row);
  CameraEventKind kind = cekFound;
  std::span<const CameraChunk> chunks = {};
  void (*start)(CameraRecord& camera) = LeaveAsItIs;
  void (*finish)(CameraRecord& camera) = LeaveAsItIs;
};

CameraTypeCode TypeOf(const CameraRecord& camera) {
  if (camera.vendorTypeMask != 0) return TypeFromVendorBit(camera.vendorTypeMask);
  return TypeFromPluginName(camera.pluginNames.empty() ? "" : camera.pluginNames.front());
}

void DeliverCamera(const CurrentWizard& wizard, CameraRecord&& record, CameraEventKind kind) {
  INewCameraDataCallback* const callback = wizard.load();
  if (!callback || record.mac.empty()) return;
  const CameraTypeCode type = TypeOf(record);
  const Kestrel::ComPtr<ICameraInfo> camera = MakeCameraInfo(std::move(record));
  callback->CameraInfoReceived(kind, camera.Get(), type);
}

void ParseCamera(const CurrentWizard& wizard, Kestrel::Buffer& block, const MessageRow& row) {
  CameraRecord camera;
  row.start(camera);
  for (Chunk chunk; NextChunk(block, chunk);) {
    const auto handler = std::ranges::find(row.chunks, chunk.tag, &CameraChunk::tag);
    if (handler == row.chunks.end())
      block.Take(chunk.length);
    else
      handler->apply(block, chunk.length, camera);
  }
  row.finish(camera);
  DeliverCamera(wizard, std::move(camera), row.kind);
}

/// Row number = type - 1, so that a type is looked up by its number.
constexpr auto kMessages = std::to_array<MessageRow>({
    {fmtPicture, ParsePicture},
    {fmtValues, ParseValues},
    {fmtCameraKind3, ParseCamera, cekReported, kCameraByRecordKind3},
    {fmtCameraKind1, ParseCamera, cekChanged, kCameraByRecordKind1},
    {fmtCameraKind0, ParseCamera, cekFound, kCameraByRecordKind0},
    {fmtCameraKind2, ParseCamera, cekSeen, kCameraByRecordKind2},
    {fmtAssembledCamera, ParseCamera, cekReported, kAssembledCamera, StartAssembled, FinishAssembled},
    {fmtCameraKind4, ParseCamera, cekGone, kCameraByAddress, StartGone},
});
static_assert([] {
  for (std::size_t i = 0; i < kMessages.size(); ++i)
    if (kMessages[i].type != i + 1) return false;
  return true;
}());

}  // namespace

void ParseFinderBlock(const CurrentWizard& wizard, Kestrel::Buffer& block, std::uint32_t messageType) noexcept {
  if (messageType < kMessages.front().type || messageType > kMessages.back().type) return;
  const MessageRow& row = kMessages[messageType - 1];
  try {
    row.parse(wizard, block, row);
  } catch (...) {  // a damaged block, or the wizard's own failure; the next block is parsed all the same
  }
}

}  // namespace Tarn::CameraFinding
