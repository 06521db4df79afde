/// The last failure of each thread, as TarnDBIGetLastError tells it.
///
/// A success leaves it as it is. The texts handed out belong to the library and stay valid until the next failure on
/// the same thread; longer ones are cut, for a thread that ends must not have anything to free.
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
  kInjectedFault = 100,  ///< what a fault of the scenario has unless it says otherwise
};

inline constexpr std::uint32_t kFailureClass = 1;

/// What becomes an error record. Texts are UTF-8.
struct Failure {
  std::uint32_t errorClass = kFailureClass;
  std::uint32_t errorCode = kInternalFailure;
  std::string className = "TarnDBI";
  std::string description;
  std::string additionalText;
};

/// Thrown where one of the functions refuses what it was asked for.
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

/// Makes it the calling thread's last failure. Where there is no memory to do so, texts stay empty.
void RememberFailure(const Failure& failure) noexcept;
/// A failure that leaves no record.
void ForgetFailure() noexcept;
/// False where the calling thread has no failure to tell; the record stays as it is then.
bool FillErrorRecord(DBIErrorRecord& record) noexcept;

}  // namespace simulator
