/// Pictures that the simulator's cameras take: small greyscale images with the camera's number in blocky digits.
#pragma once

#include <cstdint>
#include <vector>

namespace simulator {

/// A PNG file. The shades depend on the seed and the camera. An inverted column moves by one with each picture, so that
/// successive pictures of a camera differ.
std::vector<std::uint8_t> MakePicture(std::uint64_t seed, std::uint64_t cameraNumber, std::uint32_t pictureNumber);

}  // namespace simulator
