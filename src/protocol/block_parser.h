/// Pushed result blocks: their layout, and what each message type delivers.
///
///     block := chunk* [tag 0]           ends at tag 0 or where the bytes end before a tag
///     chunk := tag:u32 length:u64 payload[length]
///
///     wide text      one variant record, as ReadWideString reads it; length is not used
///     byte           one byte; length is not used
///     records        one value list with "CAMERAINFOLIST"; length is not used
///     raw, values    length bytes; values are count:u64 size:u64 element[count]
///
///     type  chunks                                                    delivered
///     1     5 wide text, 6 raw picture                                PictureReceived
///     2     5 wide text, 7 values                                     ValuesReceived
///     3     1 records, 5 MAC, 12 CTT                                  CameraInfoReceived, kind 3
///     4     2 records, 5 MAC, 12 CTT                                  CameraInfoReceived, kind 1
///     5     3 records, 5 MAC, 12 CTT                                  CameraInfoReceived, kind 0
///     6     4 records, 5 MAC, 12 CTT                                  CameraInfoReceived, kind 2
///     7     5 MAC, 8 IP, 9 vendor, 10 plug-in, 12 CTT                 CameraInfoReceived, kind 3
///     8     5 MAC, 12 CTT                                             CameraInfoReceived, kind 4
///
/// A chunk that the type does not handle is skipped by its length. Behind tag 12 of type 7 length bytes are skipped as
/// well, so a sender that wants to stay aligned gives it length 0.
#pragma once

#include <cstdint>

#include "protocol/block_receiver.h"
#include "valuelist/buffer.h"

namespace Tarn::CameraFinding {

enum FinderMessageType : std::uint32_t {
  fmtPicture = 1,
  fmtValues = 2,
  fmtCameraKind3 = 3,
  fmtCameraKind1 = 4,
  fmtCameraKind0 = 5,
  fmtCameraKind2 = 6,
  fmtAssembledCamera = 7,
  fmtCameraKind4 = 8,
};

/// With each camera; the library attaches no meaning to the numbers.
using CameraEventKind = std::uint32_t;

enum ChunkTag : std::uint32_t {
  ctEnd = 0,
  ctRecordsKind3 = 1,
  ctRecordsKind1 = 2,
  ctRecordsKind0 = 3,
  ctRecordsKind2 = 4,
  ctText = 5,
  ctPicture = 6,
  ctValues = 7,
  ctIpAddress = 8,
  ctVendorDisplayName = 9,
  ctPluginName = 10,
  ctCtt = 12,
};

/// Only blocks of this kind are for the finder.
inline constexpr std::int32_t kFinderBlockKind = 2;

/// Parses the block from its read position and calls the wizard through the receiver's callback of that moment. Throws
/// nothing: any failure ends the block silently, except that an exception from ValuesReceived is reported to the
/// debugger and parsing goes on. What was delivered before stays delivered.
void ParseFinderBlock(CameraDataCallback::CameraDataInternalCallback& receiver, Kestrel::Buffer& block,
                      std::uint32_t messageType) noexcept;

}  // namespace Tarn::CameraFinding
