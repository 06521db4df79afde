/// The last failure of each thread, as TarnDBIGetLastError tells it.
///
/// A successful call leaves it unchanged. The texts handed out belong to the library and stay valid until the next
/// failure on the same thread. Long texts are cut, because they stand in fixed memory: a thread has nothing to free
/// when it ends.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

#include "dbi/dbi.h"

namespace simulator {

enum FailureCode : std::uint32_t {
  kBadArgument = 1,
  kUnknownHandle = 2,
  kScenarioMistake = 3,
  kMalformedRequest = 4,
  kInternalFailure = 5,
  kInjectedFault = 100,  ///< the code of a scenario's fault that gives none
};

inline constexpr std::uint32_t kFailureClass = 1;

/// The content of an error record. Texts are UTF-8.
struct Failure {
  std::uint32_t errorClass = kFailureClass;
  std::uint32_t errorCode = kInternalFailure;
  std::string className = "TarnDBI";
  std::string description;
  std::string additionalText;
};

/// Thrown where one of the eight functions refuses a call.
class Refused : public std::exception {
 public:
  Refused(FailureCode code, std::string description) {
    failure_.errorCode = code;
    failure_.description = std::move(description);
  }
  const char* what() const noexcept override { return failure_.description.c_str(); }
  const Failure& GetFailure() const { return failure_; }

 private:
  Failure failure_;
};

/// Sets the calling thread's last failure. Texts stay empty where there is no memory to convert them.
void RememberFailure(const Failure& failure) noexcept;
/// Clears the calling thread's last failure, so that a failure leaves no record.
void ForgetFailure() noexcept;
/// False where the calling thread has no last failure; the record stays unchanged then.
bool FillErrorRecord(DBIErrorRecord& record) noexcept;

}  // namespace simulator
