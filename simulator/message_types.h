/// The message types that the simulator pushes: what a scenario calls them, how they look, and what they mean here.
///
/// The finder passes its event kinds on without a meaning of their own. In this server: a camera is found (kind 0),
/// changed (1), seen again (2) or reported (3, the answer to an enquiry, or put together from what little is known of
/// it), and at last gone (4).
#pragma once

#include <array>
#include <string_view>

#include "protocol/block_format.h"

namespace simulator {

/// What an event of this type does to its camera.
enum class Presence { kAsItWas, kPresent, kGone };

struct MessageTypeRow {
  Tarn::CameraFinding::FinderMessageType type;
  std::string_view event;
  Tarn::CameraFinding::ChunkTag recordTag;  ///< ctEnd where no record is carried
  Presence presence;
};

/// Row number = message type - 1.
inline constexpr auto kMessageTypes = std::to_array<MessageTypeRow>({
    {Tarn::CameraFinding::fmtPicture, "picture", Tarn::CameraFinding::ctEnd, Presence::kAsItWas},
    {Tarn::CameraFinding::fmtValues, "values", Tarn::CameraFinding::ctEnd, Presence::kAsItWas},
    {Tarn::CameraFinding::fmtCameraKind3, "reported", Tarn::CameraFinding::ctRecordsKind3, Presence::kPresent},
    {Tarn::CameraFinding::fmtCameraKind1, "changed", Tarn::CameraFinding::ctRecordsKind1, Presence::kPresent},
    {Tarn::CameraFinding::fmtCameraKind0, "found", Tarn::CameraFinding::ctRecordsKind0, Presence::kPresent},
    {Tarn::CameraFinding::fmtCameraKind2, "seen", Tarn::CameraFinding::ctRecordsKind2, Presence::kPresent},
    {Tarn::CameraFinding::fmtAssembledCamera, "assembled", Tarn::CameraFinding::ctEnd, Presence::kPresent},
    {Tarn::CameraFinding::fmtCameraKind4, "gone", Tarn::CameraFinding::ctEnd, Presence::kGone},
});
static_assert([] {
  for (std::size_t i = 0; i < kMessageTypes.size(); ++i)
    if (kMessageTypes[i].type != i + 1) return false;
  return true;
}());

inline constexpr const MessageTypeRow& RowOf(Tarn::CameraFinding::FinderMessageType type) {
  return kMessageTypes[type - 1];
}

}  // namespace simulator
