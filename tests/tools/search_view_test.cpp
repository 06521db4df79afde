#include "tools/search_view.h"

#include <gtest/gtest.h>

#include <utility>

namespace tarnfind {
namespace {

using std::chrono::milliseconds;

CameraSnapshot Camera(const std::string& mac, const std::string& ip = "10.0.0.1", const std::string& firmware = "1") {
  CameraSnapshot camera;
  camera.mac = mac;
  camera.ip = ip;
  camera.firmware = firmware;
  camera.dhcp = true;
  return camera;
}

CameraEvent Event(std::uint32_t kind, const CameraSnapshot& camera, std::int32_t type = 2) {
  return {kind, type, camera, {}};
}

/// As the library makes it of single fields: the rest is made up.
CameraEvent Assembled(const std::string& mac, const std::string& ip) {
  CameraSnapshot camera;
  camera.mac = mac;
  camera.ip = ip;
  camera.vendor = camera.model = "Maker";
  camera.plugin = "UNKNOWN";
  camera.deviceFlags = 0x20000;
  return Event(3, camera, 0);
}

TEST(FoundCameras, TellsWhatAnEventMeans) {
  FoundCameras cameras;
  EXPECT_EQ(cameras.ApplyListed(Camera("L"), {})->lastChange, Change::kKnown);
  EXPECT_EQ(cameras.ApplyListed(Camera("L", "10.0.0.9"), {})->listedTwiceAt, "10.0.0.9");
  const std::pair<CameraEvent, Change> rows[] = {
      {Event(0, Camera("L")), Change::kSame},
      {Event(3, Camera("00:40:8C:00:00:0A")), Change::kNew},
      {Event(0, Camera("00-40-8c-00-00-0a")), Change::kSame},
      {Event(0, Camera("00:40:8C:00:00:0A", "10.0.0.2")), Change::kChanged},
      {Event(0, Camera("00:40:8C:00:00:0A", "10.0.0.2"), 3), Change::kChanged},
      {Assembled("00:40:8C:00:00:0A", "10.0.0.2"), Change::kChanged},  // a vendor
      {Assembled("00:40:8C:00:00:0A", ""), Change::kSame},             // tells no address
      {Event(4, Camera("00:40:8C:00:00:0A", "")), Change::kGone},
      {Event(3, Camera("00:40:8C:00:00:0A", "10.0.0.2")), Change::kNew},
      {Event(4, Camera("B")), Change::kGone},
      {Assembled("C", "10.0.0.3"), Change::kNew},
      {Event(3, Camera("C", "10.0.0.3")), Change::kChanged},    // another vendor
      {Event(3, Camera("UNKNOWN", "10.0.0.1")), Change::kNew},  // differ by IP
      {Event(3, Camera("UNKNOWN", "10.0.0.2")), Change::kNew},
      {Event(3, Camera("UNKNOWN", "10.0.0.1")), Change::kSame},
  };
  for (const auto& [event, change] : rows)
    EXPECT_EQ(cameras.Apply(event).lastChange, change) << event.camera.mac << event.camera.ip;
  EXPECT_EQ(cameras.Size(), 6U);
  const CameraCounts& counts = cameras.Counts();
  EXPECT_EQ((std::array{counts.known, counts.fresh, counts.changed, counts.gone}),
            (std::array<std::size_t, 4>{1, 4, 2, 1}));

  const FoundCamera& a = *cameras.FindByText("00408c00000a");
  EXPECT_EQ(a.camera.ip + a.camera.firmware, "10.0.0.21") << "what was known stays";
  EXPECT_EQ(a.camera.vendor, "") << "the whole record says so";
  EXPECT_EQ(a.type, 2);
  EXPECT_EQ(cameras.FindByText("B")->camera.told, Told::kMac);
  CameraEvent damaged = Assembled("00:40:8C:00:00:0A", "10.0.0.2");
  for (const auto& [known, told, change] : {std::tuple{"Größe 北", "Gr\uFFFD\uFFFDe ?", Change::kSame},
                                            {"Größe 北", "Größe", Change::kChanged},
                                            {"Grosse", "Gro?se", Change::kChanged}}) {
    CameraEvent whole = Event(3, Camera("00:40:8C:00:00:0A", "10.0.0.2"));
    whole.camera.vendor = known;
    cameras.Apply(whole);
    damaged.camera.vendor = damaged.camera.model = told;
    EXPECT_EQ(cameras.Apply(damaged).lastChange, change) << told;
  }
  cameras.Apply(Event(3, Camera("00:40:8C:00:00:0A", "10.0.0.2")));
  EXPECT_EQ(cameras.FindByText("Maker"), nullptr) << "no model: the library made it up";
  EXPECT_TRUE(cameras.SharesIp(a));
  ASSERT_EQ(cameras.SharedIps().size(), 2U) << "L and UNKNOWN, A and UNKNOWN";
  cameras.Apply(Event(4, Camera("UNKNOWN", "10.0.0.2")));
  EXPECT_FALSE(cameras.SharesIp(a)) << "the other one has gone";
}

TEST(FoundCameras, AListAfterTheEventsCompletesWithoutOverriding) {
  FoundCameras cameras([](const FoundCamera& found) { return found.listed; });
  EXPECT_FALSE(cameras.Apply(Assembled("A", "10.0.0.2")).shown);
  cameras.Apply(Event(0, Camera("B", "10.0.0.3")));
  const FoundCamera* const a = cameras.ApplyListed(Camera("A", "10.0.0.1", "5"), {});
  EXPECT_EQ(a->camera.ip + a->camera.firmware, "10.0.0.25");
  EXPECT_TRUE(a->shown);
  EXPECT_EQ(cameras.ApplyListed(Camera("B", "10.0.0.1"), {}), nullptr);
  EXPECT_EQ(cameras.FindByText("B")->camera.ip, "10.0.0.3");
  EXPECT_EQ(cameras.Shown().size(), 2U);
  cameras.MarkListed(Camera("C"), {});  // its event waits
  EXPECT_EQ(cameras.Apply(Event(0, Camera("C", "10.0.0.4"))).lastChange, Change::kSame);
  EXPECT_EQ(cameras.ApplyListed(Camera("C", "10.0.0.5"), {}), nullptr);
  EXPECT_EQ(cameras.FindByText("C")->camera.ip, "10.0.0.4");
  cameras.MarkListed(Camera("UNKNOWN", "10.0.0.6"), {});
  EXPECT_EQ(cameras.Apply(Event(0, Camera("UNKNOWN", "10.0.0.6"))).lastChange, Change::kSame);
}

class Text final : public TextOutput {
 public:
  void Write(std::string_view text) override { text_ += text; }
  std::string Take() { return std::exchange(text_, {}); }

