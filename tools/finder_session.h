/// One use of the finder: made, perhaps watched, and let go.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tarn/camera_finding.h"
#include "tools/event_queue.h"
#include "tools/picture_store.h"

namespace tarnfind {

struct ReleaseReference {
  void operator()(IUnknown* object) const { object->Release(); }
};
/// Owns one reference.
template <class Interface>
using Reference = std::unique_ptr<Interface, ReleaseReference>;

/// Used by the main thread. Exceptions of the library pass through.
class FinderSession {
 public:
  /// Loads the library (see LoadFinderLibrary) and makes a finder.
  explicit FinderSession(const std::string& libraryFile);
  ~FinderSession();

  Tarn::CameraFinding::ICameraFinder& Finder() { return *finder_; }

  /// From here on events arrive. picturesFolder: empty where none are kept; see PictureStore for what it throws.
  void Watch(const std::string& picturesFolder);
  /// See EventQueue::TakeUntil. Requires Watch.
  std::vector<Event> TakeUntil(Clock::time_point deadline) { return queue_->TakeUntil(deadline); }
  /// Lets the finder go, waits for deliveries that are under way, and returns what arrived since the last taking.
  std::vector<Event> Close();

 private:
  Reference<Tarn::CameraFinding::ICameraFinder> finder_;
  std::shared_ptr<EventQueue> queue_;
};

/// Calls `visit` for each camera found so far, in the server's order; keep a camera by taking a reference.
void ForEachFoundCamera(Tarn::CameraFinding::ICameraFinder& finder,
                        const std::function<void(Tarn::CameraFinding::ICameraInfo&)>& visit);

}  // namespace tarnfind
