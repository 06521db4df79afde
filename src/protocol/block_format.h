/// The format of a pushed block, for the parser and for whoever writes one.
///
/// Numbers are little-endian; nothing is aligned.
///
///     block := chunk* [tag 0]                a block ends at tag 0, or where its bytes end before a tag
///     chunk := tag:u32 length:u64 payload
///
///     payload    bytes                                                                     length
///     text       one variant record, a vtWString as a rule: 0C bytes:u32 units 00 00       is not used
///     byte       one byte                                                                  is not used
///     records    one value list with "CAMERAINFOLIST", see record_format.h                 is not used
///     picture    length bytes
///     values     count:u64 size:u64 element[count]; values of another size than 8 are      bounds them
///                reported and left out
///
/// A parser skips a chunk that its message type does not list, by the chunk's length. Where the table says that the
/// length is not used, the payload tells its own size, and a wrong length does no harm.
///
///     type  chunks, by tag                                            call to the wizard
///     1     5 text, 6 picture                                         PictureReceived
///     2     5 text, 7 values                                          ValuesReceived
///     3     1 records, 5 text (MAC), 12 byte (CTT)                    CameraInfoReceived, kind 3
///     4     2 records, 5 text (MAC), 12 byte (CTT)                    CameraInfoReceived, kind 1
///     5     3 records, 5 text (MAC), 12 byte (CTT)                    CameraInfoReceived, kind 0
///     6     4 records, 5 text (MAC), 12 byte (CTT)                    CameraInfoReceived, kind 2
///     7     5 text (MAC), 8 text (IP), 9 text (vendor),               CameraInfoReceived, kind 3
///           10 text (plug-in, one chunk for each), 12 byte (CTT)
///     8     5 text (MAC), 12 byte (CTT)                               CameraInfoReceived, kind 4
///
/// One oddity: behind the byte of tag 12, a parser of type 7 skips length bytes more. So a writer of type 7 states the
/// length 0 there.
///
/// A block of type 8, byte by byte:
///
///     05 00 00 00  29 00 00 00 00 00 00 00       tag 5, 41 bytes
///     0C 24 00 00 00                             a vtWString of 36 bytes, terminator included
///     41 00 43 00 3A 00 43 00 43 00 3A 00        "AC:CC:"
///     38 00 45 00 3A 00 30 00 30 00 3A 00        "8E:00:"
///     30 00 30 00 3A 00 30 00 38 00 00 00        "00:08" and the terminator
///     0C 00 00 00  01 00 00 00 00 00 00 00       tag 12, 1 byte
///     07                                         CTT 7
///     00 00 00 00                                tag 0: the end
#pragma once

#include <cstdint>

namespace Tarn::CameraFinding {

/// Only blocks of this kind are for the finder.
inline constexpr std::int32_t kFinderBlockKind = 2;

/// Travels beside the block, not in it.
enum FinderMessageType : std::uint32_t {
  fmtPicture = 1,
  fmtValues = 2,
  fmtCameraKind3 = 3,
  fmtCameraKind1 = 4,
  fmtCameraKind0 = 5,
  fmtCameraKind2 = 6,
  fmtAssembledCamera = 7,  ///< put together from single fields, without a record
  fmtCameraKind4 = 8,      ///< a camera that is known by its address alone
};

enum ChunkTag : std::uint32_t {
  ctEnd = 0,
  ctRecordsKind3 = 1,
  ctRecordsKind1 = 2,
  ctRecordsKind0 = 3,
  ctRecordsKind2 = 4,
  ctText = 5,  ///< which camera: a name with pictures and values, else the hardware address
  ctPicture = 6,
  ctValues = 7,
  ctIpAddress = 8,
  ctVendorDisplayName = 9,
  ctPluginName = 10,
  ctCtt = 12,
};

}  // namespace Tarn::CameraFinding
