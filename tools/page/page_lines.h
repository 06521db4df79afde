/// The lines that a page is made of, in order, for browsers that read along and for those that come later.
///
/// One thread writes, any thread reads. Memory is bounded: beyond kMostLineBytes the oldest lines go, but the newest
/// line of each subject stays as long as there is room for these alone, so that a page opened late still has every
/// camera. A reader learns by an "omitted" line how many are missing.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "tools/page/line_receiver.h"

namespace tarnfind {

inline constexpr std::size_t kMostLineBytes = 64 << 20;

class PageLines final : public LineReceiver {
 public:
  /// onChange: called on the writing thread after each change, with no lock held.
  explicit PageLines(std::function<void()> onChange = {}, std::size_t mostBytes = kMostLineBytes);

  void Add(std::string_view line, std::string_view subject) override;
  /// Each reader gets the newest, behind the other lines.
  void SetState(std::string line) override;
  /// No line follows.
  void Finish();
  /// Whether readers have gone for good; any thread may say so or ask.
  void SetAbandoned(bool abandoned) { abandoned_ = abandoned; }
  bool IsAbandoned() const override { return abandoned_; }

  /// How far one reader has come.
  struct Reader {
    std::uint64_t next = 0;       ///< number of the line that it gets next
    std::uint64_t replayEnd = 0;  ///< lines before it are covered by the first "omitted"
    std::uint64_t state = 0;
  };
  /// Whole lines that the reader has not had, about 256 KiB at most. Empty where there are none.
  std::string Take(Reader& reader) const;
  /// Whether the reader has had all and no line follows.
  bool IsAtEnd(const Reader& reader) const;

 private:
  struct Line {
    std::string text;
    std::string subject;
  };
  void Drop(std::map<std::uint64_t, Line>::iterator line);
  void Trim();

  const std::function<void()> onChange_;
  const std::size_t mostBytes_;
  mutable std::mutex mutex_;
  std::map<std::uint64_t, Line> lines_;                      ///< by number
  std::unordered_map<std::string, std::uint64_t> newestOf_;  ///< number of a subject's newest line
  std::size_t bytes_ = 0;
  std::uint64_t next_ = 0;     ///< number of the next line
  std::uint64_t trimmed_ = 0;  ///< of the lines before it only the newest of their subjects are left
  std::string state_;
  std::uint64_t stateNumber_ = 0;
  bool finished_ = false;
  std::atomic<bool> abandoned_ = false;
};

}  // namespace tarnfind
