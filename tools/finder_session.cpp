#include "tools/finder_session.h"

#include <fmt/format.h>

#include <utility>

#include "tools/failure.h"
#include "tools/library.h"
#include "tools/platform.h"
#include "tools/wait_line.h"

namespace tarnfind {

using Tarn::CameraFinding::ICameraFinder;
using Tarn::CameraFinding::ICameraInfo;

namespace {

/// How soon Ctrl-C is noticed.
constexpr std::chrono::milliseconds kCheckInterval{50};
/// A delivery, or the end of the channel, that takes longer than this is not waited for.
constexpr std::chrono::seconds kLongestEnd{2};

constexpr char kServerAdvice[] = "see that the video server runs and accepts this computer";

/// Lives on the stack of the call that it is handed to, so it counts no references.
class Receiver final : public Tarn::CameraFinding::IFoundCameraReceiver {
 public:
  HRESULT QueryInterface(const IID&, void** object) override {
    if (!object) return E_POINTER;
    *object = nullptr;
    return E_NOINTERFACE;
  }
  std::uint32_t AddRef() override { return 1; }
  std::uint32_t Release() override { return 1; }
  HRESULT CameraFound(ICameraInfo* camera) override {
    camera->AddRef();
    listing.objects.emplace_back(camera);
    listing.cameras.push_back(SnapshotOf(*camera));
    return S_OK;
  }

  Listing listing;
};

Listing ListWith(ICameraFinder& finder) {
  Receiver receiver;
  finder.ListFoundCameras(&receiver);
  return std::move(receiver.listing);
}

[[noreturn]] void Refuse(Step step, const std::string& text) {
  throw NoChannel(RowOf(step).name, text);
}

}  // namespace

FinderSession::FinderSession(std::function<void()> whileWaiting) : whileWaiting_(std::move(whileWaiting)) {
  platform::CatchInterrupts();
}

FinderSession::~FinderSession() {
  Close();
  if (const std::optional<std::string> reason = thread_.Stopped())
    platform::Write(platform::Stream::kError,
                    fmt::format("tarnfind: at the end the server refused to remove the callback{}{}\n",
                                reason->empty() ? "" : ": ", *reason));
}

template <class Work>
void FinderSession::Wait(const char* doing, const Work& interrupted) {
  const Clock::time_point start = Clock::now();
  {
    WaitLine line(doing);
    while (!thread_.WaitUntil(Clock::now() + kCheckInterval) && !platform::Interrupted()) {
      line.Update();
      if (whileWaiting_) whileWaiting_();
    }
  }
  if (!thread_.WaitUntil(Clock::now())) {
    const std::chrono::duration<double> elapsed = Clock::now() - start;
    interrupted(fmt::format("interrupted after {:.1f} s of {}", elapsed.count(), doing));
  }
  thread_.Rethrow();
}

std::chrono::milliseconds FinderSession::RunStep(Step step, std::function<void()> work) {
  const Clock::time_point start = Clock::now();
  thread_.Begin(std::move(work));
  Wait(RowOf(step).doing, [step](const std::string& text) { Refuse(step, text); });
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
}

void FinderSession::Connect(const std::string& libraryFile, const PictureFolder& pictureFolder,
                            const StepObserver& observer) {
  const auto tell = [&](Step step, std::optional<std::chrono::milliseconds> duration, const std::string& detail) {
    if (observer) observer(step, duration, detail);
  };
  auto pictures = pictureFolder.path.empty() ? nullptr : std::make_shared<PictureStore>(pictureFolder);
  queue_ = std::make_shared<EventQueue>();
  shared_->callback.reset(new WizardCallback(queue_, std::move(pictures)));

  const auto library = std::make_shared<Library>();
  const auto loading = RunStep(Step::kLibrary, [library, libraryFile] { *library = LoadFinderLibrary(libraryFile); });
  tell(Step::kLibrary, loading, library->file);
  tell(Step::kPlatformLibrary, {}, library->platformFile);

  const auto making = RunStep(Step::kFinder, [shared = shared_, library] {
    ICameraFinder* finder = nullptr;
    try {
      library->create(nullptr, nullptr, &finder);
    } catch (const std::exception& error) {
      Refuse(Step::kFinder, fmt::format("the server refused a live stream: {}; {}", ErrorText(error), kServerAdvice));
    }
    if (!finder) Refuse(Step::kFinder, "the library gave no finder; is it another version than this program's?");
    shared->finder.reset(finder);
  });
  tell(Step::kFinder, making, {});

  const auto opening = RunStep(Step::kChannel, [shared = shared_] {
    try {
      shared->finder->SetNewCameraDataCallback(shared->callback.get());
    } catch (const std::exception& error) {
      Refuse(Step::kCallback, fmt::format("the server refused the callback: {}; {}", ErrorText(error), kServerAdvice));
    }
  });
  // The library takes a reference on the callback exactly where it could open the channel.
  if (!IsRegistered())
    Refuse(Step::kChannel,
           fmt::format("the channel to the server cannot be opened, the library does not tell why; {}", kServerAdvice));
  tell(Step::kChannel, opening, {});
  tell(Step::kCallback, {}, {});
}

void FinderSession::Call(const std::string& doing, FinderCall call) {
  thread_.Begin([shared = shared_, run = std::move(call)] { run(*shared->finder); });
  Wait(doing.c_str(), [](const std::string& text) { throw Failure(text); });
}

Listing FinderSession::List() {
  const StepRow& step = RowOf(Step::kList);
  const auto listing = std::make_shared<Listing>();
  try {
    Call(step.doing, [listing](ICameraFinder& finder) { *listing = ListWith(finder); });
  } catch (const Failure& failure) {
    throw Failure(failure.what(), step.name);
  } catch (const std::exception& error) {
    throw Failure("the server did not list its cameras: " + ErrorText(error), step.name);
  }
  return std::move(*listing);
}

void FinderSession::BeginList(FinderCall then) {
  thread_.Begin([shared = shared_, queue = queue_, then = std::move(then)] {
    ListedEvent listed;
    try {
      listed.cameras = ListWith(*shared->finder).cameras;
    } catch (const std::exception& error) {
      listed.error = ErrorText(error);
    }
    queue->Push(std::move(listed));
    if (!then) return;
    then(*shared->finder);
    queue->Push(ReturnedEvent{});
  });
}

bool FinderSession::IsRegistered() const {
  return shared_->callback->HasOtherOwners();
}

std::vector<Event> FinderSession::Close() {
  const std::shared_ptr<EventQueue> queue = std::exchange(queue_, nullptr);
  if (!queue) return {};
  const Clock::time_point deadline = Clock::now() + kLongestEnd;
  if (thread_.WaitUntil(Clock::now())) {
    thread_.BeginLast([shared = std::exchange(shared_, std::make_shared<Shared>())] {
      shared->finder.reset();
      shared->callback.reset();
    });
    if (thread_.WaitUntil(deadline)) queue->WaitFinished(deadline);
  }
  return queue->TakeUntil(Clock::now());
}

}  // namespace tarnfind
