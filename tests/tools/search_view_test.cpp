#include "tools/search_view.h"

#include <gtest/gtest.h>

namespace tarnfind {
namespace {

using std::chrono::milliseconds;

CameraEvent Event(std::uint32_t kind, const std::string& mac, const std::string& ip = "10.0.0.1") {
  CameraEvent event{kind, 2, {}};
  event.camera.mac = mac;
  event.camera.ip = ip;
  return event;
}

TEST(FoundCameras, TellsWhatAnEventMeans) {
  FoundCameras cameras;
  const std::pair<CameraEvent, Change> rows[] = {
      {Event(3, "A"), Change::kNew},
      {Event(0, "A"), Change::kSame},
      {Event(0, "A", "10.0.0.2"), Change::kChanged},
      {Event(4, "A", ""), Change::kGone},
      {Event(3, "A", "10.0.0.2"), Change::kNew},
      {Event(4, "B"), Change::kGone},
      {Event(3, "UNKNOWN", "10.0.0.1"), Change::kNew},  // differ by IP
      {Event(3, "UNKNOWN", "10.0.0.2"), Change::kNew},
      {Event(3, "UNKNOWN", "10.0.0.1"), Change::kSame},
  };
  for (const auto& [event, change] : rows)
    EXPECT_EQ(cameras.Apply(event).lastChange, change) << event.camera.mac << event.camera.ip;
  EXPECT_EQ(cameras.Size(), 4U);
  EXPECT_EQ(cameras.Count(Change::kNew), 4U);
  EXPECT_EQ(cameras.Latest(9)[0]->camera.ip, "10.0.0.2") << "what was known stays";
}

class Text final : public TextOutput {
 public:
  void Write(std::string_view text) override { text_ += text; }
  std::string Take() { return std::exchange(text_, {}); }

 private:
  std::string text_;
};

TEST(LiveTable, DrawsOverItselfTenTimesASecondWithColoursForNews) {
  FoundCameras cameras;
  for (const CameraEvent& event :
       {Event(3, "A"), Event(3, "B"), Event(3, "C"), Event(4, "C"), Event(3, "D"), Event(3, "A")})
    cameras.Apply(event);
  SearchProgress progress{cameras, 1, 2, milliseconds(1260), milliseconds(5000)};
  platform::TerminalSize size{60, 7};
  Text output;
  const auto view = MakeLiveTable(output, {true, [&] { return size; }});
  const std::string frame =
      "\x1b[1m  MAC               IP              DHCP Vendor Model    F…\x1b[0m\x1b[K\n"
      "\x1b[32m+ A                 10.0.0.1        no                    …\x1b[0m\x1b[K\n"
      "\x1b[31m- C                 10.0.0.1        no                    …\x1b[0m\x1b[K\n"
      "\x1b[32m+ D                 10.0.0.1        no                    …\x1b[0m\x1b[K\n"
      "… and 1 more\x1b[K\n";
  view->Refresh(progress);
  EXPECT_EQ(output.Take(), frame + "1.2 s of 5.0 s   4 cameras: 4 new, 0 changed, 1 gone; 1 pi…\x1b[K\n\x1b[J");

  progress.elapsed += milliseconds(99);
  view->Refresh(progress);
  EXPECT_EQ(output.Take(), "");

  progress.elapsed += milliseconds(1);
  view->Refresh(progress);
  EXPECT_EQ(output.Take().substr(0, 4), "\x1b[6A") << "as many lines up as were drawn";

  size.columns = 61;
  view->Finish(progress);
  const std::string last = output.Take();
  EXPECT_EQ(last.substr(0, 7), "\x1b[H\x1b[2J");
  EXPECT_TRUE(last.ends_with("4 cameras: 4 new, 0 changed, 1 gone; 1 picture, 2 value lists in 1.3 s\x1b[K\n\x1b[J"));
}

}  // namespace
}  // namespace tarnfind