 private:
  std::string text_;
};

TEST(LiveTable, DrawsOverItselfTenTimesASecondAndEndsWithEveryRow) {
  FoundCameras cameras;
  for (const auto& [kind, mac, ip] : {std::tuple{3, "A", "10.0.0.9"},
                                      {3, "B", "10.0.0.8"},
                                      {3, "C", "10.0.0.7"},
                                      {4, "C", "10.0.0.7"},
                                      {3, "D", "10.0.0.9"},
                                      {3, "A", "10.0.0.9"}})
    cameras.Apply(Event(static_cast<std::uint32_t>(kind), Camera(mac, ip)));
  SearchProgress progress(cameras);
  progress.elapsed = milliseconds(1260);
  progress.planned = milliseconds(5000);
  platform::TerminalSize size{60, 8};
  Text output;
  const auto view = MakeLiveTable(output, {true, FindColumn("ip"), [&] { return size; }});
  const std::string header = "\x1b[1m  MAC               IP              DHCP Vendor Model    F…\x1b[0m\x1b[K\n";
  const std::string gone = "\x1b[31m- C                 10.0.0.7        yes                  1…\x1b[0m\x1b[K\n";
  const std::string shared =
      "\x1b[32m+!A                 10.0.0.9        yes                  1…\x1b[0m\x1b[K\n"
      "\x1b[32m+!D                 10.0.0.9        yes                  1…\x1b[0m\x1b[K\n";
  view->ShowProblem("The disk is full.");
  view->Refresh(progress);
  const std::string total = "   4 cameras: 0 known, 4 new; 0 changed, 1 g…\x1b[K\n";
  EXPECT_EQ(output.Take(), header + gone + shared + "… and 1 more\x1b[K\n! The disk is full.\x1b[K\n1.2 s of 5.0 s" +
                               total + "\x1b[J");
  progress.elapsed += milliseconds(99);
  view->Refresh(progress);
  EXPECT_EQ(output.Take(), "");
  progress.elapsed += milliseconds(1);
  view->Refresh(progress);
  EXPECT_EQ(output.Take().substr(0, 4), "\x1b[7A") << "as many lines up as were drawn";

  progress.list = SearchProgress::List::kArrived;
  view->Finish(progress);
  EXPECT_EQ(output.Take(), "\x1b[7A\x1b[J" + header + gone +
                               "\x1b[32m+ B                 10.0.0.8        yes                  1…\x1b[0m\x1b[K\n" +
                               shared +
                               "! 2 cameras have the address 10.0.0.9: A, D\n"
                               "4 cameras: 0 known, 4 new; 0 changed, 1 gone; 0 pictures, 0 value lists in 1.3 s\n");
  size.columns = 61;
  progress.elapsed += milliseconds(100);
  view->Refresh(progress);
  EXPECT_EQ(output.Take().substr(0, 7), "\x1b[H\x1b[2J") << "after another width";

  size = {60, 3};
  progress.elapsed += milliseconds(100);
  view->Refresh(progress);
  EXPECT_EQ(output.Take(), "\x1b[H\x1b[2J! The disk is full.\x1b[K\n1.5 s of 5.0 s" + total + "\x1b[J");
}

}  // namespace
}  // namespace tarnfind
