#include <fmt/format.h>

#include "tools/camera_details.h"
#include "tools/commands/commands.h"
#include "tools/commands/receive.h"
#include "tools/failure.h"
#include "tools/text.h"

namespace tarnfind {

namespace {

/// How soon Ctrl-C is noticed.
constexpr std::chrono::milliseconds kCheckInterval{100};

class Enquiry {
 public:
  explicit Enquiry(const Options& options) : options_(options) {}

  void Take(const std::vector<Event>& events) {
    for (const Event& event : events) {
      const auto* const camera = std::get_if<CameraEvent>(&event);
      if (!camera || found_) continue;
      const FoundCamera& seen = cameras_.Apply(*camera);
      if (seen.IsGone() || !IsAskedFor(seen)) continue;
      found_ = &seen;
      kind_ = camera->kind;
    }
  }
  const FoundCamera* Found() const { return found_; }
  Json Object() const {
    Json object = CameraEventObject(*found_, kind_, cameras_, {options_.showPasswords, options_.times});
    object.erase("change");  // without the list, nobody knows whether it is new
    return object;
  }

 private:
  bool IsAskedFor(const FoundCamera& seen) const {
    return options_.ip.empty() ? cameras_.FindByText(options_.mac) == &seen : seen.camera.ip == options_.ip;
  }

  const Options& options_;
  FoundCameras cameras_;
  const FoundCamera* found_ = nullptr;
  std::uint32_t kind_ = 0;
};

}  // namespace

void RunInfo(const Options& options, TextOutput& output) {
  const std::string& address = options.ip.empty() ? options.mac : options.ip;
  const auto planned = *ReceivingTime(options, kUsualAnswerSeconds);
  FinderSession session;
  session.Connect(options.library, {});
  AskAbout(session, "asking for " + address, options.ip, options.mac);

  Enquiry enquiry(options);
  const Clock::time_point start = Clock::now();
  while (!enquiry.Found() && Clock::now() < start + planned && !platform::Interrupted())
    enquiry.Take(session.TakeUntil(std::min(start + planned, Clock::now() + kCheckInterval)));
  enquiry.Take(session.Close());
  if (!enquiry.Found()) {
    throw Failure(
        fmt::format("nothing arrived about a camera at {} within {}{}; whether the server refused the question "
                    "cannot be known, tarnfind list shows the cameras that it knows",
                    address, Seconds(MillisecondsSince(start)), platform::Interrupted() ? " (interrupted)" : ""));
  }
  if (options.json) {
    output.Write(JsonLine(enquiry.Object()));
    output.Write(JsonLine({{"event", "summary"}, {"command", "info"}, {"address", address}, {"cameras", 1}}));
  } else {
    output.Write(CameraDetails(*enquiry.Found(), options.showPasswords));
  }
}

}  // namespace tarnfind
