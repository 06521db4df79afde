#include "tools/finder_session.h"

#include "tools/failure.h"
#include "tools/library.h"
#include "tools/wizard_callback.h"

namespace tarnfind {

using Tarn::CameraFinding::ICameraFinder;
using Tarn::CameraFinding::ICameraInfo;

namespace {

/// A delivery that takes longer than this is not waited for.
constexpr std::chrono::seconds kLongestDelivery{2};

/// Lives on the stack of the call that it is handed to, so it counts no references.
class Visitor final : public Tarn::CameraFinding::IFoundCameraReceiver {
 public:
  explicit Visitor(const std::function<void(ICameraInfo&)>& visit) : visit_(visit) {}

  HRESULT QueryInterface(const IID&, void** object) override {
    if (!object) return E_POINTER;
    *object = nullptr;
    return E_NOINTERFACE;
  }
  std::uint32_t AddRef() override { return 1; }
  std::uint32_t Release() override { return 1; }
  HRESULT CameraFound(ICameraInfo* camera) override {
    visit_(*camera);
    return S_OK;
  }

 private:
  const std::function<void(ICameraInfo&)>& visit_;
};

ICameraFinder* CreateFinder(const std::string& libraryFile) {
  ICameraFinder* finder = nullptr;
  LoadFinderLibrary(libraryFile)(nullptr, nullptr, &finder);
  if (!finder) throw Failure("the library gave no finder");
  return finder;
}

}  // namespace

FinderSession::FinderSession(const std::string& libraryFile) : finder_(CreateFinder(libraryFile)) {}

FinderSession::~FinderSession() {
  Close();
}

void FinderSession::Watch(const std::string& picturesFolder) {
  auto pictures = picturesFolder.empty() ? nullptr : std::make_shared<PictureStore>(picturesFolder);
  queue_ = std::make_shared<EventQueue>();
  const Reference<WizardCallback> callback(new WizardCallback(queue_, std::move(pictures)));
  finder_->SetNewCameraDataCallback(callback.get());
}

std::vector<Event> FinderSession::Close() {
  finder_.reset();
  const std::shared_ptr<EventQueue> queue = std::move(queue_);
  if (!queue) return {};
  queue->WaitFinished(Clock::now() + kLongestDelivery);
  return queue->TakeUntil(Clock::now());
}

void ForEachFoundCamera(ICameraFinder& finder, const std::function<void(ICameraInfo&)>& visit) {
  Visitor visitor(visit);
  finder.ListFoundCameras(&visitor);
}

}  // namespace tarnfind
