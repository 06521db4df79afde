#include <fmt/format.h>

#include "tools/camera_details.h"
#include "tools/commands/commands.h"
#include "tools/failure.h"
#include "tools/finder_session.h"
#include "tools/json_objects.h"
#include "tools/platform.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

constexpr double kUsualSeconds = 2;
/// How soon Ctrl-C is noticed.
constexpr std::chrono::milliseconds kCheckInterval{100};

/// The camera among the events, if it is there. Throws Failure for a picture that could not be kept.
std::optional<CameraEvent> FindCamera(const std::vector<Event>& events, const std::string& ip) {
  for (const Event& event : events) {
    const auto* const picture = std::get_if<PictureEvent>(&event);
    if (picture && !picture->error.empty()) throw Failure(picture->error);
    const auto* const camera = std::get_if<CameraEvent>(&event);
    if (camera && camera->kind != Tarn::CameraFinding::cekGone && camera->camera.ip == ip) return *camera;
  }
  return std::nullopt;
}

std::optional<CameraEvent> AskForCamera(const Options& options, double seconds) {
  FinderSession session(options.library);
  session.Watch(options.pictures);
  session.Finder().RequestInfoByIp(Utf16FromUtf8(options.ip).c_str());

  platform::CatchInterrupts();
  const Clock::time_point deadline =
      Clock::now() + std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
  std::optional<CameraEvent> found;
  while (!found && Clock::now() < deadline && !platform::Interrupted())
    found = FindCamera(session.TakeUntil(std::min(deadline, Clock::now() + kCheckInterval)), options.ip);
  return found ? found : FindCamera(session.Close(), options.ip);
}

}  // namespace

void RunInfo(const Options& options, TextOutput& output) {
  const double seconds = options.seconds.value_or(kUsualSeconds);
  const std::optional<CameraEvent> found = AskForCamera(options, seconds);
  if (!found) throw Failure(fmt::format("nothing arrived about a camera at {} within {} s", options.ip, seconds));
  if (!options.json) {
    output.Write(CameraDetails(found->camera, found->type, options.showPasswords));
    return;
  }
  output.Write(JsonLine({{"event", "camera"},
                         {"kind", found->kind},
                         {"type", found->type},
                         {"camera", CameraObject(found->camera, options.showPasswords)}}));
  output.Write(JsonLine({{"event", "summary"}, {"command", "info"}, {"ip", options.ip}, {"cameras", 1}}));
}

}  // namespace tarnfind
