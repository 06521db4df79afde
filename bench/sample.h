/// The inputs that every benchmark shares: bytes, cameras and messages, the same in every program that measures this
/// work.
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
/// The list "CAMERAINFOLIST" of that many cameras, in binary form; and as a server's reply.
Bytes CameraList(std::size_t count);
Bytes Reply(std::size_t count);
/// A block of message type 3 with camera 33; one of type 1 with a picture of that many bytes.
Bytes CameraBlock();
Bytes PictureBlock(std::size_t pictureBytes);

/// A benchmark that computes the wrong thing must not report a time.
void Require(bool condition, const char* what);

}  // namespace sample
