/// Where a worker runs its tasks: beside its deliverer, on the deliverer's processor, or apart, on another one.
///
/// Apart, the two watch for each other without a switch between threads. Whether that pays depends on the machine, on
/// the task's data, which have to follow it to the other processor, and on what else runs there. So it is tried: while
/// hand-overs follow each other closely, a round of them is timed beside and the next one apart.
#pragma once

#include <algorithm>
#include <chrono>

namespace platform {

/// Hand-overs follow each other closely where no more time than this is between two. A waiter watches for no longer,
/// because to watch through a rest would only take processor time.
inline constexpr std::chrono::microseconds kClosely{100};

/// For one thread at a time. Never reads the clock itself.
class Placement {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// For the hand-over that begins now. After a rest it is never apart, because waking another processor takes long.
  bool NextIsApart(Time now) {
    if (now - lastEnd_ > kClosely) {
      if (isApart_) nextTry_ = now;  // it paid before the rest
      StartRound(false);
    }
    return isApart_;
  }

  /// Counts a hand-over that ended now.
  void Count(Time now) {
    lastEnd_ = now;
    if (++count_ == kMoving) roundBegin_ = now;
    if (count_ <= kMoving) return;
    const auto taken = now - roundBegin_;
    if (isApart_ && !Pays(taken)) {
      Refuse(now);
    } else if (count_ == kMoving + kRound) {
      FinishRound(now, taken);
    }
  }

  /// Apart does not pay now, or is not possible. The next try comes after a pause.
  void Refuse(Time now) {
    nextTry_ = now + pause_;
    pause_ = std::min<std::chrono::nanoseconds>(2 * pause_, kLongestPause);
    StartRound(false);
  }

 private:
  /// The first hand-overs of a round are not timed, because the worker changes its processor in them.
  static constexpr int kMoving = 4;
  static constexpr int kRound = 32;
  /// Apart is kept for this long before it is compared again.
  static constexpr std::chrono::milliseconds kKept{100};
  /// Until the next try after one that did not pay. Each further one in a row doubles it.
  static constexpr std::chrono::milliseconds kFirstPause{1};
  static constexpr std::chrono::seconds kLongestPause{2};

  /// Apart has to be a fifth faster, because it keeps two processors busy.
  bool Pays(std::chrono::nanoseconds taken) const { return 5 * taken <= 4 * besideTaken_; }

  void StartRound(bool isApart) {
    isApart_ = isApart;
    count_ = 0;
  }

  void FinishRound(Time now, std::chrono::nanoseconds taken) {
    if (isApart_) {
      pause_ = kFirstPause;
    } else {
      besideTaken_ = taken;
    }
    const bool changes = now >= nextTry_;
    if (changes) nextTry_ = isApart_ ? now : now + kKept;
    StartRound(isApart_ != changes);
  }

  bool isApart_ = false;
  int count_ = 0;  ///< hand-overs of this round
  Time lastEnd_{};
  Time roundBegin_{};
  Time nextTry_{};
  std::chrono::nanoseconds besideTaken_{};
  std::chrono::nanoseconds pause_ = kFirstPause;
};

}  // namespace platform
