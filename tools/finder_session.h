/// One use of the finder: connected, used and let go.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarn/camera_finding.h"
#include "tools/event_queue.h"
#include "tools/finder_thread.h"
#include "tools/steps.h"
#include "tools/wizard_callback.h"

namespace tarnfind {

struct ReleaseReference {
  void operator()(IUnknown* object) const { object->Release(); }
};
/// Owns one reference.
template <class Interface>
using Reference = std::unique_ptr<Interface, ReleaseReference>;

/// The server's list.
struct Listing {
  std::vector<CameraSnapshot> cameras;
  std::vector<Reference<Tarn::CameraFinding::ICameraInfo>> objects;  ///< one for each of the cameras
};

/// Told of each step that has succeeded. duration: empty where the library takes the step together with the one before,
/// whose time then counts for both. detail: what there is to say of it; may be empty.
using StepObserver =
    std::function<void(Step step, std::optional<std::chrono::milliseconds> duration, const std::string& detail)>;

/// Used by the main thread; calls of the library run on a thread of their own. While a call lasts the user sees what is
/// waited for and can leave with Ctrl-C.
class FinderSession {
 public:
  /// whileWaiting: called several times a second while a step or a call is waited for; may be empty.
  explicit FinderSession(std::function<void()> whileWaiting = {});
  /// As Close. Then says on standard error where the server refused to remove the callback.
  ~FinderSession();

  /// Loads the library, makes a finder, opens its channel and registers a callback: from here on events arrive.
  /// libraryFile: see LoadFinderLibrary. Throws NoChannel with the step that failed, and what PictureStore throws.
  void Connect(const std::string& libraryFile, const PictureFolder& pictures, const StepObserver& observer = {});

  using FinderCall = std::function<void(Tarn::CameraFinding::ICameraFinder& finder)>;
  /// Runs the call and waits for its end. Throws what it throws, and Failure on Ctrl-C. Requires Connect, and that the
  /// call owns all that it uses.
  void Call(const std::string& doing, FinderCall call);
  /// The cameras that the server knows, in its order. Throws Failure with the step kList.
  Listing List();
  /// Asks for the list without waiting; it arrives as a ListedEvent. Then makes the call, if one is given, and tells
  /// its end by a ReturnedEvent. Requires that no call is under way, and that `then` throws nothing.
  void BeginList(FinderCall then = {});

  /// See EventQueue::TakeUntil. Requires Connect.
  std::vector<Event> TakeUntil(Clock::time_point deadline) { return queue_->TakeUntil(deadline); }
  /// False where the server has ended the channel. Requires Connect.
  bool IsRegistered() const;
  /// Lets the finder go, waits a moment for deliveries that are under way, and returns what arrived since the last
  /// TakeUntil. Afterwards the session can only be destroyed.
  std::vector<Event> Close();

 private:
  /// What calls on the other thread use.
  struct Shared {
    Reference<WizardCallback> callback;
    Reference<Tarn::CameraFinding::ICameraFinder> finder;
  };
  template <class Work>
  void Wait(const char* doing, const Work& interrupted);
  std::chrono::milliseconds RunStep(Step step, std::function<void()> work);

  const std::function<void()> whileWaiting_;
  std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
  std::shared_ptr<EventQueue> queue_;
  FinderThread thread_;
};

}  // namespace tarnfind
