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

/// The table, and the cameras that it is shown.
struct Shown {
  Shown(bool colours, std::initializer_list<CameraEvent> events)
      : view(MakeLiveTable(output, {colours, [this] { return size; }})) {
    for (const CameraEvent& event : events) cameras.Apply(event);
  }

  Text output;
  platform::TerminalSize size{60, 7};
  FoundCameras cameras;
  SearchProgress progress{cameras, 1, 2, milliseconds(1260), milliseconds(5000)};
  std::unique_ptr<SearchView> view;
};

TEST(LiveTable, DrawsOverItselfTenTimesASecond) {
  Shown shown(false, {Event(3, "A"), Event(3, "B"), Event(3, "C"), Event(3, "D"), Event(3, "A")});
  const std::string frame =
      "  MAC               IP              DHCP Vendor Model    F…\x1b[K\n"
      "+ A                 10.0.0.1        no                    …\x1b[K\n"
      "+ C                 10.0.0.1        no                    …\x1b[K\n"
      "+ D                 10.0.0.1        no                    …\x1b[K\n"
      "… and 1 more\x1b[K\n";
  shown.view->Refresh(shown.progress);
  EXPECT_EQ(shown.output.Take(), frame + "1.2 s of 5.0 s   4 cameras: 4 new, 0 changed, 0 gone; 1 pi…\x1b[K\n\x1b[J");

  shown.progress.elapsed += milliseconds(99);
  shown.view->Refresh(shown.progress);
  EXPECT_EQ(shown.output.Take(), "");

  shown.progress.elapsed += milliseconds(1);
  shown.view->Refresh(shown.progress);
  EXPECT_EQ(shown.output.Take().substr(0, 4), "\x1b[6A") << "as many lines up as were drawn";

  shown.size.columns = 61;
  shown.view->Finish(shown.progress);
  const std::string last = shown.output.Take();
  EXPECT_EQ(last.substr(0, 7), "\x1b[H\x1b[2J");
  EXPECT_TRUE(last.ends_with("4 cameras: 4 new, 0 changed, 0 gone; 1 picture, 2 value lists in 1.3 s\x1b[K\n\x1b[J"));
}

TEST(LiveTable, ColoursRowsByTheirLastNews) {
  Shown shown(true, {Event(3, "A"), Event(3, "A"), Event(3, "B"), Event(4, "B")});
  shown.view->Refresh(shown.progress);
  const std::string frame = shown.output.Take();
  EXPECT_NE(frame.find("\n\x1b[32m+ A "), std::string::npos);
  EXPECT_NE(frame.find("\n\x1b[31m- B "), std::string::npos);
}

}  // namespace
}  // namespace tarnfind
