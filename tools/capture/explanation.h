/// Where a camera is: what a conversation tells of it, step by step, and what to try next.
///
/// Memory is bounded: of what there may be any number, the first few are kept and the rest is counted.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tools/capture/conversation.h"

namespace tarnfind {

struct ExplainedStep {
  std::string name;  ///< library, stream, open, start, callback, commands, replies, blocks, last, dropped,
                     ///< nearest; explain puts "earlier" in front
  std::string text;  ///< whole sentences
  bool fine = true;
};

struct Explanation {
  std::vector<ExplainedStep> steps;
  std::string verdict;
  std::vector<std::string> next;  ///< what to try
  bool found = false;             ///< the wizard has it: it was delivered, and not reported gone after that
};

/// Takes the events of one run's conversation in their order.
class Explainer {
 public:
  /// address: a MAC or IP in its standard form. The other address is learnt from what is heard, and serves only where a
  /// message lacks the one that was asked for, because cameras take over each other's IP addresses.
  explicit Explainer(const std::string& address);

  void Add(const RecordedEvent& event);
  Explanation Explain() const;

 private:
  /// Calls of one function, counted by how they ended.
  struct Calls {
    std::uint64_t count = 0;
    std::uint64_t failedWithRecord = 0;
    std::uint64_t failedWithoutRecord = 0;
    std::uint64_t longest = 0;  ///< nanoseconds
    std::string lastError;
    bool lastFailed = false;
  };
  /// A few lines in full, the rest as a number.
  struct Lines {
    std::vector<std::string> first;
    std::string last;
    std::uint64_t count = 0;
    void Add(std::string line);
    std::string Join() const;
  };

  bool IsTheCamera(const std::string& mac, const std::string& ip) const;
  bool IsAbout(const RecordedEvent& event) const;
  void Learn(const std::string& mac, const std::string& ip);
  bool IsBeforeCapture(capture::Function step) const;
  void AddCall(const RecordedEvent& event);
  void AddCommand(const RecordedEvent& event, bool about);
  void AddBlock(const RecordedEvent& event, bool about);
  std::string At(const RecordedEvent& event) const;
  void Hear(const RecordedEvent& event, const std::string& line);

  ExplainedStep ExplainCalls(const char* name, capture::Function function, const char* done, const char* never) const;
  ExplainedStep ExplainCallback() const;
  ExplainedStep ExplainNearest() const;
  void Judge(Explanation& explanation) const;

  const bool askedByMac_;
  std::string mac_;  ///< in its standard form; empty where it is not known
  std::string ip_;   ///< the latest one, or the one that was asked for; empty where it is not known
  std::uint64_t start_ = 0;
  std::uint64_t frames_ = 0;
  std::map<capture::Function, Calls> calls_;
  std::map<std::uint32_t, capture::Function> lastFailure_;  ///< by thread: whose error record comes next
  std::map<std::uint64_t, int> registered_;
  bool triedToRegister_ = false;
  std::uint64_t everRegistered_ = 0;
  Lines commands_;
  Lines failedCommands_;
  Lines replies_;
  std::uint64_t lists_ = 0;
  std::uint64_t unreadLists_ = 0;  ///< those of them that failed or whose answer is damaged
  std::uint64_t blocks_ = 0;
  Lines deliveries_;  ///< of its record
  Lines pictures_;    ///< and values: deliveries that name it and tell no record
  std::string lastDelivery_;
  std::string lastHeard_;
  bool lastWasGone_ = false;
  Lines droppedOfIt_;
  Lines droppedOfNobody_;
  std::uint64_t droppedOfOthers_ = 0;
  Lines thrown_;
  std::map<std::string, std::string> others_;  ///< cameras that were heard of: MAC and what to call them
  std::uint64_t lastBlockTime_ = 0;
  std::uint64_t longestSilence_ = 0;
};

}  // namespace tarnfind
