/// The catch-all of every operation whose contract is that no exception leaves it.
#pragma once

namespace Kestrel {

/// Runs the body of such an operation. An exception is discarded without a message. Returns whether the body ran to its
/// end; where it did not, the operation returns its failure value.
template <class Body>
bool SwallowExceptions(Body body) noexcept {
  try {
    body();
    return true;
  } catch (...) {
    return false;
  }
}

}  // namespace Kestrel
