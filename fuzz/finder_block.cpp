#include "protocol/block_parser.h"

#include <cstring>
#include <memory>
#include <optional>

#include "base/exceptions.h"
#include "base/text_conversion.h"
#include "counting_wizard.h"
#include "protocol/block_format.h"
#include "protocol/camera_info.h"
#include "protocol/camera_type.h"
#include "protocol/record_wire.h"
#include "valuelist/value_list.h"

using namespace Tarn::CameraFinding;

namespace {

/// What the getters of a camera return. A text is empty (nullopt) where its getter found no memory.
struct SeenCamera {
  std::uint32_t kind = 0;
  std::int32_t type = 0;
  std::vector<std::optional<std::u16string>> texts;
  std::vector<std::uint64_t> numbers;
  friend bool operator==(const SeenCamera&, const SeenCamera&) = default;
};

SeenCamera Seen(std::uint32_t kind, std::int32_t type, ICameraInfo& camera) {
  SeenCamera seen = {kind, type, {}, {}};
  seen.texts.reserve(std::size(fuzz::kTextGetters));
  for (const auto getter : fuzz::kTextGetters) {
    const std::unique_ptr<OLECHAR, void (*)(BSTR)> text((camera.*getter)(), SysFreeString);
    seen.texts.emplace_back();
    if (text) seen.texts.back() = fuzz::WithoutAddress(std::u16string(text.get()));
  }
  seen.numbers = {camera.GetDeviceFlags(), camera.GetVendorTypeMask(), camera.GetIcb(), camera.GetGcb(),
                  camera.GetCtt(),         camera.IsDhcpEnabled()};
  return seen;
}

/// What a block delivers: one of the three, or nothing.
struct Delivered {
  std::optional<std::vector<std::uint8_t>> picture;
  std::vector<std::uint64_t> values;
  std::optional<SeenCamera> camera;
  friend bool operator==(const Delivered&, const Delivered&) = default;
};

/// Reads a block plainly, chunk by chunk. Throws KestrelException where it is damaged.
class PlainReader {
 public:
  PlainReader(fuzz::Bytes block, std::uint32_t type) : rest_(block), type_(type) {}

  Delivered Read() {
    if (type_ == fmtAssembledCamera) camera_.mac = "UNKNOWN";
    if (type_ == fmtCameraKind4) camera_.vendorTypeMask = ~std::uint64_t{0};
    while (!rest_.empty()) {
      const std::uint64_t tag = Number(4);
      if (tag == ctEnd) break;
      ReadChunk(tag, Number(8));
    }
    if (type_ == fmtPicture || type_ == fmtValues) {
      if (text_.empty()) return {};
      return {picture_, values_, {}};
    }
    if (type_ < fmtCameraKind3 || type_ > fmtCameraKind4) return {};
    return {{}, {}, TellCamera()};
  }

 private:
  fuzz::Bytes Take(std::uint64_t count) {
    if (count > rest_.size()) throw Kestrel::BufferException("cut");
    const fuzz::Bytes taken = rest_.first(static_cast<std::size_t>(count));
    rest_ = rest_.subspan(taken.size());
    return taken;
  }
  std::uint64_t Number(std::size_t size) {
    std::uint64_t value = 0;
    std::memcpy(&value, Take(size).data(), size);
    return value;
  }
  /// Reads a variant or records with the library's own code, because other fuzz targets check that.
  template <class Reading>
  void ReadWith(Reading reading) {
    const auto buffer = fuzz::BufferOf(rest_);
    reading(*buffer);
    Take(buffer->GetReadPosition());
  }
  std::string NarrowText() {
    ReadWith([this](Kestrel::Buffer& buffer) { Kestrel::ReadWideString(buffer, text_); });
    return Kestrel::WideToAnsi(text_);
  }

  void ReadChunk(std::uint64_t tag, std::uint64_t length) {
    const bool assembled = type_ == fmtAssembledCamera;
    if (type_ == fmtPicture || type_ == fmtValues) {
      if (tag == ctText) return ReadWith([this](Kestrel::Buffer& buffer) { Kestrel::ReadWideString(buffer, text_); });
      const fuzz::Bytes payload = Take(length);
      if (type_ == fmtPicture && tag == ctPicture) picture_.emplace(payload.begin(), payload.end());
      if (type_ == fmtValues && tag == ctValues) AppendValues(payload);
    } else if (tag == ctText) {
      camera_.mac = NarrowText();
    } else if (tag == ctCtt) {
      camera_.ctt = static_cast<std::uint8_t>(Number(1));
      if (assembled) Take(length);
    } else if (type_ <= fmtCameraKind2 && tag == type_ - fmtCameraKind3 + ctRecordsKind3) {
      ReadWith([this](Kestrel::Buffer& buffer) { camera_ = ReadFirstRecord(buffer); });
    } else if (assembled && tag == ctIpAddress) {
      camera_.ip = NarrowText();
    } else if (assembled && tag == ctVendorDisplayName) {
      camera_.vendorDisplayName = NarrowText();
    } else if (assembled && tag == ctPluginName) {
      camera_.pluginNames.push_back(NarrowText());
    } else {
      Take(length);
    }
  }

