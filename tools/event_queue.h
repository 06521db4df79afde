/// What the library told on its worker threads, handed over to the main thread in order of arrival.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <variant>
#include <vector>

#include "tools/camera_snapshot.h"

namespace tarnfind {

using Clock = std::chrono::steady_clock;
/// For times that people read.
using WallTime = std::chrono::system_clock::time_point;

struct CameraEvent {
  std::uint32_t kind = 0;
  std::int32_t type = 0;  ///< by vendor mask or plug-in name; the snapshot's own type knows the mask only
  CameraSnapshot camera;
  WallTime at = std::chrono::system_clock::now();
};
struct PictureEvent {
  std::string camera;  ///< the server's text, by which the picture is tied to a camera
  std::uint64_t bytes = 0;
  std::uint32_t crc32 = 0;
  std::string file;   ///< name inside the folder of pictures; empty where the picture is not kept
  std::string error;  ///< why the picture could not be kept; empty where nothing went wrong
  WallTime at = std::chrono::system_clock::now();
};
struct ValuesEvent {
  std::string camera;
  std::vector<std::uint64_t> values;
  WallTime at = std::chrono::system_clock::now();
};
/// The server's list has arrived, or could not be had.
struct ListedEvent {
  std::vector<CameraSnapshot> cameras;
  std::string error;  ///< empty where the list arrived
  WallTime at = std::chrono::system_clock::now();
};
/// The library has returned from the command that was to follow the list.
struct ReturnedEvent {};
using Event = std::variant<CameraEvent, PictureEvent, ValuesEvent, ListedEvent, ReturnedEvent>;

/// Any thread may call any operation.
class EventQueue {
 public:
  void Push(Event event);
  /// Nothing more will come.
  void Finish();

  /// All events that are there; waits until `deadline` for the first one, or until Finish.
  std::vector<Event> TakeUntil(Clock::time_point deadline);
  /// False where Finish was not called in time.
  bool WaitFinished(Clock::time_point deadline);

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Event> events_;
  bool finished_ = false;
};

}  // namespace tarnfind
