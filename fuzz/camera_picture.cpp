#include "tools/page/camera_picture.h"

#include "fuzz_target.h"

using namespace tarnfind;

// First byte: where the picture is shown; the rest is the picture. Fewer pixels than the tool allows, because
// sanitizers make large pictures take seconds.
FUZZ_TARGET(input) {
  constexpr std::uint64_t kPixels = 1 << 20;
  constexpr std::int64_t kMostMemory = static_cast<std::int64_t>(kMostPictureMemory) + (1 << 20);
  fuzz::Choices choices(input);
  const ShownPicture& shown = choices.Below(2) ? kPictureOnPage : kPictureInReport;
  const fuzz::Held before = fuzz::GetHeld();
  const std::int64_t bytesBefore = fakes::GetHeapUse().bytes;
  fakes::ResetHeapPeak();
  {
    const std::vector<std::uint8_t> jpeg = ShowablePicture(choices.Rest(), shown, kPixels);
    fuzz::Check(jpeg.size() <= shown.mostBytes, "the picture fits");
    fuzz::Check(jpeg.empty() || !ShowablePicture(jpeg, shown, kPixels).empty(), "what is shown is a picture");
  }
  fuzz::Check(fakes::GetHeapUse().peak - bytesBefore <= kMostMemory, "memory stays within its bound");
  fuzz::Check(fuzz::GetHeld() == before, "nothing is left behind");
}
