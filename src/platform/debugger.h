/// Text for an attached debugger. Nothing is added to it, no line end either. Callable at any time, also during load
/// and unload, on any thread. A text that cannot be delivered is dropped, and null is ignored.
///
/// On Linux the texts go, as UTF-8, to where TARN_DEBUGGER points: "stderr", or a file to which they are appended.
/// Without that setting they are dropped. A reader that has gone, a pipe without one or a full disk does not disturb
/// the host.
#pragma once

namespace platform {

void OutputDebugStringW(const char16_t* text);
/// text is in the ANSI code page.
void OutputDebugStringA(const char* text);

}  // namespace platform
