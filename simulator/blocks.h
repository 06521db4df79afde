/// The blocks that a server pushes, one function per form.
///
///     type 1   5 text  6 picture                      type 3..6  record tag: records     (one record)
///     type 2   5 text  7 count:u64 8:u64 value[count]  type 7     5 MAC  8 IP  9 vendor  10 plug-in ...  12 CTT
///                                                     type 8     5 MAC  12 CTT
///
/// Each chunk is tag:u32 length:u64 payload, the last one tag 0; texts are wide strings, 0C bytes:u32 units 0000. A
/// length is always the payload's, with one exception: tag 12 of type 7 says 0 and has its byte all the same, for that
/// is how the other end stays aligned.
///
///     05 00 00 00  12 00 00 00 00 00 00 00      a text of 18 bytes in all
///     0C 0D 00 00 00 ...                        its record
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "simulator/message_types.h"
#include "simulator/scenario.h"

namespace simulator {

using Bytes = std::vector<std::uint8_t>;

struct Block {
  FinderMessageType type = Tarn::CameraFinding::fmtCameraKind0;
  Bytes bytes;
};

Block PictureBlock(const std::string& text, std::span<const std::uint8_t> picture);
Block ValuesBlock(const std::string& text, std::span<const std::uint64_t> values);
/// type is one of those that carry a record.
Block RecordBlock(FinderMessageType type, const CameraRecord& record);
Block AssembledBlock(const CameraRecord& record);
Block GoneBlock(const CameraRecord& record);

}  // namespace simulator