  void AppendValues(fuzz::Bytes payload) {
    std::uint64_t head[2];
    if (payload.size() < sizeof head) throw Kestrel::BufferException("cut");
    std::memcpy(head, payload.data(), sizeof head);
    if (head[1] != 8) return;
    if (head[0] > (payload.size() - sizeof head) / 8) throw Kestrel::BufferException("cut");
    for (std::uint64_t i = 0; i < head[0]; ++i) {
      std::uint64_t value;
      std::memcpy(&value, payload.data() + sizeof head + i * 8, 8);
      values_.push_back(value);
    }
  }

  std::optional<SeenCamera> TellCamera() {
    if (camera_.mac.empty()) return {};
    if (type_ == fmtAssembledCamera) {
      camera_.loginUser = camera_.loginPassword = camera_.subnetMask = camera_.firmwareVersion = "";
      camera_.dhcpMode = 0;
      camera_.deviceFlags = 0x20000;
      camera_.model = camera_.vendorDisplayName;
    }
    constexpr std::uint32_t kKinds[] = {3, 1, 0, 2, 3, 4};
    const std::string plugin = camera_.pluginNames.empty() ? "" : camera_.pluginNames.front();
    const std::int32_t type =
        camera_.vendorTypeMask ? TypeFromVendorBit(camera_.vendorTypeMask) : TypeFromPluginName(plugin);
    return Seen(kKinds[type_ - fmtCameraKind3], type, *MakeCameraInfo(CameraRecord(camera_)).Get());
  }

  fuzz::Bytes rest_;
  const std::uint32_t type_;
  std::u16string text_;
  std::optional<std::vector<std::uint8_t>> picture_;
  std::vector<std::uint64_t> values_;
  CameraRecord camera_;
};

Delivered ReadPlainly(fuzz::Bytes block, std::uint32_t type) {
  try {
    return PlainReader(block, type).Read();
  } catch (const Kestrel::KestrelException&) {
    return {};
  }
}

Delivered Deliver(fuzz::Bytes block, std::uint32_t type, bool throws) {
  fuzz::CountingWizard wizard(block.size());
  wizard.throws = throws;
  {
    const CurrentWizard current(&wizard);
    const auto buffer = fuzz::BufferOf(block);
    ParseFinderBlock(current, *buffer, type);
    fuzz::Check(buffer->GetReadPosition() <= buffer->GetLength(), "the position stays inside");
  }
  fuzz::Check(wizard.references == 0, "the parser keeps no reference on the wizard");
  fuzz::Check(wizard.pictures + wizard.valueLists + wizard.cameras <= 1, "a block delivers once at most");
  Delivered delivered;
  if (wizard.pictures) delivered.picture = wizard.lastPicture;
  if (wizard.valueLists) delivered.values = wizard.lastValues;
  if (wizard.cameras) delivered.camera = Seen(wizard.lastKind, wizard.lastType, *wizard.lastCamera.Get());
  return delivered;
}

/// Missing memory drops the block, or a text of the camera.
bool IsDroppedOrUsual(Delivered delivered, const Delivered& usual) {
  if (delivered == Delivered()) return true;
  if (delivered.camera && usual.camera)
    for (std::size_t i = 0; i < usual.camera->texts.size(); ++i)
      if (!delivered.camera->texts[i]) delivered.camera->texts[i] = usual.camera->texts[i];
  return delivered == usual;
}

}  // namespace

/// First byte: the message type and whether the wizard throws; second: which allocation fails. What arrives is what a
/// plain reading gives.
FUZZ_TARGET(input) {
  fuzz::Choices choices(input);
  const std::uint8_t choice = choices.Byte();
  const std::uint8_t failing = choices.Byte();
  const std::uint32_t type = choice % 10;
  fuzz::Bounded(input, [&] {
    const Delivered delivered = fuzz::WithFailingAllocation(
        failing, [&] { return Deliver(choices.Rest(), type, choice >= 128); }, IsDroppedOrUsual);
    fuzz::Check(delivered == ReadPlainly(choices.Rest(), type), "what arrives is what a plain reading gives");
  });
}
