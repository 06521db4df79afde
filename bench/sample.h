/// The inputs of tarn_bench and core_operations: bytes, cameras and messages. Every program that is compared with
/// tarn_bench uses the same inputs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "protocol/camera_record.h"

namespace sample {

using Bytes = std::vector<std::uint8_t>;

/// Pseudo-random bytes (xorshift, seed 2463534242).
Bytes SampleBytes(std::size_t count);
/// Camera number i, from 1 on.
Tarn::CameraFinding::CameraRecord Camera(unsigned i);
std::vector<Tarn::CameraFinding::CameraRecord> Cameras(std::size_t count);
/// A value list with "CAMERAINFOLIST" of `count` cameras, in binary form; and the same as a server's reply.
Bytes CameraList(std::size_t count);
Bytes Reply(std::size_t count);
/// A block of message type 3 with camera 33, and a block of type 1 with a picture of `pictureBytes` bytes.
Bytes CameraBlock();
Bytes PictureBlock(std::size_t pictureBytes);

/// Ends the program where the condition is false, so that no benchmark reports the time of wrong work.
void Require(bool condition, const char* what);

}  // namespace sample
