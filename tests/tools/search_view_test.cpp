#include "tools/search_view.h"

#include <gtest/gtest.h>

#include "tools/json_objects.h"

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
  EXPECT_EQ(cameras.Apply(Event(3, "A")).lastChange, Change::kNew);
  EXPECT_EQ(cameras.Apply(Event(0, "A")).lastChange, Change::kSame);
  EXPECT_EQ(cameras.Apply(Event(0, "A", "10.0.0.2")).lastChange, Change::kChanged);
  EXPECT_EQ(cameras.Apply(Event(4, "A", "")).lastChange, Change::kGone);
  EXPECT_EQ(cameras.Latest(9)[0]->camera.ip, "10.0.0.2") << "what was known stays";
  EXPECT_EQ(cameras.Apply(Event(3, "A", "10.0.0.2")).lastChange, Change::kNew);
  EXPECT_EQ(cameras.Apply(Event(4, "B")).lastChange, Change::kGone);
  EXPECT_EQ(cameras.Size(), 2U);
  EXPECT_EQ(cameras.Count(Change::kNew), 2U);
  EXPECT_EQ(cameras.Count(Change::kGone), 2U);
}

TEST(FoundCameras, WithoutAnAddressDifferByIp) {
  FoundCameras cameras;
  cameras.Apply(Event(3, "UNKNOWN", "10.0.0.1"));
  EXPECT_EQ(cameras.Apply(Event(3, "UNKNOWN", "10.0.0.2")).lastChange, Change::kNew);
  EXPECT_EQ(cameras.Apply(Event(3, "UNKNOWN", "10.0.0.1")).lastChange, Change::kSame);
}

TEST(FoundCameras, WithTheLatestEventsStandInOrderOfArrival) {
  FoundCameras cameras;
  for (const char* mac : {"A", "B", "C", "D", "A"}) cameras.Apply(Event(3, mac));
  const auto latest = cameras.Latest(2);
  ASSERT_EQ(latest.size(), 2U);
  EXPECT_EQ(latest[0]->camera.mac, "A");
  EXPECT_EQ(latest[1]->camera.mac, "D");
}

class Text final : public TextOutput {
 public:
  void Write(std::string_view text) override { text_ += text; }
  std::string Take() { return std::exchange(text_, {}); }

 private:
  std::string text_;
};

/// A view, and the cameras that it is shown.
struct Shown {
  explicit Shown(std::unique_ptr<SearchView> shownBy) : view(std::move(shownBy)) {}
  void Show(const CameraEvent& event) { view->ShowCamera(event, cameras.Apply(event)); }

  FoundCameras cameras;
  SearchProgress progress{cameras, 1, 2, milliseconds(1260), milliseconds(5000)};
  std::unique_ptr<SearchView> view;
};

TEST(PlainView, WritesALineForEachEvent) {
  Text output;
  Shown shown(MakePlainView(output));
  shown.Show(Event(3, "00:40:8C:00:00:01"));
  shown.Show(Event(4, "00:40:8C:00:00:01", ""));
  shown.view->ShowPicture({"K\x1b", 1, 0, "K_-0001.bin", ""});
  shown.view->ShowPicture({"K", 2, 0, "", ""});
  shown.view->ShowValues({"K", {1, 18446744073709551615U}});
  shown.view->Finish(shown.progress);
  EXPECT_EQ(output.Take(), "+ 00:40:8C:00:00:01 10.0.0.1        no" + std::string(72, ' ') + "2\n" +
                               "- 00:40:8C:00:00:01 10.0.0.1        no" + std::string(72, ' ') + "2\n" +
                               "* picture of K�: 1 byte, kept as K_-0001.bin\n"
                               "* picture of K: 2 bytes\n"
                               "* values of K: 1 18446744073709551615\n"
                               "1 camera: 1 new, 0 changed, 1 gone; 1 picture, 2 value lists in 1.2 s\n");
}

TEST(JsonView, WritesAnObjectForEachEventWithoutTimes) {
  Text output;
  Shown shown(MakeJsonView(output, false));
  shown.Show(Event(3, "A"));
  const Json camera = Json::parse(output.Take());
  EXPECT_EQ(camera["event"], "camera");
  EXPECT_EQ(camera["change"], "new");
  EXPECT_EQ(camera["kind"], 3);
  EXPECT_EQ(camera["camera"]["mac"], "A");
  shown.view->ShowPicture({"K", 1, 0xAB, "K-0001.bin", ""});
  shown.view->ShowPicture({"K", 1, 0xAB, "", ""});
  shown.view->ShowValues({"K", {18446744073709551615U}});
  shown.view->Finish(shown.progress);
  EXPECT_EQ(output.Take(), R"({"event":"picture","camera":"K","bytes":1,"crc32":"000000ab","file":"K-0001.bin"})"
                           "\n"
                           R"({"event":"picture","camera":"K","bytes":1,"crc32":"000000ab","file":null})"
                           "\n"
                           R"({"event":"values","camera":"K","values":[18446744073709551615]})"
                           "\n"
                           R"({"event":"summary","command":"search","cameras":1,"new":1,"changed":0,"same":0,"gone":0,)"
                           R"("pictures":1,"values":2})"
                           "\n");
}

TEST(LiveTable, DrawsOverItselfTenTimesASecond) {
  Text output;
  platform::TerminalSize size{60, 7};
  Shown shown(MakeLiveTable(output, {false, [&] { return size; }}));
  for (const char* mac : {"A", "B", "C", "D", "A"}) shown.Show(Event(3, mac));
  const std::string frame =
      "  MAC               IP              DHCP Vendor Model    F…\x1b[K\n"
      "+ A                 10.0.0.1        no                    …\x1b[K\n"
      "+ C                 10.0.0.1        no                    …\x1b[K\n"
      "+ D                 10.0.0.1        no                    …\x1b[K\n"
      "… and 1 more\x1b[K\n";
  shown.view->Refresh(shown.progress);
  EXPECT_EQ(output.Take(), frame + "1.2 s of 5.0 s   4 cameras: 4 new, 0 changed, 0 gone; 1 pi…\x1b[K\n\x1b[J");

  shown.progress.elapsed += milliseconds(99);
  shown.view->Refresh(shown.progress);
  EXPECT_EQ(output.Take(), "");

  shown.progress.elapsed += milliseconds(1);
  shown.view->Refresh(shown.progress);
  EXPECT_EQ(output.Take().substr(0, 4), "\x1b[6A") << "as many lines up as were drawn";

  size.columns = 61;
  shown.view->Finish(shown.progress);
  const std::string last = output.Take();
  EXPECT_EQ(last.substr(0, 7), "\x1b[H\x1b[2J");
  EXPECT_TRUE(last.ends_with("4 cameras: 4 new, 0 changed, 0 gone; 1 picture, 2 value lists in 1.3 s\x1b[K\n\x1b[J"));
}

TEST(LiveTable, ColoursRowsByTheirLastNews) {
  Text output;
  Shown shown(MakeLiveTable(output, {true, [] { return platform::TerminalSize{80, 24}; }}));
  for (const CameraEvent& event : {Event(3, "A"), Event(3, "A"), Event(3, "B"), Event(4, "B")}) shown.Show(event);
  shown.view->Refresh(shown.progress);
  const std::string frame = output.Take();
  EXPECT_NE(frame.find("\n\x1b[32m+ A "), std::string::npos);
  EXPECT_NE(frame.find("\n\x1b[31m- B "), std::string::npos);
}

}  // namespace
}  // namespace tarnfind
