/// A call into a library that may end the process, made so that it stops one thread only.
#pragma once

#include <functional>
#include <string>

namespace tarnfind {

/// Runs `work`. Where std::terminate or abort is called in it on this thread, `stopped` gets the text of the exception
/// that led there (empty: not known), and then the thread sleeps for ever; the process must end with std::_Exit.
/// Requires that both functions own all that they use and throw nothing.
void RunStoppable(const std::function<void()>& work, const std::function<void(const std::string& text)>& stopped);

}  // namespace tarnfind
