/// Plays messages through the built library and writes down what comes of them: probe INPUT OUTPUT.
///
///     input  := message*          message := kind:u8 type:u32 length:u32 byte[length]     kind 'R' reply, 'B' block
///     output := one line of JSON per message
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>

#include "wizard/finder_library.h"

namespace {

using wizard::Bytes;
using wizard::json;

json PlayReply(Tarn::CameraFinding::ICameraFinder& finder, const Bytes& reply) {
  GetScriptedDbi()->SetReply(reply);
  wizard::RecordingReceiver receiver;
  try {
    finder.ListFoundCameras(&receiver);
  } catch (const std::exception& exception) {
    return {{"text", exception.what()}};
  }
  return {{"cameras", receiver.cameras}};
}

json PlayBlock(Tarn::CameraFinding::ICameraFinder& finder, std::uint32_t type, const Bytes& block) {
  wizard::RecordingCallback callback;
  finder.SetNewCameraDataCallback(&callback);
  GetScriptedDbi()->Push(type, block);
  finder.SetNewCameraDataCallback(nullptr);
  return {{"delivered", callback.Delivered()}};
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "probe: give an input file and an output file\n";
    return 2;
  }
  std::ifstream file(argv[1], std::ios::binary);
  const Bytes input(std::istreambuf_iterator<char>(file), {});
  std::ofstream output(argv[2], std::ios::binary);
  const wizard::FinderLibrary library;
  const auto finder = library.MakeFinder();
  constexpr std::size_t kHead = 9;
  for (std::size_t position = 0; position + kHead <= input.size();) {
    std::uint32_t numbers[2];
    std::memcpy(numbers, input.data() + position + 1, sizeof numbers);
    const auto begin = input.begin() + static_cast<std::ptrdiff_t>(position + kHead);
    const Bytes message(begin, begin + numbers[1]);
    const json result =
        input[position] == 'R' ? PlayReply(*finder.Get(), message) : PlayBlock(*finder.Get(), numbers[0], message);
    output << result.dump(-1, ' ', false, json::error_handler_t::replace) << '\n';
    GetScriptedDbi()->Reset();
    position += kHead + numbers[1];
  }
  return output.flush() ? 0 : 1;
}
