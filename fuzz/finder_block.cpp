#include "protocol/finder_block.h"

#include <cstring>
#include <optional>

#include "base/exceptions.h"
#include "com/com_wrapper.h"
#include "counting_wizard.h"
#include "protocol/camera_data_callback.h"
#include "valuelist/value_list.h"

using namespace Tarn::CameraFinding;

namespace {

/// What a plain reading of a picture or values block gives.
struct PlainReading {
  bool hasText = false;
  std::optional<std::vector<std::uint8_t>> picture;
  std::vector<std::uint64_t> values;
};

/// Nothing where the block is damaged.
std::optional<PlainReading> ReadPlainly(fuzz::Bytes block, std::uint32_t type) {
  PlainReading reading;
  std::size_t at = 0;
  const auto number = [&](std::size_t size, std::uint64_t& value) {
    if (block.size() - at < size) return false;
    value = 0;
    std::memcpy(&value, block.data() + at, size);
    at += size;
    return true;
  };
  while (at < block.size()) {
    std::uint64_t tag = 0, length = 0;
    if (!number(4, tag)) return std::nullopt;
    if (tag == 0) break;
    if (!number(8, length)) return std::nullopt;
    if (tag == 5) {
      const auto rest = fuzz::BufferOf(block.subspan(at));
      std::u16string text;
      try {
        Kestrel::ReadWideString(*rest, text);
      } catch (const Kestrel::KestrelException&) {
        return std::nullopt;
      }
      reading.hasText = !text.empty();
      at += static_cast<std::size_t>(rest->GetReadPosition());
      continue;
    }
    if (length > block.size() - at) return std::nullopt;
    const fuzz::Bytes payload = block.subspan(at, static_cast<std::size_t>(length));
    at += payload.size();
    if (tag == 6 && type == fmtPicture) reading.picture.emplace(payload.begin(), payload.end());
    if (tag != 7 || type != fmtValues) continue;
    std::uint64_t head[2];
    if (payload.size() < sizeof head) return std::nullopt;
    std::memcpy(head, payload.data(), sizeof head);
    if (head[1] != 8) continue;
    if (head[0] > (payload.size() - sizeof head) / 8) return std::nullopt;
    for (std::uint64_t i = 0; i < head[0]; ++i) {
      std::uint64_t value;
      std::memcpy(&value, payload.data() + sizeof head + i * 8, 8);
      reading.values.push_back(value);
    }
  }
  return reading;
}

}  // namespace

/// First byte: the message type and whether the wizard throws. What arrives is what a plain reading gives.
FUZZ_TARGET(input) {
  fuzz::Choices choices(input);
  const std::uint8_t choice = choices.Byte();
  const std::uint32_t type = choice % 10;
  const fuzz::Bytes block = choices.Rest();
  fuzz::CountingWizard wizard;
  wizard.throws = choice >= 128;
  fuzz::Bounded(input, [&] {
    const auto receiver =
        Kestrel::MakeComObject<CameraDataCallback::CameraDataInternalCallback, IGenericDataReceivedCallback>(&wizard);
    ParseFinderBlock(*receiver.Get(), *fuzz::BufferOf(block), type);
  });
  fuzz::Check(wizard.references == 0, "the receiver lets the wizard go");
  fuzz::Check(wizard.pictures + wizard.valueLists + wizard.cameras <= 1, "a block delivers once at most");
  fuzz::Check(wizard.cameras == 0 || (type >= 3 && type <= 8), "cameras come from camera blocks");
  if (type != fmtPicture && type != fmtValues) return;
  const auto plain = ReadPlainly(block, type);
  const bool picture = plain && plain->hasText && plain->picture;
  fuzz::Check((wizard.pictures == 1) == (type == fmtPicture && picture), "a picture where there is one");
  if (wizard.pictures) fuzz::Check(wizard.lastPicture == *plain->picture, "that picture");
  const bool values = plain && plain->hasText && !plain->values.empty();
  fuzz::Check((wizard.valueLists == 1) == (type == fmtValues && values), "values where there are some");
  if (wizard.valueLists) fuzz::Check(wizard.lastValues == plain->values, "those values");
}
