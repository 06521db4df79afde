/// Writes the blocks that a server pushes, one function per form. protocol/block_format.h shows the format.
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
/// Requires a type that carries a record.
Block RecordBlock(FinderMessageType type, const CameraRecord& record);
Block AssembledBlock(const CameraRecord& record);
Block GoneBlock(const CameraRecord& record);

}  // namespace simulator
