#include "simulator/last_error.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "base/text_conversion.h"

namespace simulator {
namespace {

/// Trivial, because a thread-local destructor would keep the library loaded until the thread ends.
struct LastFailure {
  bool present;
  std::uint32_t errorClass;
  std::uint32_t errorCode;
  std::array<char, 128> className;
  std::array<char16_t, 1024> description;
  std::array<char, 256> additionalText;
};

constinit thread_local LastFailure lastFailure{};

bool IsHighSurrogate(char16_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}

/// Cuts a text that does not fit with its terminator, never inside a surrogate pair.
template <class Unit, std::size_t kRoom>
void Store(std::array<Unit, kRoom>& target, std::basic_string_view<Unit> text) {
  std::size_t length = std::min(text.size(), kRoom - 1);
  if constexpr (sizeof(Unit) == sizeof(char16_t)) {
    if (length < text.size() && IsHighSurrogate(text[length - 1])) --length;
  }
  std::copy_n(text.data(), length, target.data());
  target[length] = 0;
}

/// Narrow texts of a record are in the system's code page.
std::string AnsiFromUtf8(const std::string& text) {
  return Kestrel::WideToAnsi(Kestrel::Utf8ToWide(text));
}

}  // namespace

void RememberFailure(const Failure& failure) noexcept {
  lastFailure = LastFailure{};
  lastFailure.present = true;
  lastFailure.errorClass = failure.errorClass;
  lastFailure.errorCode = failure.errorCode;
  try {
    Store<char>(lastFailure.className, AnsiFromUtf8(failure.className));
    Store<char16_t>(lastFailure.description, Kestrel::Utf8ToWide(failure.description));
    Store<char>(lastFailure.additionalText, AnsiFromUtf8(failure.additionalText));
  } catch (...) {  // no memory for the texts: class and code are set
  }
}

void ForgetFailure() noexcept {
  lastFailure.present = false;
}

bool FillErrorRecord(DBIErrorRecord& record) noexcept {
  const LastFailure& last = lastFailure;
  if (!last.present) return false;
  record = {last.errorClass, last.errorCode,          last.className.data(),
            nullptr,         last.description.data(), last.additionalText.data()};
  return true;
}

}  // namespace simulator
