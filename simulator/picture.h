/// Pictures that the simulator's cameras take: small greyscale images with the camera's number in blocky digits.
#pragma once

#include <cstdint>
#include <vector>

namespace simulator {

/// A PNG file. The seed shades it, and a bright column moves by one with each picture of a camera, so that no two
/// pictures of a camera are alike.
std::vector<std::uint8_t> MakePicture(std::uint64_t seed, std::uint64_t cameraNumber, std::uint32_t pictureNumber);

}  // namespace simulator
